#include "Support/OS/thread.h"
#include "System/Thread/queuedTask.h"
#include "System/Thread/thread.h"
#include "System/Thread/threadTask.h"
#include "System/Thread/threaded.h"
#include "Tests/Tools/steeredClock.h"
#include "Tests/Tools/tempFolder.h"
#include "Tests/Tools/waitUntil.h"
#include "Tests/virtualSlot.h"

#include <gtest/gtest.h>

#include <ctime>
#include <functional>
#include <string>

#include <sched.h>
#include <sys/resource.h>

using namespace Qel;

namespace {

class Worker : public iThread {
public:
    explicit Worker(std::function<eThreadStatus()> step) : m_step(std::move(step)) {}
    eThreadStatus runThread(float) override { return m_step(); }
    unsigned int getThreadSleep() const override
    {
        ++m_sleepsAsked;
        return iThread::getThreadSleep();
    }
    void _setThreadFinished() override
    {
        iThread::_setThreadFinished();
        m_told = true;
    }

    mutable std::atomic<int> m_sleepsAsked{0};
    std::atomic<bool> m_told{false};

private:
    std::function<eThreadStatus()> m_step;
};

using Threaded = tThreaded<Worker>;

// Processor time of the calling thread.
double threadSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9;
}

} // namespace

TEST(Thread, LoopsThroughItsVirtualOperationsUntilAStepIsNotToBeContinued)
{
    for (auto const last : {THREAD_DONE, static_cast<eThreadStatus>(7)}) {
        int steps = 0;
        Threaded worker([&] { return ++steps < 3 ? THREAD_CONTINUE : last; });
        ASSERT_TRUE(test::waitUntil([&] { return worker.m_told.load(); }));
        EXPECT_EQ(steps, 3);
        EXPECT_EQ(worker.m_sleepsAsked, 2);
    }
}

TEST(Thread, IsNamedForDebuggersAndTakesPriorityAndAffinity)
{
    std::atomic<std::uint32_t> id{0};
    Threaded worker([&] {
        id = os::currentThreadId();
        return THREAD_CONTINUE;
    });
    worker.setThreadSleep(1);
    ASSERT_TRUE(test::waitUntil([&] { return id != 0; }));
    EXPECT_EQ(test::readFile("/proc/self/task/" + std::to_string(id) + "/comm"), "task-thread\n");

    int const normal = getpriority(PRIO_PROCESS, 0);
    worker.setThreadPriority(THREAD_PRIO_LOW);
    EXPECT_GT(getpriority(PRIO_PROCESS, id), normal);
    worker.setThreadPriority(static_cast<eThreadPriority>(3)); // none of ours
    EXPECT_GT(getpriority(PRIO_PROCESS, id), normal);

    worker.setProcessorAffinity(1);
    cpu_set_t set;
    ASSERT_EQ(sched_getaffinity(static_cast<pid_t>(id.load()), sizeof set, &set), 0);
    EXPECT_EQ(CPU_COUNT(&set), 1);
    worker.setProcessorAffinity(0); // nowhere: refused
    ASSERT_EQ(sched_getaffinity(static_cast<pid_t>(id.load()), sizeof set, &set), 0);
    EXPECT_EQ(CPU_COUNT(&set), 1);
}

TEST(Thread, SamplesItsLoadOnceInAPeriod)
{
    std::atomic<bool> entered{false};
    std::atomic<bool> sampled{false};
    std::atomic<bool> burnt{false};
    std::atomic<bool> done{false};
    Threaded worker([&] {
        entered = true;
        sampled.wait(false);
        double const start = threadSeconds();
        while (threadSeconds() - start < 0.0101) {
        }
        burnt = true;
        done.wait(false);
        return THREAD_DONE;
    });
    ASSERT_TRUE(test::waitUntil([&] { return entered.load(); }));
    test::SteeredClock clock; // from here on the worker does not look at it
    clock.startMs = 1000;

    EXPECT_EQ(worker.getThreadLoad(0.1f), 0.0f);
    sampled = true;
    sampled.notify_all();
    ASSERT_TRUE(test::waitUntil([&] { return burnt.load(); }));
    clock.advanceMs(100);
    EXPECT_EQ(worker.getThreadLoad(0.1f), 0.0f); // not yet more than the period
    clock.advanceMs(1);
    float const load = worker.getThreadLoad(0.1f);
    EXPECT_GE(load, 9.99f); // 10.1 ms of 101 ms, and a little to begin and end with
    EXPECT_LT(load, 30.0f);
    EXPECT_EQ(worker.getThreadLoad(0.1f), load);
    EXPECT_EQ(worker.getThreadLoad(-1.0f), load); // no time has gone by: nothing to divide by

    // It stays measurable after its end.
    done = true;
    done.notify_all();
    ASSERT_TRUE(test::waitUntil([&] { return worker.m_told.load(); }));
    clock.advanceMs(200);
    EXPECT_LT(worker.getThreadLoad(0.1f), 30.0f);
}

TEST(Thread, WithoutAThreadFromTheSystemNothingWaits)
{
    os::ThreadRefusalScope const refusal;
    Threaded worker([] { return THREAD_CONTINUE; });
    worker.setThreadPriority(THREAD_PRIO_HIGH);
    worker.setProcessorAffinity(1);
    EXPECT_EQ(worker.getThreadLoad(0.0f), 0.0f);
}

TEST(Thread, KeepsTheOrderThatPluginsAreBuiltAgainst)
{
    // behind the two entries of the destructor
    EXPECT_TRUE(standInOrder(2, &iThread::runThread, &iThread::setThreadSleep, &iThread::getThreadSleep,
                             &iThread::setThreadPriority, &iThread::setProcessorAffinity,
                             &iThread::_setThreadFinished, &iThread::getThreadLoad));
    EXPECT_TRUE(standInOrder(2, &ThreadTask::process));
    EXPECT_TRUE(standInOrder(0, &iQueuedTask::execute));
    EXPECT_TRUE(standInOrder(3, &iQueuedTask::getTaskName));
}
