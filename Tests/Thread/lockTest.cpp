#include "System/Thread/critical.h"
#include "System/Thread/signal.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <thread>

using namespace Qel;

TEST(Critical, ItsOwnerMayTakeItAgainAndOthersWaitForTheLastOff)
{
    for (unsigned int const spins : {0u, 4000u}) {
        SCOPED_TRACE(spins);
        cCritical const lock(spins);
        cCriticalHelper const nothing(nullptr);
        std::atomic<bool> entered{false};
        lock.on();
        lock.on();
        std::thread other([&] {
            cCriticalHelper const guard(&lock);
            entered = true;
        });
        lock.off();
        test::pause(5);
        EXPECT_FALSE(entered);
        lock.off();
        other.join();
    }
}

TEST(Critical, KeepsPlainDataWholeUnderContention)
{
    for (unsigned int const spins : {0u, 200u}) {
        SCOPED_TRACE(spins);
        cCritical const lock(spins);
        int count = 0;
        test::inThreads(4, [&](int) {
            for (int round = 0; round < 20000; ++round) {
                cCriticalHelper const outer(&lock);
                cCriticalHelper const inner(&lock);
                ++count;
            }
        });
        EXPECT_EQ(count, 80000);
    }
}

TEST(Signal, GivenTwiceItLetsOneWaiterThrough)
{
    cSignal signal;
    signal.signal();
    signal.signal();
    signal.wait_signal();

    std::atomic<bool> through{false};
    std::thread waiter([&] {
        signal.wait_signal();
        through = true;
    });
    test::pause(10);
    EXPECT_FALSE(through);
    signal.signal();
    waiter.join();
    EXPECT_TRUE(through);
}

// Nobody may be left asleep: each signal is given only after the one before has been taken.
TEST(Signal, WakesEachOfManyWaiters)
{
    constexpr int rounds = 500;
    cSignal signal;
    std::atomic<int> taken{0};
    test::inThreads(5, [&](int index) {
        for (int round = 0; index > 0 && round < rounds; ++round) {
            signal.wait_signal();
            ++taken;
        }
        for (int given = 1; index == 0 && given <= 4 * rounds; ++given) {
            signal.signal();
            while (taken < given) {
                std::this_thread::yield();
            }
        }
    });
}

// The waiter owns the signal and drops it as soon as it is through.
TEST(Signal, MayGoWhileTheGiverIsStillInside)
{
    for (int round = 0; round < 500; ++round) {
        auto signal = std::make_unique<cSignal>();
        int published = 0;
        std::thread giver([&published, raw = signal.get()] {
            published = 1;
            raw->signal();
        });
        signal->wait_signal();
        EXPECT_EQ(published, 1);
        signal.reset();
        giver.join();
    }
}

#ifndef NDEBUG
TEST(CriticalDeathTest, MisuseStopsDebugBuilds)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            cCritical lock;
            lock.off();
        },
        "");
    EXPECT_DEATH(
        {
            cCritical lock;
            lock.on();
        },
        "");
}
#endif
