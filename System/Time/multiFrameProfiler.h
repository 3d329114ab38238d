#pragma once

#include "System/System/export.h"
#include "System/Thread/critical.h"
#include "System/Time/perfCounter.h"

#include <cstdint>

namespace Qel {

/// A beginning or an end on the timeline of cMultiFrameProfiler.
struct sProfileEvent {
    enum eType : std::uint32_t {
        BEGIN = 0,
        END = 1,
        FRAME_BEGIN = 2,
        FRAME_END = 3,
    };

    char const *name = nullptr;
    std::uint32_t threadId = 0;
    eType type = BEGIN;
    std::int64_t tick = 0; ///< counts of PerfCounter
};

/// Records what all threads do during a number of frames, and writes it down as a nested report.
///
/// @code
/// cMultiFrameProfiler::capture("frames.txt", 3); // the next three frames
/// // in the frame loop:
/// cMultiFrameProfiler::beginFrame();
/// cMultiFrameProfiler::beginEvent(0, "physics"); // on any thread
/// cMultiFrameProfiler::endEvent("physics");
/// cMultiFrameProfiler::endFrame(); // the third one writes the file
/// @endcode
///
/// All static. At most 250000 events fit into a capture; what comes after them is dropped.
///
/// @par Threads  Any; everything is under one lock, also while the report is being written.
class QEL_API cMultiFrameProfiler {
public:
    cMultiFrameProfiler() = delete;

    /// Asks for a capture, which begins with the next beginFrame(). Does nothing during one, or for null. One
    /// that has not begun yet is replaced.
    /// @param fileName  of the report; the first 4095 bytes are copied
    /// @param frames    0 counts as 1
    /// @return false, always
    static bool capture(char const *fileName, unsigned char frames);

    static void beginFrame(); ///< does nothing inside a frame

    /// Ends the frame; does nothing outside of one. At the end of the last frame of a capture it writes the
    /// report. If the file can not be written, the capture ends without one.
    static void endFrame();

    /// Records the beginning of an event, while a capture is going on and inside a frame.
    /// @param id    not used
    /// @param name  kept, not copied: it stays valid until the report has been written. Compared by text
    static void beginEvent(unsigned int id, char const *name);
    static void endEvent(char const *name); ///< the end of the event of that name on this thread

private:
    static constexpr std::uint32_t mostEvents = 250000;
    static constexpr std::size_t nameRoom = 4096;

    static void record(char const *name, sProfileEvent::eType type);
    static void writeReport();

    static sProfileEvent m_events[mostEvents];
    static std::uint32_t m_eventCount;
    static bool m_inFrame;
    static bool m_capturing;
    static std::uint8_t m_framesCaptured;
    static std::uint8_t m_framesToCapture; // 0 without a request
    static bool m_counterStarted;
    static char m_fileName[nameRoom];
    static std::int64_t m_startTick;
    static PerfCounter m_counter;
    static cCritical m_lock;
};

} // namespace Qel
