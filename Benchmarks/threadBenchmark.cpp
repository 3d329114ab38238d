// The task pool beside a plain hand-off pool, oneTBB and std::async; the locks beside the standard ones.
#include "Support/OS/affinity.h"
#include "System/Thread/critical.h"
#include "System/Thread/queuedTaskMgr.h"

#include <benchmark/benchmark.h>
#include <oneapi/tbb/global_control.h>
#include <oneapi/tbb/task_group.h>

#include <atomic>
#include <deque>
#include <future>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>
#include <vector>

using namespace Qel;

namespace {

constexpr int taskCount = 10'000;

class TinyTask final : public iQueuedTask {
public:
    eThreadStatus execute(bool) override
    {
        left->fetch_sub(1, std::memory_order_release);
        return THREAD_DONE;
    }
    std::atomic<int> *left = nullptr;
};

// What anybody would write first: one lock, one queue, a semaphore for each worker that waits.
class HandOffPool {
public:
    struct Job {
        virtual ~Job() = default;
        virtual void run() = 0;
    };

    explicit HandOffPool(unsigned int workers)
    {
        for (unsigned int index = 0; index < workers; ++index) {
            m_workers.push_back(std::make_unique<Worker>());
        }
        for (auto const &worker : m_workers) {
            worker->thread = std::thread([this, raw = worker.get()] { loop(*raw); });
        }
    }
    ~HandOffPool()
    {
        m_stop = true;
        for (auto const &worker : m_workers) {
            worker->wake.release();
            worker->thread.join();
        }
    }
    HandOffPool(HandOffPool const &) = delete;
    HandOffPool &operator=(HandOffPool const &) = delete;

    void add(Job *job)
    {
        Worker *idle = nullptr;
        {
            std::lock_guard const guard(m_lock);
            for (auto const &worker : m_workers) {
                if (worker->job == nullptr) {
                    idle = worker.get();
                    idle->job = job;
                    break;
                }
            }
            if (idle == nullptr) {
                m_queue.push_back(job);
            }
        }
        if (idle != nullptr) {
            idle->wake.release();
        }
    }

private:
    struct Worker {
        std::counting_semaphore<> wake{0};
        Job *job = nullptr; // under the lock
        std::thread thread;
    };

    void loop(Worker &worker)
    {
        for (;;) {
            worker.wake.acquire();
            if (m_stop) {
                return;
            }
            Job *job = nullptr;
            {
                std::lock_guard const guard(m_lock);
                job = worker.job;
            }
            while (job != nullptr) {
                job->run();
                std::lock_guard const guard(m_lock);
                job = nullptr;
                if (!m_queue.empty()) {
                    job = m_queue.front();
                    m_queue.pop_front();
                }
                worker.job = job;
            }
        }
    }

