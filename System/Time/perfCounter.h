#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// The fine timer: spans in counts of the system's performance counter.
///
/// Where binding is on, every reading binds the calling thread to its processor first, so that two readings
/// on one thread come from one processor. On Linux the counter's step is 100 ns.
///
/// @code
/// PerfCounter counter;
/// counter.start();
/// work();
/// counter.end();
/// float const ms = counter.ticksToMillisecondsF(counter.getDuration());
/// @endcode
///
/// The conversions go by the frequency that start() read, and give 0 before it.
///
/// @par Threads  Belongs to one thread.
class QEL_API PerfCounter {
public:
    static std::int64_t getTickCounter(); ///< counts; 12346 if the counter can not be read

    void start();                               ///< a span begins
    void end();                                 ///< keeps the length of the span; the span goes on
    std::int64_t getDurationInProgress() const; ///< counts since start()
    std::int64_t getDuration() const { return m_duration; } ///< counts between start() and the last end()

    unsigned int ticksToMicroseconds(std::int64_t ticks) const; ///< truncated; the low 32 bits
    unsigned int ticksToMilliseconds(std::int64_t ticks) const; ///< truncated; the low 32 bits
    float ticksToMicrosecondsF(std::int64_t ticks) const;
    float ticksToMillisecondsF(std::int64_t ticks) const;
    float ticksToSeconds(std::int64_t ticks) const;

    std::int64_t getFrequency() const { return m_frequency; } ///< counts per second; 0 before start()

private:
    std::int64_t m_start = 0;
    std::int64_t m_frequency = 0;
    std::int64_t m_duration = 0;
};

} // namespace Qel
