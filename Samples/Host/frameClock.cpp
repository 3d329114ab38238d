#include "frameClock.h"

#include "System/System/Root.h"

#include <algorithm>
#include <numeric>

FrameClock::FrameClock(unsigned frames) : m_wanted(frames)
{
    m_times.reserve(frames);
}

bool FrameClock::frameStarted(Qel::FrameEvent const &)
{
    auto const now = std::chrono::steady_clock::now();
    if (m_frames > 0) {
        m_times.push_back(std::chrono::duration<double, std::milli>(now - m_lastStart).count());
    }
    m_lastStart = now;
    return true;
}

bool FrameClock::frameEnded(Qel::FrameEvent const &)
{
    ++m_frames;
    if (m_frames >= m_wanted) {
        Qel::Root::Instance().endMessageLoop();
    }
    return true;
}

bool FrameClock::frameIdle(Qel::FrameEvent const &)
{
    ++m_idleEvents;
    return true;
}

FrameTimes FrameClock::times() const
{
    if (m_times.empty()) {
        return {};
    }
    std::vector<double> sorted = m_times;
    std::sort(sorted.begin(), sorted.end());
    FrameTimes result;
    result.shortest = sorted.front();
    result.longest = sorted.back();
    result.mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / static_cast<double>(sorted.size());
    result.percentile95 = sorted[(sorted.size() - 1) * 95 / 100];
    return result;
}
