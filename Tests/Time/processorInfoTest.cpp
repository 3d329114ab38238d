#include "System/Time/processorInfo.h"
#include "Support/OS/processor.h"
#include "Tests/Tools/notedAffinity.h"
#include "Tests/Tools/steeredClock.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <vector>

using namespace Qel;

namespace {

// The processor while it lives; it answers what a test wants. Leaves that it was not told are as on one
// without them.
class FakeProcessor final : public os::Processor {
public:
    bool canIdentify() override { return identifies; }
    bool cpuid(std::uint32_t leaf, os::CpuidAnswer &answer) override
    {
        if (!identifies) {
            return false;
        }
        auto const found = leaves.find(leaf);
        answer = found == leaves.end() ? os::CpuidAnswer() : found->second;
        if (leaf == 1 && wandering) {
            answer.ebx += static_cast<std::uint32_t>(++asked) << 24;
        }
        return true;
    }
    std::uint64_t timeStamp() override { return stamp += stampStep; }
    std::uint32_t systemCount() override { return count; }

    // Vendors as the manuals give them: ebx, edx, ecx.
    void intel() { leaves[0] = {22, 0x756e6547, 0x6c65746e, 0x49656e69}; }
    void amd() { leaves[0] = {16, 0x68747541, 0x444d4163, 0x69746e65}; }

    // A package of so many logical processors, with hyper-threading reported.
    void logicalPerPackage(std::uint32_t number)
    {
        leaves[1].ebx = (leaves[1].ebx & ~0xFF0000u) | number << 16;
        leaves[1].edx |= 1u << 28;
        leaves[1].eax |= 0xF00;
    }

    std::map<std::uint32_t, os::CpuidAnswer> leaves;
    bool identifies = true;
    bool wandering = false; // it never runs twice on the same processor
    int asked = 0;
    std::uint64_t stamp = 0;
    std::uint64_t stampStep = 0;
    std::uint32_t count = 1;

private:
    os::ProcessorScope m_scope{*this};
};

std::string flagsOf(ProcessorInfo const &info)
{
    std::string text;
    for (bool const has :
         {info.hasRDTSC(), info.hasCMOV(), info.hasFCMOV(), info.hasSSE(), info.hasSSE2(), info.has3DNow(),
          info.hasMMX(), info.hasHT(), info.hasSSE3(), info.hasSpeedstep(), info.hasThermalMonitor(),
          info.isIA64(), info.hasCpuSerial(), info.hasFPU(), info.hasACPI()}) {
        text += has ? '1' : '0';
    }
    return text;
}

} // namespace

TEST(ProcessorInfo, ReadsEachFlagFromItsBit)
{
    std::tuple<std::uint32_t, std::uint32_t, std::string> const rows[] = {
        {0, 0, "000000000000000"},        {1u << 4, 0, "100000000000000"},
        {1u << 15, 0, "010000000000000"}, {1u << 15 | 1u, 0, "011000000000010"}, // FCMOV needs both
        {1u << 25, 0, "000100000000000"}, {1u << 26, 0, "000010000000000"},
        {1u << 23, 0, "000000100000000"}, {0, 1u, "000000001000000"},
        {0, 1u << 7, "000000000100000"},  {1u << 29, 0, "000000000010000"},
        {1u << 30, 0, "000000000001000"}, {1u << 18, 0, "000000000000100"},
        {1u, 0, "000000000000010"},       {1u << 22, 0, "000000000000001"},
    };
    for (auto const &[edx, ecx, flags] : rows) {
        SCOPED_TRACE(flags);
        FakeProcessor processor;
        processor.intel();
        processor.leaves[1] = {0, 0, ecx, edx};
        ProcessorInfo const info;
        EXPECT_EQ(flagsOf(info), flags);
        std::string const lowestLast(flags.rbegin(), flags.rend());
        EXPECT_EQ(info.getCpuInfo()->flags, std::stoul(lowestLast, nullptr, 2));
        EXPECT_EQ(info.getCpuInfo()->size, sizeof(sCPUInfo));
    }
}

