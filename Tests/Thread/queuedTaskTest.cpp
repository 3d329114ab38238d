#include "Support/OS/thread.h"
#include "System/Thread/queuedTaskMgr.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

using namespace Qel;

namespace {

constexpr auto bad = static_cast<eThreadStatus>(9);

class Task : public iQueuedTask {
public:
    explicit Task(std::function<eThreadStatus(bool)> step = [](bool) { return THREAD_DONE; })
        : m_step(std::move(step))
    {
    }
    eThreadStatus execute(bool forced) override { return m_step(forced); }

private:
    std::function<eThreadStatus(bool)> m_step;
};

// Keeps a worker busy until it is let go.
class Blocker : public iQueuedTask {
public:
    eThreadStatus execute(bool) override
    {
        m_entered = true;
        return m_go ? THREAD_DONE : THREAD_CONTINUE;
    }
    void waitEntered()
    {
        ASSERT_TRUE(test::waitUntil([&] { return m_entered.load(); }));
    }
    std::atomic<bool> m_entered{false};
    std::atomic<bool> m_go{false};
};

ePriority priority(int value)
{
    return static_cast<ePriority>(value);
}

struct Pool : QueuedTaskMgr {
    explicit Pool(unsigned int threads, unsigned int sleepMs = 0)
        : QueuedTaskMgr(threads, THREAD_PRIO_NORMAL, 32768, sleepMs)
    {
    }
};

// A pool of one worker, which a task keeps busy.
struct BusyPool : Pool {
    BusyPool() : Pool(1)
    {
        addTask(&blocker, priority(7));
        blocker.waitEntered();
    }
    Blocker blocker;
};

} // namespace

TEST(QueuedTaskMgr, StepsATaskOnAWorkerUntilItEnds)
{
    for (auto const last : {THREAD_DONE, bad}) {
        for (unsigned int const sleepMs : {0u, 1u}) {
            Pool pool(1, sleepMs);
            std::atomic<int> steps{0};
            std::atomic<bool> wasForced{false};
            Task task([&](bool forced) {
                wasForced = wasForced || forced;
                return ++steps < 4 ? THREAD_CONTINUE : last;
            });
            EXPECT_TRUE(task.isDone()); // nobody works on it
            pool.addTask(&task, priority(7));
            ASSERT_TRUE(test::waitUntil([&] { return task.isDone(); }));
            EXPECT_EQ(task.getStatus(), last == THREAD_DONE ? TASK_DONE : TASK_ABORTED);
            EXPECT_EQ(steps, 4);
            EXPECT_FALSE(wasForced);

            pool.addTask(&task, priority(7)); // has ended: not again
            EXPECT_EQ(pool.forceTask(&task), task.getStatus());
            EXPECT_EQ(steps, 4);
            EXPECT_TRUE(test::waitUntil([&] { return pool.getIdleThreads() == 1; }));
        }
    }
}

TEST(QueuedTaskMgr, RunsUrgentTasksLastInFirstOutAndTheOthersInTheirOrder)
{
    BusyPool pool;

    std::string order;
    std::vector<std::unique_ptr<Task>> tasks;
    int const priorities[] = {6, 6, 7, 8};
    for (int index = 0; index < 4; ++index) {
        tasks.push_back(std::make_unique<Task>([&order, index](bool) {
            order += static_cast<char>('A' + index);
            return THREAD_DONE;
        }));
        pool.addTask(tasks.back().get(), priority(priorities[index]));
        EXPECT_EQ(tasks.back()->getStatus(), TASK_QUEUED);
    }
    pool.addTask(tasks[0].get(), priority(7)); // queued already: stays where it is
    EXPECT_EQ(pool.getQueuedTasks(), 4u);
    EXPECT_EQ(pool.getIdleThreads(), 0u);
    EXPECT_TRUE(pool.getThread(0)->isBusy());
    EXPECT_EQ(pool.getThread(0)->getTask(), &pool.blocker);
    pool.blocker.m_go = true;
    for (auto const &task : tasks) {
        ASSERT_TRUE(test::waitUntil([&] { return task->isDone(); }));
    }
    EXPECT_EQ(order, "BACD");
    EXPECT_STREQ(tasks[0]->getTaskName().c_str(), "default-task");
    EXPECT_EQ(pool.blocker.getStatus(), TASK_DONE);
}

