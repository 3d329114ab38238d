#include "Support/OS/clock.h"

#include <atomic>
#include <cerrno>
#include <ctime>
#include <sched.h>

namespace os {

namespace {

constexpr std::int64_t counterFrequency = 10'000'000;
constexpr std::int64_t nanosecondsPerStep = 1'000'000'000 / counterFrequency;

timespec monotonicNow()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

class SystemClock final : public Clock {
public:
    std::uint32_t milliseconds() override
    {
        timespec const now = monotonicNow();
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                                          static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000u);
    }

    std::int64_t counter() override
    {
        timespec const now = monotonicNow();
        return now.tv_sec * counterFrequency + now.tv_nsec / nanosecondsPerStep;
    }

    std::int64_t frequency() override { return counterFrequency; }

    void sleep(std::uint32_t ms) override
    {
        if (ms == 0) {
            sched_yield();
            return;
        }
        // An absolute end, so that a signal in between does not stretch the sleep.
        timespec until = monotonicNow();
        until.tv_sec += ms / 1000;
        until.tv_nsec += static_cast<long>(ms % 1000) * 1'000'000;
        if (until.tv_nsec >= 1'000'000'000) {
            until.tv_nsec -= 1'000'000'000;
            ++until.tv_sec;
        }
        while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr) == EINTR) {
        }
    }

    LocalTime localTime() override
    {
        timespec now{};
        clock_gettime(CLOCK_REALTIME, &now);

        // Breaking a time down costs far more than reading it, so it is done once a second and thread.
        struct Second {
            std::time_t time;
            std::tm parts;
        };
        constinit thread_local Second second{-1, {}};
        if (now.tv_sec != second.time) {
            localtime_r(&now.tv_sec, &second.parts);
            second.time = now.tv_sec;
        }
        std::tm const &parts = second.parts;
        return {parts.tm_hour, parts.tm_min, parts.tm_sec, static_cast<int>(now.tv_nsec / 1'000'000)};
    }
};

constinit SystemClock systemClock;
constinit std::atomic<Clock *> activeClock{&systemClock};

// Hands the clock in use to @p ask: the system's as the class it is, which costs no call through a table.
template <class Ask>
auto active(Ask ask)
{
    Clock *const clock = activeClock.load(std::memory_order_acquire);
    return clock == &systemClock ? ask(systemClock) : ask(*clock);
}

} // namespace

std::uint32_t milliseconds()
{
    return active([](auto &clock) { return clock.milliseconds(); });
}

std::int64_t performanceCounter()
{
    return active([](auto &clock) { return clock.counter(); });
}

std::int64_t performanceFrequency()
{
    return active([](auto &clock) { return clock.frequency(); });
}

void sleepMs(std::uint32_t ms)
{
    active([ms](auto &clock) { clock.sleep(ms); });
}

LocalTime localTime()
{
    return active([](auto &clock) { return clock.localTime(); });
}

bool hasLocalTime(std::int64_t seconds)
{
    std::time_t const time = seconds;
    std::tm parts{};
    return localtime_r(&time, &parts) != nullptr;
}

ClockScope::ClockScope(Clock &clock) : m_before(activeClock.exchange(&clock))
{
}

ClockScope::~ClockScope()
{
    activeClock.store(m_before);
}

} // namespace os
