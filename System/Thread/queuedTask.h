#pragma once

#include "System/System/string.h"
#include "System/Thread/thread.h"

#include <atomic>
#include <cstdint>

namespace Qel {

/// Where a task stands. The order counts: from TASK_IDLE on nobody works on it, from TASK_DONE on nobody ever
/// will again.
enum eTaskStatus : std::uint32_t {
    TASK_QUEUED = 0,  ///< waits in the queue
    TASK_RUNNING = 1, ///< a worker has it, or a caller forces it
    TASK_IDLE = 2,    ///< built and not queued
    TASK_DONE = 3,    ///< ended well
    TASK_ABORTED = 4, ///< ended badly, or taken out of the queue
};

/// A job in steps for QueuedTaskMgr: a worker calls execute() again and again until it answers that it ended.
///
/// @code
/// class Unpack : public iQueuedTask {
///     eThreadStatus execute(bool forced) override
///     {
///         do {
///             if (!unpackNextFile()) {
///                 return THREAD_DONE;
///             }
///         } while (forced); // all of it at once when a caller waits for it
///         return THREAD_CONTINUE;
///     }
/// };
/// @endcode
///
/// @par Ownership  The owner of a task sees it ended, by finish(), abort() or isDone(), before he destroys
/// it.
///                 To destroy one that is queued, or that a worker has, stops debug builds; else it is taken
///                 out of the queue, and a worker lets go of it after the step in progress.
/// @par Threads    Any.
class QEL_API iQueuedTask {
public:
    iQueuedTask() = default;

    /// One step. Never called on two threads at once, and never under the pool's lock.
    /// @param forced  false on a worker; true when the calling thread runs it, once and for all of it
    /// @return THREAD_CONTINUE to be called again, THREAD_DONE when the task ended well, anything else when
    ///         it ended badly. A forced task has ended well whatever it answers. What it throws ends it
    ///         badly: a worker logs that at level 3, and a forced task passes it on to the caller
    virtual eThreadStatus execute(bool forced) = 0;

    virtual ~iQueuedTask();

    virtual String getTaskName() const; ///< "default-task"

    iQueuedTask(iQueuedTask const &) = delete;
    iQueuedTask &operator=(iQueuedTask const &) = delete;

    eTaskStatus getStatus() const { return m_status.load(std::memory_order_acquire); }
    bool isDone() const { return getStatus() >= TASK_IDLE; } ///< also true for a task that was never added

    /// Sees the task ended: runs it here unless a worker has it, and waits for the worker otherwise. Needs
    /// the QueuedTaskMgr that the task was added to; without one it does nothing, and from a task that still
    /// runs while the pool is being destroyed it returns once nobody works on this one any more, with it
    /// still TASK_RUNNING if it has not ended. A task must not call it on itself: debug builds stop there,
    /// and else it returns at once.
    void finish();

    /// Sees the task ended without running it here: takes it out of the queue, or waits until the worker that
    /// has it is through. The rest as finish().
    void abort();

private:
    friend class QueuedTaskMgr;
    friend class iQueuedThread;

    bool runsOnCaller() const;
    eThreadStatus executeHere(bool forced);

    std::atomic<eTaskStatus> m_status{TASK_IDLE};
};

} // namespace Qel
