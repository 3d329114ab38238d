#include "System/Time/perfCounter.h"
#include "System/Thread/cpuBinding.h"
#include "Tests/Tools/notedAffinity.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

using namespace Qel;

TEST(PerfCounter, MeasuresAndConvertsByItsFrequency)
{
    test::SteeredClock clock;
    clock.ticks = 1'000;
    PerfCounter counter;
    EXPECT_EQ(counter.ticksToMilliseconds(5), 0u); // not started: no frequency to go by
    EXPECT_EQ(counter.ticksToSeconds(5), 0.0f);
    counter.start();
    clock.ticks += 15'678;
    EXPECT_EQ(counter.getDurationInProgress(), 15'678);
    EXPECT_EQ(counter.getDuration(), 0);
    counter.end();
    clock.ticks += 1;
    EXPECT_EQ(counter.getDuration(), 15'678);

    std::int64_t const ticks = counter.getDuration();
    EXPECT_EQ(counter.ticksToMicroseconds(ticks), 1567u);
    EXPECT_EQ(counter.ticksToMilliseconds(ticks), 1u);
    EXPECT_FLOAT_EQ(counter.ticksToMicrosecondsF(ticks), 1567.8f);
    EXPECT_FLOAT_EQ(counter.ticksToMillisecondsF(ticks), 1.5678f);
    EXPECT_FLOAT_EQ(counter.ticksToSeconds(ticks), 0.0015678f);
    counter.ticksToMicroseconds(INT64_MAX); // wraps, and no more
}

TEST(PerfCounter, AFailedReadingIsAPlainNumber)
{
    test::SteeredClock clock;
    clock.ticks = -1;
    clock.ticksPerSecond = 0;
    EXPECT_EQ(PerfCounter::getTickCounter(), 12346);
    PerfCounter counter;
    counter.start();
    counter.end();
    EXPECT_EQ(counter.getDuration(), 0);
    EXPECT_EQ(counter.getFrequency(), 1'000'000);
}

TEST(PerfCounter, BindsItsThreadBeforeTheReading)
{
    test::NotedAffinity affinity;
    cCpuBinding::init(true);
    PerfCounter::getTickCounter();
    PerfCounter::getTickCounter();
    EXPECT_EQ(affinity.calls, 1);
    cCpuBinding::disable();
    cCpuBinding::deinit();
}
