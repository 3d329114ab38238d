#pragma once

#include "System/Time/timerInit.h"

#include <compare>
#include <cstdint>

namespace Qel {

/// A count of milliseconds of the system's clock, or a difference of two such counts.
///
/// The clock has 32 bits and starts anew after 49.7 days. Two readings with that moment between them have a
/// difference modulo 2^64 that is no time; elapsed() gives the time in that case too, and Timer counts by it.
/// The conversions give 0 until TimerInit::init() has run.
class QEL_API TimerCycle {
public:
    TimerCycle() = default; ///< 0

    /// The count of a time in milliseconds, also where a count is asked for: see init(float).
    TimerCycle(float ms) { init(ms); } // NOLINT(google-explicit-constructor): a time is a count

    /// A count given as such.
    static TimerCycle fromCount(std::uint64_t count);

    /// The count of @p ms milliseconds, truncated; a negative time wraps as the arithmetic does, one beyond
    /// 64 bits becomes the nearest count and one that is no number becomes 0.
    void init(float ms);
    void init() { sample(); } ///< reads the clock
    void sample();            ///< reads the clock: 32 bits, the upper half of the count is zero

    TimerCycle operator+(TimerCycle const &other) const { return fromCount(m_count + other.m_count); }
    TimerCycle operator-(TimerCycle const &other) const { return fromCount(m_count - other.m_count); }
    TimerCycle &operator+=(TimerCycle const &other);
    TimerCycle &operator-=(TimerCycle const &other);
    static void add(TimerCycle const &a, TimerCycle const &b, TimerCycle &out); ///< @p out = a + b
    static void sub(TimerCycle const &a, TimerCycle const &b, TimerCycle &out); ///< @p out = a - b

    /// The time from one reading of the clock to a later one, up to 49.7 days, across the clock's wrap too.
    static TimerCycle elapsed(TimerCycle const &from, TimerCycle const &to);

    auto operator<=>(TimerCycle const &other) const = default;
    bool isLessThan(TimerCycle const &other) const { return m_count < other.m_count; }

    std::uint32_t getMicroseconds() const; ///< truncated; the low 32 bits
    std::uint32_t getMilliseconds() const; ///< truncated; the low 32 bits
    double getMicrosecondsF() const;
    double getMillisecondsF() const;
    double getSeconds() const;
    std::uint64_t getCount() const { return m_count; }

private:
    std::uint64_t m_count = 0;
};

inline TimerCycle TimerCycle::fromCount(std::uint64_t count)
{
    TimerCycle result;
    result.m_count = count;
    return result;
}

inline TimerCycle &TimerCycle::operator+=(TimerCycle const &other)
{
    m_count += other.m_count;
    return *this;
}

inline TimerCycle &TimerCycle::operator-=(TimerCycle const &other)
{
    m_count -= other.m_count;
    return *this;
}

inline void TimerCycle::add(TimerCycle const &a, TimerCycle const &b, TimerCycle &out)
{
    out.m_count = a.m_count + b.m_count;
}

inline void TimerCycle::sub(TimerCycle const &a, TimerCycle const &b, TimerCycle &out)
{
    out.m_count = a.m_count - b.m_count;
}

inline TimerCycle TimerCycle::elapsed(TimerCycle const &from, TimerCycle const &to)
{
    return fromCount(static_cast<std::uint32_t>(to.m_count - from.m_count));
}

inline double TimerCycle::getMicrosecondsF() const
{
    return static_cast<double>(m_count) * TimerInit::gClockSpeedMicrosecondsMultiplier;
}

inline double TimerCycle::getMillisecondsF() const
{
    return static_cast<double>(m_count) * TimerInit::gClockSpeedMillisecondsMultiplier;
}

inline double TimerCycle::getSeconds() const
{
    return static_cast<double>(m_count) * TimerInit::gClockSpeedSecondsMultiplier;
}

} // namespace Qel