TEST(ProcessorInfo, NeedsIntelAndAFamilyForHyperThreading)
{
    std::tuple<bool, std::uint32_t, std::uint32_t, bool> const rows[] = {
        {true, 0xF00, 1u << 28, true},    // the family bits all set
        {true, 0x100600, 1u << 28, true}, // or an extended family
        {true, 0x600, 1u << 28, false},   // neither
        {true, 0xE00, 1u << 28, false},   // not all of them
        {true, 0xF00, 0, false},          {false, 0xF00, 1u << 28, false},
    };
    for (auto const &[intel, signature, features, expected] : rows) {
        SCOPED_TRACE(signature);
        FakeProcessor processor;
        intel ? processor.intel() : processor.amd();
        processor.leaves[1] = {signature, 4u << 16, 0, features};
        processor.count = 8;
        ProcessorInfo const info;
        EXPECT_EQ(info.hasHT(), expected);
        EXPECT_EQ(info.getLogicalPerCPU(), expected ? 4 : 1);
        EXPECT_EQ(info.getPhysicalCPUs(), expected ? 2 : 8);
        EXPECT_STREQ(info.getVendor(), intel ? "GenuineIntel" : "AuthenticAMD");
    }
}

TEST(ProcessorInfo, CountsPackages)
{
    std::tuple<std::uint32_t, std::uint32_t, int, int, int> const rows[] = {
        {4, 8, 2, 8, 4},        {8, 4, 4, 32, 8},      // more than there are: each counts as a package
        {0, 4, 4, 4, 1},                               // a count of 0 counts as 1
        {2, 5, 2, 4, 2},        {255, 2, 2, 254, 127}, // in 8 bits
        {1, 1000, 255, 255, 1}, {64, 256, 4, 0, 0},
    };
    for (auto const &[perPackage, system, physical, logical, perCpu] : rows) {
        SCOPED_TRACE(perPackage);
        FakeProcessor processor;
        processor.intel();
        processor.logicalPerPackage(perPackage);
        processor.count = system;
        ProcessorInfo const info;
        EXPECT_EQ(info.getPhysicalCPUs(), physical);
        EXPECT_EQ(info.getLogicalCPUs(), logical);
        EXPECT_EQ(info.getLogicalPerCPU(), perCpu);
    }
}

TEST(ProcessorInfo, ReadsNameAndSerialWhereTheyAre)
{
    FakeProcessor processor;
    processor.intel();
    processor.leaves[1].edx = 1u << 18;
    processor.leaves[3] = {0, 0x12345678, 0x9ABCDEF0, 0x0000BEEF};
    processor.leaves[0x80000000].eax = 0x80000004;
    char const brand[48] = "     A Processor CPU 2.80GHz, of the best sort.";
    for (std::uint32_t leaf = 0; leaf < 3; ++leaf) {
        std::memcpy(&processor.leaves[0x80000002 + leaf], brand + leaf * 16, 16);
    }
    {
        ProcessorInfo const info;
        EXPECT_STREQ(info.getCpuName(), brand);
        EXPECT_STREQ(info.getCpuSerial(), "1234-5678-9abc-def0-0000-beef");
    }
    // One leaf short: no name at all.
    processor.leaves[0x80000000].eax = 0x80000003;
    processor.leaves[1].edx = 0;
    ProcessorInfo info;
    EXPECT_STREQ(info.getCpuName(), "");
    EXPECT_STREQ(info.getCpuSerial(), "");

    processor.leaves[0x80000000].eax = 0xFFFFFFFF;
    info.init(false); // it is filled
    EXPECT_STREQ(info.getCpuName(), "");
    info.init(true);
    EXPECT_STREQ(info.getCpuName(), brand);
}

TEST(ProcessorInfo, Asks3DNowOnlyWhereThereIsALeafForIt)
{
    for (std::uint32_t const highest : {0u, 0x80000000u, 0x80000001u}) {
        FakeProcessor processor;
        processor.leaves[0x80000000].eax = highest;
        processor.leaves[0x80000001].edx = 1u << 31;
        EXPECT_EQ(ProcessorInfo().has3DNow(), highest == 0x80000001u);
    }
}

TEST(ProcessorInfo, WithoutAnswersKnowsNothing)
{
    FakeProcessor processor;
    processor.identifies = false;
    processor.count = 0;
    ProcessorInfo const info;
    EXPECT_FALSE(info.isPentium());
    EXPECT_EQ(flagsOf(info), "000000000000000");
    EXPECT_STREQ(info.getVendor(), "Generic_x86");
    EXPECT_STREQ(info.getCpuName(), "");
    EXPECT_EQ(info.getPhysicalCPUs(), 1);
    EXPECT_EQ(ProcessorInfo::getAPIC_bits(), 0);
}