TEST(QueuedTaskMgr, FinishRunsAQueuedTaskHereAndWaitsForARunningOne)
{
    BusyPool pool;

    std::atomic<std::uint32_t> ranOn{0};
    Task queued([&](bool forced) {
        EXPECT_TRUE(forced);
        ranOn = os::currentThreadId();
        return THREAD_CONTINUE; // a forced task is called once, and has then ended
    });
    pool.addTask(&queued, priority(7));
    queued.finish();
    EXPECT_EQ(ranOn, os::currentThreadId());
    EXPECT_EQ(queued.getStatus(), TASK_DONE);
    EXPECT_EQ(pool.getQueuedTasks(), 0u);

    EXPECT_EQ(pool.forceTask(&pool.blocker), TASK_RUNNING);
    EXPECT_EQ(pool.abortTask(&pool.blocker), TASK_RUNNING);
    std::thread helper([&] {
        test::pause(5);
        pool.blocker.m_go = true;
    });
    pool.blocker.finish();
    EXPECT_EQ(pool.blocker.getStatus(), TASK_DONE);
    helper.join();
}

TEST(QueuedTaskMgr, AbortTakesATaskOutUnrunAndWaitsForARunningOne)
{
    BusyPool pool;
    Blocker queued, never, added;
    pool.addTask(&queued, priority(7));
    queued.abort();
    never.abort();
    EXPECT_EQ(queued.getStatus(), TASK_ABORTED);
    EXPECT_EQ(never.getStatus(), TASK_ABORTED);
    EXPECT_FALSE(queued.m_entered || never.m_entered);

    pool.addTask(&added, priority(0));
    pool.abortQueuedTasks();
    EXPECT_EQ(added.getStatus(), TASK_ABORTED);
    EXPECT_EQ(pool.getQueuedTasks(), 0u);
    EXPECT_EQ(pool.blocker.getStatus(), TASK_RUNNING);
    pool.blocker.m_go = true;
    pool.blocker.abort();
    EXPECT_EQ(pool.blocker.getStatus(), TASK_DONE); // it ended by itself
}

TEST(QueuedTaskMgr, ForcedImmediatelyATaskIsDoneWhenAddTaskReturns)
{
    Pool pool(1);
    pool.setForceImmediate(true);
    int calls = 0;
    Task task([&](bool forced) {
        calls += forced ? 1 : 100;
        return bad;
    });
    pool.addTask(&task, priority(7));
    EXPECT_EQ(task.getStatus(), TASK_DONE);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(pool.getQueuedTasks(), 0u);
    pool.setForceImmediate(false);
    pool.addTask(nullptr, priority(7));
}

TEST(QueuedTaskMgr, WithoutWorkersOnlyFinishAndForceRunTasks)
{
    Pool pool(0);
    Task finished, forced, aborted, left;
    for (Task *const task : {&finished, &forced, &aborted, &left}) {
        pool.addTask(task, priority(7));
        EXPECT_EQ(task->getStatus(), TASK_QUEUED);
    }
    finished.finish();
    EXPECT_EQ(finished.getStatus(), TASK_DONE);
    EXPECT_EQ(pool.forceTask(&forced), TASK_DONE);
    aborted.abort();
    EXPECT_EQ(aborted.getStatus(), TASK_ABORTED);
    EXPECT_EQ(pool.getQueuedTasks(), 1u);
    EXPECT_EQ(pool.getThread(0), nullptr);
    EXPECT_EQ(pool.getThreadLoad(0, 0.0f), 0.0f);
    pool.abortQueuedTasks();
    EXPECT_EQ(left.getStatus(), TASK_ABORTED);
}

TEST(QueuedTaskMgr, TasksAddAndFinishOtherTasks)
{
    for (unsigned int const workers : {1u, 2u}) {
        Pool pool(workers);
        std::vector<std::unique_ptr<Task>> children;
        std::atomic<int> ran{0};
        for (int index = 0; index < 20; ++index) {
            children.push_back(std::make_unique<Task>([&](bool) { return ++ran > 0 ? THREAD_DONE : bad; }));
        }
        Task parent([&](bool) {
            for (auto const &child : children) {
                pool.addTask(child.get(), priority(7));
            }
            for (auto const &child : children) {
                child->finish();
            }
            return THREAD_DONE;
        });
        pool.addTask(&parent, priority(7));
        ASSERT_TRUE(test::waitUntil([&] { return parent.isDone(); }));
        EXPECT_EQ(ran, 20);
    }
}

