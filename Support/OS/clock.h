#pragma once

#include "Support/export.h"

#include <cstdint>

namespace os {

/// Wall-clock time of day, local to the process's time zone.
struct LocalTime {
    int hour;   ///< 0 to 23
    int minute; ///< 0 to 59
    int second; ///< 0 to 60
    int ms;     ///< 0 to 999
};

/// Where the library's time comes from. The default reads the system; a test installs one of its own.
class QEL_API Clock {
public:
    virtual ~Clock() = default;

    virtual std::uint32_t milliseconds() = 0; ///< a running count that wraps after 49.7 days
    virtual std::int64_t counter() = 0;       ///< a fine running count
    virtual std::int64_t frequency() = 0;     ///< steps of counter() in a second
    virtual void sleep(std::uint32_t ms) = 0; ///< 0 gives the rest of the time slice away
    virtual LocalTime localTime() = 0;
};

QEL_API std::uint32_t milliseconds();        ///< monotonic milliseconds, low 32 bits
QEL_API std::int64_t performanceCounter();   ///< monotonic, in steps of 100 ns unless replaced
QEL_API std::int64_t performanceFrequency(); ///< 10 000 000 unless replaced
QEL_API void sleepMs(std::uint32_t ms);      ///< at least @p ms milliseconds; 0 yields
QEL_API LocalTime localTime();

/// Is there a date and a local time for these seconds since 1970?
QEL_API bool hasLocalTime(std::int64_t seconds);

/// Replaces the clock for a scope, on every thread. Scopes nest; they end in reverse order.
class QEL_API ClockScope {
public:
    /// @param clock  not owned; must outlive the scope
    explicit ClockScope(Clock &clock);
    ~ClockScope();

    ClockScope(ClockScope const &) = delete;
    ClockScope &operator=(ClockScope const &) = delete;

private:
    Clock *m_before;
};

} // namespace os