    std::mutex m_lock;
    std::deque<Job *> m_queue;
    std::atomic<bool> m_stop{false};
    std::vector<std::unique_ptr<Worker>> m_workers;
};

class TinyJob final : public HandOffPool::Job {
public:
    void run() override { left->fetch_sub(1, std::memory_order_release); }
    std::atomic<int> *left = nullptr;
};

void waitFor(std::atomic<int> const &left)
{
    while (left.load(std::memory_order_acquire) != 0) {
        std::this_thread::yield();
    }
}

void BM_QueuedTaskMgr_tinyTasks(benchmark::State &state)
{
    QueuedTaskMgr pool(static_cast<unsigned int>(state.range(0)), THREAD_PRIO_NORMAL, 32768, 0);
    for (auto _ : state) {
        state.PauseTiming();
        auto tasks = std::make_unique<TinyTask[]>(taskCount);
        std::atomic<int> left{taskCount};
        for (int index = 0; index < taskCount; ++index) {
            tasks[static_cast<std::size_t>(index)].left = &left;
        }
        state.ResumeTiming();
        for (int index = 0; index < taskCount; ++index) {
            pool.addTask(&tasks[static_cast<std::size_t>(index)], PRIORITY_MIDDLE);
        }
        waitFor(left);
        state.PauseTiming();
        for (int index = 0; index < taskCount; ++index) {
            tasks[static_cast<std::size_t>(index)].finish();
        }
        tasks.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}
BENCHMARK(BM_QueuedTaskMgr_tinyTasks)->Arg(1)->Arg(2)->UseRealTime();

void BM_HandOffPool_tinyTasks(benchmark::State &state)
{
    HandOffPool pool(static_cast<unsigned int>(state.range(0)));
    for (auto _ : state) {
        state.PauseTiming();
        auto jobs = std::make_unique<TinyJob[]>(taskCount);
        std::atomic<int> left{taskCount};
        for (int index = 0; index < taskCount; ++index) {
            jobs[static_cast<std::size_t>(index)].left = &left;
        }
        state.ResumeTiming();
        for (int index = 0; index < taskCount; ++index) {
            pool.add(&jobs[static_cast<std::size_t>(index)]);
        }
        waitFor(left);
        state.PauseTiming();
        jobs.reset();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}
BENCHMARK(BM_HandOffPool_tinyTasks)->Arg(1)->Arg(2)->UseRealTime();

void BM_TbbTaskGroup_tinyTasks(benchmark::State &state)
{
    oneapi::tbb::global_control const limit(oneapi::tbb::global_control::max_allowed_parallelism,
                                            static_cast<std::size_t>(state.range(0)) + 1);
    for (auto _ : state) {
        std::atomic<int> left{taskCount};
        oneapi::tbb::task_group group;
        for (int index = 0; index < taskCount; ++index) {
            group.run([&left] { left.fetch_sub(1, std::memory_order_release); });
        }
        group.wait();
    }
    state.SetItemsProcessed(state.iterations() * taskCount);
}
BENCHMARK(BM_TbbTaskGroup_tinyTasks)->Arg(1)->Arg(2)->UseRealTime();

void BM_StdAsync_tinyTasks(benchmark::State &state)
{
    constexpr int few = 100;
    for (auto _ : state) {
        std::atomic<int> left{few};
        std::vector<std::future<void>> futures;
        for (int index = 0; index < few; ++index) {
            futures.push_back(std::async(std::launch::async, [&left] { left.fetch_sub(1); }));
        }
    }
    state.SetItemsProcessed(state.iterations() * few);
}
BENCHMARK(BM_StdAsync_tinyTasks)->UseRealTime();

// Holds the caller, and the threads that it starts meanwhile, on the first processor.
class OneProcessor {
public:
    OneProcessor()
    {
        os::affinity().processMask(m_before);
        os::affinity().bindProcess(1);
    }
    ~OneProcessor() { os::affinity().bindProcess(m_before); }
    OneProcessor(OneProcessor const &) = delete;
    OneProcessor &operator=(OneProcessor const &) = delete;

private:
    std::uint64_t m_before = 1;
};

void BM_QueuedTaskMgr_latencyOnOneProcessor(benchmark::State &state)
{
    OneProcessor const bound;
    QueuedTaskMgr pool(1, THREAD_PRIO_NORMAL, 32768, 0);
    for (auto _ : state) {
        TinyTask task;
        std::atomic<int> left{1};
        task.left = &left;
        pool.addTask(&task, PRIORITY_MIDDLE);
        waitFor(left);
        while (task.getStatus() < TASK_DONE) {
            std::this_thread::yield();
        }
    }
}
BENCHMARK(BM_QueuedTaskMgr_latencyOnOneProcessor)->UseRealTime();

void BM_HandOffPool_latencyOnOneProcessor(benchmark::State &state)
{
    OneProcessor const bound;
    HandOffPool pool(1);
    for (auto _ : state) {
        TinyJob job;
        std::atomic<int> left{1};
        job.left = &left;
        pool.add(&job);
        waitFor(left);
    }
}
BENCHMARK(BM_HandOffPool_latencyOnOneProcessor)->UseRealTime();

// The standard locks of this system leave out the atomic part until the first thread has been made; no game
// runs that way.
bool const threadsWereMade = [] {
    std::thread([] {}).join();
    return true;
}();

void BM_Critical_onOff(benchmark::State &state)
{
    cCritical const lock;
    for (auto _ : state) {
        lock.on();
        benchmark::ClobberMemory();
        lock.off();
    }
}
BENCHMARK(BM_Critical_onOff);

template <class Mutex>
void BM_Std_lockUnlock(benchmark::State &state)
{
    Mutex lock;
    for (auto _ : state) {
        lock.lock();
        benchmark::ClobberMemory();
        lock.unlock();
    }
}
BENCHMARK(BM_Std_lockUnlock<std::recursive_mutex>);
BENCHMARK(BM_Std_lockUnlock<std::mutex>);

void BM_Critical_onOffWhileHeld(benchmark::State &state)
{
    cCritical const lock;
    cCriticalHelper const held(&lock);
    for (auto _ : state) {
        lock.on();
        benchmark::ClobberMemory();
        lock.off();
    }
}
BENCHMARK(BM_Critical_onOffWhileHeld);

void BM_StdRecursive_lockUnlockWhileHeld(benchmark::State &state)
{
    std::recursive_mutex lock;
    std::lock_guard const held(lock);
    for (auto _ : state) {
        lock.lock();
        benchmark::ClobberMemory();
        lock.unlock();
    }
}
BENCHMARK(BM_StdRecursive_lockUnlockWhileHeld);

} // namespace
