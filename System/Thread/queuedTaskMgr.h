#pragma once

#include "System/Patterns/tSingleton.h"
#include "System/System/priority.h"
#include "System/Thread/critical.h"
#include "System/Thread/queuedTask.h"
#include "System/Thread/queuedThread.h"

#include <deque>
#include <memory>
#include <vector>

namespace Qel {

class QueuedTaskMgr;
extern template class QEL_API tSingleton<QueuedTaskMgr>;

/// A fixed pool of worker threads with one queue.
///
/// @code
/// QueuedTaskMgr pool(2, THREAD_PRIO_LOW, 32768, 0);
/// Unpack unpack;
/// pool.addTask(&unpack, PRIORITY_MIDDLE);
/// ...
/// unpack.finish(); // before it is destroyed
/// @endcode
///
/// @par Ownership  Owns its workers; tasks belong to whoever added them.
/// @par Threads    Made and destroyed on one thread while no other one uses it, but for the tasks that its
///                 workers run: these may add tasks until the last worker is gone. The rest: any thread.
class QEL_API QueuedTaskMgr : public tSingleton<QueuedTaskMgr> {
public:
    /// @param threadCount  workers; with 0 of them only forceTask() and finish() get tasks run
    /// @param priority     of all workers
    /// @param stackSize    bytes of each worker's stack, see iThread
    /// @param sleepMs      that a worker sleeps after each step of a task; 0 for none
    QueuedTaskMgr(unsigned int threadCount, eThreadPriority priority, unsigned int stackSize,
                  unsigned int sleepMs);

    /// Aborts what is queued and waits for the steps in progress. A task that has not ended by its step stays
    /// TASK_RUNNING; what is added from now on is aborted at once.
    ~QueuedTaskMgr();

    QueuedTaskMgr(QueuedTaskMgr const &) = delete;
    QueuedTaskMgr &operator=(QueuedTaskMgr const &) = delete;

    /// Hands a task to the first idle worker, or queues it: below priority 7 in front of all others, the last
    /// one first, else behind them in order of arrival. A task that has ended, is queued or runs is left as
    /// it is; so is null. Allocates only when the queue has never been as long.
    /// @param task      not owned; lives until it has ended
    /// @param priority  only whether it is below 7 counts
    void addTask(iQueuedTask *task, ePriority priority);

    /// Runs a task here and now, with one call of execute(true), unless a worker has it or it has ended.
    /// @return where it stands then: TASK_RUNNING for one that a worker has, else TASK_DONE or TASK_ABORTED
    eTaskStatus forceTask(iQueuedTask *task);

    /// Aborts a task that nobody runs.
    /// @return where it stands then: TASK_RUNNING for one that runs and goes on, else TASK_DONE or
    /// TASK_ABORTED
    eTaskStatus abortTask(iQueuedTask *task);

    void abortQueuedTasks(); ///< aborts all that is queued, and what is added meanwhile

    /// While set, addTask() runs each task on the calling thread as forceTask() does.
    void setForceImmediate(bool force) { m_forceImmediate = force; }

    void setThreadPriority(eThreadPriority priority); ///< of all workers

    unsigned int getThreadCount() const { return static_cast<unsigned int>(m_threads.size()); }
    iQueuedThread const *getThread(unsigned int index) const; ///< null for an index out of range

    /// See iThread::getThreadLoad(). @return 0 for an index out of range
    float getThreadLoad(unsigned int index, float period);

    unsigned int getIdleThreads() const; ///< workers without a task
    unsigned int getQueuedTasks() const; ///< length of the queue

private:
    friend class iQueuedThread;
    friend class iQueuedTask;

    iQueuedThread *getAvailableThread() const;
    bool removeJob(iQueuedTask *task);
    void returnToPool(iQueuedThread *thread, eThreadStatus status);
    bool forget(iQueuedTask *task);
    bool hasLeft(iQueuedTask const *task) const;

    std::vector<std::unique_ptr<iQueuedThread>> m_threads;
    std::deque<iQueuedTask *> m_queue;
    cCritical m_lock;
    std::atomic<bool> m_forceImmediate{false};
    bool m_closing = false;  // under the lock
    unsigned int m_idle = 0; // workers without a task; under the lock
};

} // namespace Qel