TEST(QueuedTaskMgr, WhatATaskThrowsEndsThatTaskOnly)
{
    Pool pool(1);
    Task throwing([](bool) -> eThreadStatus { throw std::runtime_error("no"); });
    Task fine;
    pool.addTask(&throwing, priority(7));
    pool.addTask(&fine, priority(7));
    ASSERT_TRUE(test::waitUntil([&] { return fine.isDone() && throwing.isDone(); }));
    EXPECT_EQ(throwing.getStatus(), TASK_ABORTED);
    EXPECT_EQ(fine.getStatus(), TASK_DONE);

    Task forced([](bool) -> eThreadStatus { throw std::runtime_error("no"); });
    EXPECT_THROW(pool.forceTask(&forced), std::runtime_error);
    EXPECT_EQ(forced.getStatus(), TASK_ABORTED);
}

TEST(QueuedTaskMgr, GoesWithWorkQueuedRunningAndStillBeingAdded)
{
    Blocker running;
    Task queued, late;
    std::atomic<bool> started{false};
    auto pool = std::make_unique<Pool>(2);
    // Adds a task in each step, and is still at it when the pool begins to go.
    std::vector<std::unique_ptr<Task>> added;
    for (int index = 0; index < 20000; ++index) {
        added.push_back(std::make_unique<Task>());
    }
    std::atomic<std::size_t> next{0};
    Task adder([&](bool) {
        started = true;
        for (int burst = 0; burst < 50 && next < added.size(); ++burst) {
            QueuedTaskMgr::Instance().addTask(added[next++].get(), priority(7));
        }
        return THREAD_CONTINUE;
    });
    pool->addTask(&running, priority(7));
    pool->addTask(&adder, priority(7));
    running.waitEntered();
    ASSERT_TRUE(test::waitUntil([&] { return started.load(); }));
    pool->addTask(&queued, priority(7));
    pool.reset();

    EXPECT_EQ(queued.getStatus(), TASK_ABORTED);
    EXPECT_EQ(running.getStatus(), TASK_RUNNING);
    for (std::size_t index = 0; index < next; ++index) {
        EXPECT_NE(added[index]->getStatus(), TASK_QUEUED);
    }
    late.finish(); // no pool: nothing to wait for
    EXPECT_EQ(late.getStatus(), TASK_IDLE);
    EXPECT_EQ(QueuedTaskMgr::InstancePtr(), nullptr);
}

TEST(QueuedTaskMgr, GoesWhileTasksWaitForOthersThatItLeavesRunning)
{
    for (std::size_t const waitingOn : {0u, 1u}) { // the worker that is waited for first, or last
        for (bool const aborts : {false, true}) {
            std::atomic<int> steps{0};
            Task endless([&](bool) {
                ++steps;
                return THREAD_CONTINUE;
            });
            std::atomic<bool> waits{false};
            std::atomic<int> stepsAfter{0};
            Task waiting([&](bool) {
                EXPECT_TRUE(test::waitUntil([&] { return steps > 0; })) << "the other one runs by then";
                waits = true;
                aborts ? endless.abort() : endless.finish();
                stepsAfter = steps.load();
                return THREAD_DONE;
            });
            {
                Pool pool(2);
                pool.addTask(waitingOn == 0 ? &waiting : &endless, priority(7));
                pool.addTask(waitingOn == 0 ? &endless : &waiting, priority(7));
                ASSERT_TRUE(test::waitUntil([&] { return waits.load(); }));
            }
            EXPECT_EQ(waiting.getStatus(), TASK_DONE);
            EXPECT_EQ(endless.getStatus(), TASK_RUNNING);
            EXPECT_EQ(stepsAfter, steps) << "nobody works on it when the wait is over";
        }
    }
}

#ifdef NDEBUG
TEST(QueuedTaskMgr, InReleaseATaskThatIsDestroyedTooEarlyIsForgotten)
{
    BusyPool pool;
    {
        Task gone;
        pool.addTask(&gone, priority(7));
    }
    EXPECT_EQ(pool.getQueuedTasks(), 0u);
    Task after;
    pool.addTask(&after, priority(7));
    pool.blocker.m_go = true;
    EXPECT_TRUE(test::waitUntil([&] { return after.isDone(); }));

    Task itself([&](bool) {
        itself.finish(); // would wait for itself
        itself.abort();
        return THREAD_DONE;
    });
    pool.addTask(&itself, priority(7));
    EXPECT_TRUE(test::waitUntil([&] { return itself.getStatus() == TASK_DONE; }));
}
#else
TEST(QueuedTaskMgrDeathTest, MisuseStopsDebugBuilds)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            Pool pool(0);
            Task gone;
            pool.addTask(&gone, priority(7));
        },
        "");
    EXPECT_DEATH(
        {
            Pool pool(0);
            Task itself([&](bool) {
                itself.finish();
                return THREAD_DONE;
            });
            itself.finish();
        },
        "");
}
#endif
