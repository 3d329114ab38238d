#pragma once

#include "Support/OS/signal.h"
#include "System/Thread/thread.h"

#include <atomic>

namespace Qel {

class iQueuedTask;
class QueuedTaskMgr;

/// A worker of QueuedTaskMgr. It sleeps in the system while it has no task.
class QEL_API iQueuedThread final : public iThread {
public:
    /// @param owner      not owned; outlives the worker
    /// @param stackSize  see iThread
    /// @param sleepMs    between two steps, also between the wake-up and the first step
    iQueuedThread(QueuedTaskMgr *owner, unsigned int stackSize, unsigned int sleepMs);

    /// Waits for the step in progress. A task that has not ended by it stays as it is.
    ~iQueuedThread() override;

    eThreadStatus runThread(float dt) override;

    /// Nothing derives from it, so its destructor comes early enough to stop the thread.
    static void *operator new(std::size_t size);
    static void operator delete(void *block);

    bool isBusy() const { return getTask() != nullptr; }
    iQueuedTask *getTask() const { return m_task.load(std::memory_order_acquire); } ///< null when idle

    /// Gives the worker another task, and wakes it for one.
    /// @param task  null for none
    /// @return the task that it had, or null
    iQueuedTask *assignTask(iQueuedTask *task);

private:
    friend class QueuedTaskMgr;

    void askToEnd(); ///< no step after the one in progress; wakes the worker
    void endWork();  ///< askToEnd(), and waits for the thread's end

    QueuedTaskMgr *m_owner;
    std::atomic<iQueuedTask *> m_task{nullptr}; // changed under the owner's lock only
    os::Signal m_wakeUp;
    iQueuedTask *m_stepped = nullptr; // whose step was made last; the worker's own
};

} // namespace Qel
