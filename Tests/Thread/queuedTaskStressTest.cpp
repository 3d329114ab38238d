#include "System/Thread/queuedTaskMgr.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>
#include <vector>

using namespace Qel;

namespace {

constexpr int taskCount = 100'000;
constexpr int producers = 4;

// Takes up to three steps on a worker; counts its end itself, in a plain field.
class CountedTask : public iQueuedTask {
public:
    eThreadStatus execute(bool forced) override
    {
        if (!forced && ++m_steps < m_wanted) {
            return THREAD_CONTINUE;
        }
        ++m_ends;
        return m_bad ? static_cast<eThreadStatus>(2) : THREAD_DONE;
    }
    int m_wanted = 1;
    bool m_bad = false;
    int m_steps = 0;
    int m_ends = 0;
};

} // namespace

TEST(QueuedTaskMgr, EveryOneOfManyTasksEndsOnceUnderRandomAbortsAndFinishes)
{
    for (unsigned int const workers : {0u, 1u, 3u}) {
        SCOPED_TRACE(workers);
        int const each = taskCount / producers / (workers == 0 ? 10 : 1);
        std::vector<std::vector<CountedTask>> tasks;
        for (int producer = 0; producer < producers; ++producer) {
            tasks.emplace_back(static_cast<std::size_t>(each));
        }
        QueuedTaskMgr pool(workers, THREAD_PRIO_NORMAL, 32768, 0);

        std::vector<std::thread> threads;
        for (int producer = 0; producer < producers; ++producer) {
            threads.emplace_back([&, producer] {
                std::minstd_rand random(static_cast<unsigned int>(producer + 1));
                std::vector<CountedTask> &own = tasks[static_cast<std::size_t>(producer)];
                for (CountedTask &task : own) {
                    task.m_wanted = static_cast<int>(random() % 3 + 1);
                    task.m_bad = random() % 8 == 0;
                    pool.addTask(&task, static_cast<ePriority>(random() % 15));
                    CountedTask &victim = own[random() % own.size()];
                    switch (random() % 64) {
                    case 0:
                        if (&victim <= &task) {
                            victim.finish();
                        }
                        break;
                    case 1:
                        if (&victim <= &task) {
                            victim.abort();
                        }
                        break;
                    case 2:
                        pool.abortTask(&task);
                        break;
                    case 3:
                        if (random() % 16 == 0) {
                            pool.abortQueuedTasks();
                        }
                        break;
                    default:
                        break;
                    }
                }
                for (CountedTask &task : own) {
                    task.finish();
                }
            });
        }
        for (std::thread &thread : threads) {
            thread.join();
        }

        long ran = 0;
        long aborted = 0;
        for (std::vector<CountedTask> const &own : tasks) {
            for (CountedTask const &task : own) {
                ASSERT_GE(task.getStatus(), TASK_DONE);
                if (task.getStatus() == TASK_DONE) {
                    ASSERT_EQ(task.m_ends, 1);
                } else {
                    ASSERT_EQ(task.m_ends, task.m_bad ? task.m_ends : 0);
                    ASSERT_LE(task.m_ends, 1);
                }
                ran += task.m_ends;
                aborted += task.m_ends == 0 ? 1 : 0;
            }
        }
        EXPECT_EQ(ran + aborted, long{each} * producers);
        EXPECT_EQ(pool.getQueuedTasks(), 0u);
        EXPECT_TRUE(test::waitUntil([&] { return pool.getIdleThreads() == workers; }));
    }
}
