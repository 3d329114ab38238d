#pragma once

#include "Support/OS/clock.h"

#include <cstdint>
#include <vector>

namespace test {

/// The clock of the program while it lives, which stands still until it is told otherwise. Sleeping moves it
/// on.
class SteeredClock final : public os::Clock {
public:
    std::uint32_t milliseconds() override
    {
        std::uint32_t const now = startMs + static_cast<std::uint32_t>(ticks / 10'000);
        ticks += ticksPerMillisecondRead;
        return now;
    }
    std::int64_t counter() override { return ticks; }
    std::int64_t frequency() override { return ticksPerSecond; }
    void sleep(std::uint32_t ms) override
    {
        sleeps.push_back(ms);
        ticks += ms == 0 ? ticksPerYield : std::int64_t{ms} * 10'000;
    }
    os::LocalTime localTime() override { return wallClock; }

    void advanceMs(std::int64_t ms) { ticks += ms * 10'000; }

    std::uint32_t startMs = 0;                ///< milliseconds() at ticks 0
    std::int64_t ticks = 0;                   ///< of 100 ns; the counter
    std::int64_t ticksPerSecond = 10'000'000; ///< what frequency() claims; 0 is a clock without a counter
    std::int64_t ticksPerYield = 1'000;       ///< what a sleep of 0 takes
    std::int64_t ticksPerMillisecondRead = 0; ///< moves on after each read of the milliseconds
    std::vector<std::uint32_t> sleeps;        ///< every sleep that was asked for
    os::LocalTime wallClock{9, 5, 7, 42};

private:
    os::ClockScope m_scope{*this};
};

} // namespace test
