#include "System/Thread/cpuBinding.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/notedAffinity.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <thread>
#include <tuple>
#include <vector>

using namespace Qel;

namespace {

class CpuBinding : public testing::Test {
protected:
    void start(std::uint64_t process, bool enable = true)
    {
        affinity.process = process;
        cCpuBinding::init(enable);
    }
    ~CpuBinding() override
    {
        cCpuBinding::disable();
        cCpuBinding::deinit();
    }

    test::NotedAffinity affinity;
};

std::uint64_t maskFor(test::NotedAffinity &affinity, int binding)
{
    cCpuBinding::bindCurrentThread(static_cast<cCpuBinding::eBinding>(binding));
    return affinity.bound[os::currentThreadId()];
}

} // namespace

TEST(CpuBindingMasks, ComeFromTheProcess)
{
    std::tuple<std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t> const rows[] = {
        {0b1, 0b1, 0b1, 0b1},
        {0b11, 0b11, 0b1, 0b10},
        {0b10100, 0b10100, 0b100, 0b10000},
        {0x40000001, 0x40000001, 0x1, 0x40000000}, // the second one may lie beyond the low eight
        {0, 1, 1, 1},
        {0xF00, 0, 0, 0}, // none of the low eight: binding stays off
    };
    for (auto const &[process, any, first, second] : rows) {
        SCOPED_TRACE(process);
        test::NotedAffinity affinity;
        affinity.process = process;
        cCpuBinding::init(true);
        EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_ANY), any);
        EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_FIRST), first);
        EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_SECOND), second);
        cCpuBinding::disable();
        cCpuBinding::deinit();
    }
}

TEST_F(CpuBinding, AutoPutsTheMainThreadFirstAndOthersSecond)
{
    start(0b11);
    for (int const automatic : {3, 4, 255}) {
        EXPECT_EQ(maskFor(affinity, automatic), 0b1u);
        std::thread([&] { EXPECT_EQ(maskFor(affinity, automatic), 0b10u); }).join();
    }
    std::thread([&] {
        cCpuBinding::signalMainThread();
        EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_AUTO), 0b1u);
    }).join();
    EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_AUTO), 0b10u);

    start(0b1100); // the second one changes nothing
    EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_FIRST), 0b1u);
}

TEST_F(CpuBinding, OffItDoesNothing)
{
    cCpuBinding::bindCurrentThread(cCpuBinding::BIND_AUTO); // before init
    start(0b11, false);
    cCpuBinding::bindCurrentThread(cCpuBinding::BIND_AUTO);
    cCpuBinding::deinit();
    affinity.tells = false;
    start(0b11);
    cCpuBinding::bindCurrentThread(cCpuBinding::BIND_AUTO);
    EXPECT_EQ(affinity.calls, 0);
}

TEST_F(CpuBinding, TheSeventeenthThreadStaysAsItIsAndTheOthersStillRebind)
{
    start(0b11);
    EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_FIRST), 0b1u);
    for (int round = 0; round < 100; ++round) { // one entry, however often it changes
        maskFor(affinity, round % 2 == 0 ? cCpuBinding::BIND_SECOND : cCpuBinding::BIND_FIRST);
    }
    std::atomic<int> bound{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int index = 0; index < 16; ++index) {
        threads.emplace_back([&] {
            cCpuBinding::bindCurrentThread(cCpuBinding::BIND_SECOND);
            ++bound;
            while (!go) {
                test::pause(1);
            }
        });
    }
    ASSERT_TRUE(test::waitUntil([&] { return bound == 16; }));
    EXPECT_EQ(affinity.bound.size(), 16u); // this thread and 15 of the 16
    go = true;
    for (std::thread &thread : threads) {
        thread.join();
    }
    EXPECT_EQ(maskFor(affinity, cCpuBinding::BIND_SECOND), 0b10u);

    cCpuBinding::disable();
    for (auto const &[thread, mask] : affinity.bound) {
        EXPECT_EQ(mask, 0b11u) << thread;
    }
    int const calls = affinity.calls;
    cCpuBinding::bindCurrentThread(cCpuBinding::BIND_FIRST);
    EXPECT_EQ(affinity.calls, calls);
}

TEST_F(CpuBinding, BindsEachThreadOnceWhileManyAsk)
{
    start(0b11);
    test::inThreads(4, [](int) {
        for (int round = 0; round < 5000; ++round) {
            cCpuBinding::bindCurrentThread(cCpuBinding::BIND_AUTO);
        }
    });
    EXPECT_EQ(affinity.calls, 4);
}
