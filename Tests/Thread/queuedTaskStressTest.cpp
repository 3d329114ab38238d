#include "System/Thread/queuedTaskMgr.h"
#include "Tests/Tools/inThreads.h"
#include "Tests/Tools/waitUntil.h"

#include <gtest/gtest.h>

#include <random>
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
        std::vector<std::vector<CountedTask>> tasks(producers);
        for (std::vector<CountedTask> &own : tasks) {
            own = std::vector<CountedTask>(static_cast<std::size_t>(each));
        }
        QueuedTaskMgr pool(workers, THREAD_PRIO_NORMAL, 32768, 0);

        test::inThreads(producers, [&](int producer) {
            std::minstd_rand random(static_cast<unsigned int>(producer + 1));
            std::vector<CountedTask> &own = tasks[static_cast<std::size_t>(producer)];
            for (CountedTask &task : own) {
                task.m_wanted = static_cast<int>(random() % 3 + 1);
                task.m_bad = random() % 8 == 0;
                pool.addTask(&task, static_cast<ePriority>(random() % 15));
                CountedTask &victim = own[random() % own.size()];
                unsigned long const what = random() % 64;
                if (what == 0 && &victim <= &task) {
                    victim.finish();
                } else if (what == 1 && &victim <= &task) {
                    victim.abort();
                } else if (what == 2) {
                    pool.abortTask(&task);
                } else if (what == 3 && random() % 16 == 0) {
                    pool.abortQueuedTasks();
                }
            }
            for (CountedTask &task : own) {
                task.finish();
            }
        });

        long ran = 0;
        long aborted = 0;
        for (std::vector<CountedTask> const &own : tasks) {
            for (CountedTask const &task : own) {
                ASSERT_GE(task.getStatus(), TASK_DONE);
                ASSERT_LE(task.m_ends, 1);
                bool const done = task.getStatus() == TASK_DONE;
                ASSERT_TRUE(task.m_ends == (done ? 1 : 0) || (task.m_bad && !done));
                ran += task.m_ends;
                aborted += task.m_ends == 0 ? 1 : 0;
            }
        }
        EXPECT_EQ(ran + aborted, long{each} * producers);
        EXPECT_EQ(pool.getQueuedTasks(), 0u);
        EXPECT_TRUE(test::waitUntil([&] { return pool.getIdleThreads() == workers; }));
    }
}