TEST(ProcessorInfo, SplitsTheApicNumber)
{
    struct Row {
        std::uint32_t perPackage;
        int physical, logical;
    };
    // 0xB7 split by the next power of two.
    Row const rows[] = {{0, 0xB7, 0}, {1, 0xB7, 0}, {2, 0x5B, 1}, {3, 0x2D, 3}, {8, 0x16, 7}, {255, 0, 0xB7}};
    for (Row const &row : rows) {
        SCOPED_TRACE(row.perPackage);
        FakeProcessor processor;
        processor.intel();
        processor.logicalPerPackage(row.perPackage);
        processor.leaves[1].ebx |= 0xB7000000;
        unsigned char physical = 1;
        unsigned char logical = 1;
        ProcessorInfo::getAPIC(physical, logical);
        EXPECT_EQ(physical, row.physical);
        EXPECT_EQ(logical, row.logical);
    }
}

TEST(ProcessorInfo, ReadsTheStampOnOneProcessorAndGivesUpWhereThatNeverHappens)
{
    FakeProcessor processor;
    processor.leaves[1].ebx = 0x05000000;
    processor.stamp = 41;
    processor.stampStep = 1;
    unsigned apic = 0;
    unsigned long long ticks = 0;
    ProcessorInfo::rdtscCpuid(&apic, &ticks);
    EXPECT_EQ(apic, 5u);
    EXPECT_EQ(ticks, 42u);
    processor.wandering = true;
    ProcessorInfo::rdtscCpuid(&apic, &ticks);
}

TEST(ProcessorInfo, TakesTheCounterForTheClockAndMeasuresWhereThereIsNone)
{
    {
        test::SteeredClock clock;
        ProcessorInfo const info;
        EXPECT_EQ(info.getCycles(), 10'000'000);
        EXPECT_FLOAT_EQ(info.getMHZ(), 10.0f);
        EXPECT_FLOAT_EQ(info.getGHZ(), 0.01f);
    }
    test::SteeredClock clock;
    clock.ticksPerSecond = 0;
    clock.ticksPerMillisecondRead = 10'000;
    clock.startMs = 0xFFFFFF00u; // wraps while it measures
    test::NotedAffinity affinity;
    affinity.process = 0b1100;
    FakeProcessor processor;
    processor.stampStep = 2'000'000'123; // between the two readings, 701 ms apart
    EXPECT_EQ(ProcessorInfo::calculateClockSpeed(true), 2853'000'000); // whole megahertz
    EXPECT_EQ(affinity.processMasks, (std::vector<std::uint64_t>{0b100, 0b1100}));
    EXPECT_EQ(ProcessorInfo::calculateClockSpeed(false), 2853'000'000);
    EXPECT_EQ(affinity.processMasks.size(), 2u);
}

TEST(ProcessorInfo, SamplesTheProcessLoadOnceInAPeriod)
{
    test::SteeredClock clock;
    static std::uint32_t nextStart = 1000; // the samples outlive the test
    clock.startMs = nextStart;
    nextStart += 1000;
    float const before = ProcessorInfo::getCPULoad(-1.0f);
    if (nextStart == 2000) {
        EXPECT_EQ(before, 0.0f);
        EXPECT_EQ(ProcessorInfo::getCPULoad(0.1f), 0.0f); // the first sample
    }
    float const last = ProcessorInfo::getCPULoad(0.0f);
    timespec start{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
    timespec now{};
    do {
        clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    } while ((now.tv_sec - start.tv_sec) * 1000 + (now.tv_nsec - start.tv_nsec) / 1'000'000 < 20);
    clock.advanceMs(100);
    EXPECT_EQ(ProcessorInfo::getCPULoad(0.1f), last);
    EXPECT_EQ(ProcessorInfo::getCPULoad(std::numeric_limits<float>::quiet_NaN()), last);
    clock.advanceMs(1);
    // 20 ms and a little of 101 ms.
    float const load = ProcessorInfo::getCPULoad(0.1f);
    EXPECT_GE(load, 19.0f);
    EXPECT_LT(load, 190.0f); // other threads of the process count too
    EXPECT_EQ(ProcessorInfo::getCPULoad(0.1f), load);
    EXPECT_EQ(ProcessorInfo::getCPULoad(-1.0f), load);
}

TEST(ProcessorInfo, ThisMachineCanBeAsked)
{
    ProcessorInfo const info;
    EXPECT_TRUE(info.isPentium());
    EXPECT_TRUE(info.hasSSE2()); // every one of this architecture
    EXPECT_EQ(std::strlen(info.getVendor()), 12u);
    EXPECT_GE(info.getPhysicalCPUs(), 1);
}
