#include "System/Time/perfCounter.h"
#include "Support/OS/affinity.h"
#include "Support/OS/clock.h"
#include "System/Thread/cpuBinding.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

using namespace Qel;

namespace {

class BrokenClock final : public os::Clock {
public:
    std::uint32_t milliseconds() override { return 0; }
    std::int64_t counter() override { return -1; }
    std::int64_t frequency() override { return 0; }
    void sleep(std::uint32_t) override {}
    os::LocalTime localTime() override { return {}; }
};

class CountingAffinity final : public os::Affinity {
public:
    bool processMask(std::uint64_t &mask) override
    {
        mask = 0b11;
        return true;
    }
    bool bindCurrentThread(std::uint64_t) override
    {
        ++binds;
        return true;
    }
    bool bindThread(std::uint32_t, std::uint64_t) override { return true; }
    bool bindProcess(std::uint64_t) override { return true; }
    int binds = 0;
};

} // namespace

TEST(PerfCounter, MeasuresAndConvertsByItsFrequency)
{
    test::SteeredClock clock;
    clock.ticks = 1'000;
    os::ClockScope const steered(clock);
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
    EXPECT_EQ(counter.ticksToMilliseconds(0), 0u);
    EXPECT_FLOAT_EQ(counter.ticksToMicrosecondsF(ticks), 1567.8f);
    EXPECT_FLOAT_EQ(counter.ticksToMillisecondsF(ticks), 1.5678f);
    EXPECT_FLOAT_EQ(counter.ticksToSeconds(ticks), 0.0015678f);
    counter.ticksToMicroseconds(INT64_MAX); // wraps, and no more
}

TEST(PerfCounter, AFailedReadingIsAPlainNumber)
{
    BrokenClock clock;
    os::ClockScope const steered(clock);
    EXPECT_EQ(PerfCounter::getTickCounter(), 12346);
    PerfCounter counter;
    counter.start();
    counter.end();
    EXPECT_EQ(counter.getDuration(), 0);
    EXPECT_EQ(counter.getFrequency(), 1'000'000);
}

TEST(PerfCounter, BindsItsThreadBeforeTheReading)
{
    CountingAffinity affinity;
    os::AffinityScope const scope(affinity);
    cCpuBinding::init(true);
    PerfCounter::getTickCounter();
    PerfCounter::getTickCounter();
    EXPECT_EQ(affinity.binds, 1);
    cCpuBinding::disable();
    cCpuBinding::deinit();
}
