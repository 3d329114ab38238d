#include "System/Time/timer.h"
#include "System/Time/timerInit.h"

#include "System/System/logManager.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <tuple>

namespace Qel {
namespace {

struct Timers : testing::Test {
    Timers()
    {
        clock.ticksPerSecond = 1234567890;
        TimerInit::init(TIMER_MILLISECONDS);
    }
    void at(std::uint32_t ms) { clock.startMs = ms; }

    test::SteeredClock clock;
};

TEST_F(Timers, MeasuresSpansBackToBack)
{
    Timer timer;
    EXPECT_EQ(timer.getDurationInProgress().getCount(), 0u) << "never started: the clock itself";
    at(1000);
    EXPECT_EQ(timer.getDurationInProgress().getCount(), 1000u);
    timer.start();
    EXPECT_EQ(timer.getDuration().getCount(), 1000u) << "the reading itself, until the end";

    at(1010);
    EXPECT_EQ(timer.getDurationInProgress().getCount(), 10u);
    at(1025);
    EXPECT_EQ(timer.getDurationInProgress().getCount(), 25u) << "the start stays";
    timer.end();
    EXPECT_EQ(timer.getDuration().getCount(), 25u);

    timer.endAsStart();
    at(1032);
    timer.end();
    EXPECT_EQ(timer.getDuration().getCount(), 7u);
}

TEST_F(Timers, MeasuresAcrossTheWrapOfTheClock)
{
    Timer timer;
    at(0xFFFFFFF0u);
    timer.start();
    at(4); // 20 ms later
    EXPECT_EQ(timer.getDurationInProgress().getCount(), 20u);
    timer.end();
    EXPECT_DOUBLE_EQ(timer.getDuration().getSeconds(), 0.020);

    TimerCycle before;
    TimerCycle after;
    at(0xFFFFFFFFu);
    before.sample();
    at(0);
    after.init();
    EXPECT_EQ(TimerCycle::elapsed(before, after).getCount(), 1u);
    EXPECT_EQ((after - before).getCount(), 0xFFFFFFFF00000001u) << "plain arithmetic stays modulo 2^64";
}

TEST_F(Timers, ConvertsCountsAsUnsignedNumbers)
{
    std::tuple<std::uint64_t, double, std::uint32_t, std::uint32_t> const rows[] = {
        {1500, 1.5, 1500, 1500000},
        {5000000000, 5000000.0, 705032704, 658067456},               // 5e9 and 5e12 modulo 2^32
        {0x8000000000000800u, std::ldexp(1.0, 63) * 0.001, 2048, 0}, // microseconds beyond 64 bits
        {0xFFFFFFFFFFFFFFFFu, std::ldexp(1.0, 64) * 0.001, 0, 0},
    };

    for (auto const &[count, seconds, milliseconds, microseconds] : rows) {
        SCOPED_TRACE(count);
        TimerCycle const cycle = TimerCycle::fromCount(count);
        EXPECT_NEAR(cycle.getSeconds(), seconds, seconds * 1e-15);
        EXPECT_EQ(cycle.getMilliseconds(), milliseconds);
        EXPECT_EQ(cycle.getMicroseconds(), microseconds);
    }
    EXPECT_TRUE(TimerCycle::fromCount(1).isLessThan(TimerCycle::fromCount(0x8000000000000000u)));
}

TEST_F(Timers, TakesAnyFloat)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::tuple<float, std::uint64_t> const rows[] = {
        {2.9f, 2},
        {-2.9f, 0xFFFFFFFFFFFFFFFEu},
        {9.3e18f, 9300000300729368576u}, // the float nearest to it
        {infinity, 0xFFFFFFFFFFFFFFFFu},
        {-infinity, 0x8000000000000000u},
        {std::numeric_limits<float>::quiet_NaN(), 0},
    };
    for (auto const &[ms, count] : rows) {
        SCOPED_TRACE(ms);
        EXPECT_EQ(TimerCycle(ms).getCount(), count);
    }

    TimerInit::gClockSpeedMillisecondsMultiplier = 0.0; // as before init()
    EXPECT_EQ(TimerCycle(1000.0f).getCount(), 0u);
}

std::string *logged = nullptr;

TEST_F(Timers, LogsTheClockAndTheMeasuredProcessors)
{
    LogManager logs;
    logs.createLog("timer", true, false, false);
    std::string text;
    logged = &text;
    logs.setDefaultCallback([](String const &line) { *logged += line; });

    TimerInit::gTimerCpu[0] = {0, 9000000000, 0, 0x1f, 2400000000};
    TimerInit::gTimerCpu[2] = {0, 1, 0, 2, 1}; // behind an empty one
    TimerInit::debugLog();
    EXPECT_EQ(text, "timer=3 running on 1234Mhz (Cycles:1234567890)\n"
                    "times=9000000000 apic=0x1f mhz:2400\n");
}

} // namespace
} // namespace Qel
