#pragma once

#include "System/Time/timerCycle.h"

namespace Qel {

/// Measures spans of time in milliseconds, up to 49.7 days each.
///
/// @code
/// Timer timer;
/// timer.start();
/// work();
/// timer.end();
/// double const seconds = timer.getDuration().getSeconds();
/// timer.endAsStart(); // the next end() measures from the last one
/// @endcode
///
/// A timer that was never started counts from 0: its readings are the clock's.
///
/// @par Threads  Belongs to one thread.
class QEL_API Timer {
public:
    void start();      ///< a span begins
    void end();        ///< the span ends; getDuration() gives it from now on
    void endAsStart(); ///< the next span begins where the last one ended

    /// The length of the span after end(); before it the reading that the span began with.
    TimerCycle const &getDuration() const { return m_start; }

    /// The time since the span began; it goes on. The result stays until the next call.
    TimerCycle const &getDurationInProgress();

private:
    TimerCycle m_start; // holds the duration after end()
    TimerCycle m_end;
    TimerCycle m_inProgress;
};

} // namespace Qel
