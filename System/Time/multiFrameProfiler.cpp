#include "System/Time/multiFrameProfiler.h"

#include "Support/OS/file.h"
#include "Support/OS/thread.h"
#include "System/Time/multiFrameReport.h"

#include <cstring>
#include <new>

namespace Qel {

constinit sProfileEvent cMultiFrameProfiler::m_events[mostEvents]{};
std::uint32_t cMultiFrameProfiler::m_eventCount = 0;
bool cMultiFrameProfiler::m_inFrame = false;
bool cMultiFrameProfiler::m_capturing = false;
std::uint8_t cMultiFrameProfiler::m_framesCaptured = 0;
std::uint8_t cMultiFrameProfiler::m_framesToCapture = 0;
bool cMultiFrameProfiler::m_counterStarted = false;
char cMultiFrameProfiler::m_fileName[nameRoom]{};
std::int64_t cMultiFrameProfiler::m_startTick = 0;
PerfCounter cMultiFrameProfiler::m_counter;
cCritical cMultiFrameProfiler::m_lock(200);

bool cMultiFrameProfiler::capture(char const *fileName, unsigned char frames)
{
    cCriticalHelper const guard(&m_lock);
    if (m_capturing || fileName == nullptr) {
        return false;
    }
    if (!m_counterStarted) {
        m_counter.start();
        m_counterStarted = true;
    }
    std::strncpy(m_fileName, fileName, nameRoom - 1);
    m_framesToCapture = frames == 0 ? 1 : frames;
    m_framesCaptured = 0;
    m_eventCount = 0;
    return false;
}

void cMultiFrameProfiler::beginFrame()
{
    cCriticalHelper const guard(&m_lock);
    if (m_inFrame) {
        return;
    }
    m_inFrame = true;
    if (m_framesToCapture != 0 && !m_capturing) {
        m_capturing = true;
        m_startTick = PerfCounter::getTickCounter();
    }
    record("FRAME", sProfileEvent::FRAME_BEGIN);
}

void cMultiFrameProfiler::endFrame()
{
    cCriticalHelper const guard(&m_lock);
    if (!m_inFrame) {
        return;
    }
    if (m_capturing) {
        record("FRAME", sProfileEvent::FRAME_END);
        ++m_framesCaptured;
        if (m_framesToCapture <= m_framesCaptured) {
            writeReport();
            m_framesCaptured = 0;
            m_framesToCapture = 0;
            m_startTick = 0;
            m_capturing = false;
            m_eventCount = 0;
        }
    }
    m_inFrame = false;
}

void cMultiFrameProfiler::beginEvent(unsigned int, char const *name)
{
    cCriticalHelper const guard(&m_lock);
    record(name, sProfileEvent::BEGIN);
}

void cMultiFrameProfiler::endEvent(char const *name)
{
    cCriticalHelper const guard(&m_lock);
    record(name, sProfileEvent::END);
}

void cMultiFrameProfiler::record(char const *name, sProfileEvent::eType type)
{
    if (m_capturing && m_inFrame && m_eventCount < mostEvents) {
        m_events[m_eventCount++] = {name == nullptr ? "" : name, os::currentThreadId(), type,
                                    PerfCounter::getTickCounter()};
    }
}

void cMultiFrameProfiler::writeReport()
{
    os::FilePtr const file = os::openFile(m_fileName, "w+");
    if (file == nullptr) {
        return;
    }
    try {
        MultiFrameReport report(file.get(), m_startTick, m_counter.getFrequency());
        report.write({m_events, m_eventCount});
    } catch (std::bad_alloc const &) {
        // The file ends where the memory did; the frame loop goes on.
    }
}

} // namespace Qel
