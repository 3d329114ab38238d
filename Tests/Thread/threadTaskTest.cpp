#include "System/Thread/threadTask.h"
#include "Support/OS/thread.h"
#include "System/System/logManager.h"
#include "System/Thread/threaded.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <stdexcept>

using namespace Qel;

namespace {

class Task : public ThreadTask {
public:
    explicit Task(std::function<bool(float)> step, unsigned int sleepMs = 0) : m_step(std::move(step))
    {
        setThreadSleep(sleepMs, false);
    }
    bool process(float dt) override { return m_step(dt); }

private:
    std::function<bool(float)> m_step;
};

using Threaded = tThreaded<Task>;

} // namespace

TEST(ThreadTask, AStopWakesTheSleeperAndNoStepFollows)
{
    std::atomic<int> steps{0};
    Threaded task([&](float) { return ++steps > 0; }, 60'000u);
    ASSERT_TRUE(test::waitUntil([&] { return steps == 1; }));
    auto const start = std::chrono::steady_clock::now();
    task.waitThreadFinish();
    task.waitThreadFinish();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
    EXPECT_EQ(steps, 1);
    EXPECT_TRUE(task.isThreadFinished());
}

TEST(ThreadTask, MeasuresFromTheBeginningOfOneStepToThatOfTheNext)
{
    std::vector<float> times;
    Threaded task([&](float dt) {
        times.push_back(dt);
        test::pause(10);
        return times.size() < 3;
    });
    ASSERT_TRUE(test::waitUntil([&] { return task.isThreadFinished(); }));
    ASSERT_EQ(times.size(), 3u);
    EXPECT_LT(times[0], 0.5f);
    for (std::size_t index = 1; index < 3; ++index) {
        EXPECT_GE(times[index], 0.009f);
        EXPECT_LT(times[index], 5.0f);
    }
}

TEST(ThreadTask, SuspendHoldsItBeforeTheNextStepAndCounts)
{
    std::atomic<int> steps{0};
    Threaded task([&](float) { return ++steps > 0; });
    ASSERT_TRUE(test::waitUntil([&] { return steps > 0; }));
    EXPECT_EQ(task.resume(), 0u);
    EXPECT_EQ(task.suspend(), 0u);
    EXPECT_EQ(task.suspend(), 1u);
    int const mostHeld = steps + 1; // one more may have been on its way
    test::pause(10);
    EXPECT_LE(steps, mostHeld);
    EXPECT_EQ(task.resume(), 2u);
    test::pause(5);
    EXPECT_LE(steps, mostHeld);
    EXPECT_EQ(task.resume(), 1u);
    EXPECT_TRUE(test::waitUntil([&] { return steps > mostHeld; }));

    for (std::uint32_t count = 0; count < 127; ++count) {
        EXPECT_EQ(task.suspend(), count);
    }
    EXPECT_EQ(task.suspend(), 0xFFFFFFFFu);
    // The destructor ends it all the same.
}

TEST(ThreadTask, AnAlertableSleepDeliversAndEnds)
{
    std::atomic<int> steps{0};
    std::atomic<std::uint32_t> id{0};
    std::atomic<bool> onItsThread{false};
    Threaded task([&](float) {
        id = os::currentThreadId();
        ++steps;
        return true;
    });
    task.setThreadSleep(60'000, true);
    EXPECT_TRUE(task.isAlertable());
    ASSERT_TRUE(test::waitUntil([&] { return id != 0; }));
    int const before = steps;
    ASSERT_TRUE(os::queueCompletion(id, [&] { onItsThread = os::currentThreadId() == id; }));
    EXPECT_TRUE(test::waitUntil([&] { return steps > before; }));
    EXPECT_TRUE(onItsThread);
    task.waitThreadFinish();
    EXPECT_TRUE(test::waitUntil([&] { return !os::queueCompletion(id, [] {}); }));
}

namespace {

std::string caught;
void catchText(String const &text)
{
    caught += text.c_str();
}

} // namespace

TEST(ThreadTask, WhatAStepThrowsEndsItsThreadOnly)
{
    LogManager logs;
    logs.createLog("none", true, false, false);
    caught.clear();
    logs.setDefaultCallback(catchText);
    Threaded task([](float) -> bool { throw std::runtime_error("no room"); });
    ASSERT_TRUE(test::waitUntil([&] { return task.isThreadFinished(); }));
    Threaded other([](float) -> bool { throw 1; });
    ASSERT_TRUE(test::waitUntil([&] { return other.isThreadFinished(); }));
    EXPECT_EQ(caught, "Thread ended by an exception: no room\nThread ended by an exception: unknown\n");
}

TEST(ThreadTask, WithoutAThreadFromTheSystemNothingWaits)
{
    os::ThreadRefusalScope const refusal;
    std::atomic<int> steps{0};
    Threaded task([&](float) { return ++steps < 0; });
    EXPECT_FALSE(task.isThreadFinished());
    EXPECT_EQ(task.suspend(), 0xFFFFFFFFu);
    EXPECT_EQ(task.resume(), 0xFFFFFFFFu);
    task.waitThreadFinish();
    EXPECT_EQ(steps, 0);
}
