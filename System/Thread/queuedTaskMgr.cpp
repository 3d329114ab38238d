#include "System/Thread/queuedTaskMgr.h"

#include <algorithm>

namespace Qel {

template class tSingleton<QueuedTaskMgr>;

namespace {

constexpr std::uint32_t firstPatientPriority = 7;

} // namespace

QueuedTaskMgr::QueuedTaskMgr(unsigned int threadCount, eThreadPriority priority, unsigned int stackSize,
                             unsigned int sleepMs)
{
    cCriticalHelper const guard(&m_lock);
    m_threads.reserve(threadCount);
    for (unsigned int index = 0; index < threadCount; ++index) {
        m_threads.push_back(std::make_unique<iQueuedThread>(this, stackSize, sleepMs));
        m_threads.back()->setThreadPriority(priority);
    }
    m_idle = threadCount;
}

QueuedTaskMgr::~QueuedTaskMgr()
{
    {
        cCriticalHelper const guard(&m_lock);
        m_closing = true;
    }
    abortQueuedTasks();
    // A task on one worker may wait for a task on another one, so they all stop before the first one is
    // waited for, and may still look at the others, so they all end before the first one goes.
    for (std::unique_ptr<iQueuedThread> const &thread : m_threads) {
        thread->askToEnd();
    }
    for (std::unique_ptr<iQueuedThread> const &thread : m_threads) {
        thread->endWork();
    }
    m_threads.clear();
}

void QueuedTaskMgr::addTask(iQueuedTask *task, ePriority priority)
{
    if (task == nullptr) {
        return;
    }
    if (m_forceImmediate) {
        forceTask(task);
        return;
    }

    iQueuedThread *worker = nullptr;
    {
        cCriticalHelper const guard(&m_lock);
        if (task->getStatus() != TASK_IDLE) {
            return;
        }
        if (m_closing) {
            task->m_status.store(TASK_ABORTED, std::memory_order_release);
            return;
        }
        worker = getAvailableThread();
        if (worker == nullptr) {
            task->m_status.store(TASK_QUEUED, std::memory_order_relaxed);
            if (static_cast<std::uint32_t>(priority) < firstPatientPriority) {
                m_queue.push_front(task);
            } else {
                m_queue.push_back(task);
            }
            return;
        }
        task->m_status.store(TASK_RUNNING, std::memory_order_relaxed);
        worker->m_task.store(task, std::memory_order_release);
        --m_idle;
    }
    // After the lock, so that the worker does not wake up only to wait for it.
    worker->m_wakeUp.give();
}

iQueuedThread *QueuedTaskMgr::getAvailableThread() const
{
    if (m_idle == 0) {
        return nullptr;
    }
    auto const found = std::ranges::find_if(m_threads, [](auto const &thread) { return !thread->isBusy(); });
    return found == m_threads.end() ? nullptr : found->get();
}

void QueuedTaskMgr::returnToPool(iQueuedThread *thread, eThreadStatus status)
{
    iQueuedTask *ended = nullptr;
    iQueuedTask *next = nullptr;
    {
        cCriticalHelper const guard(&m_lock);
        // Null if the task was destroyed in the middle of its last step.
        ended = thread->m_task.load(std::memory_order_relaxed);
        if (ended != nullptr && ended != thread->m_stepped) {
            return; // so it was, and the worker has got another one since
        }
        if (!m_queue.empty()) {
            next = m_queue.front();
            m_queue.pop_front();
        }
        // No wake-up for it: the caller is the worker itself, and looks here before it goes to sleep.
        thread->m_task.store(next, std::memory_order_relaxed);
        if (next == nullptr && ended != nullptr) {
            ++m_idle;
        } else if (next != nullptr && ended == nullptr) {
            --m_idle;
        }
    }
    // The tasks come after the lock, since their memory is likely to be with another processor.
    if (ended != nullptr) {
        // From here on the owner may destroy it.
        ended->m_status.store(status == THREAD_DONE ? TASK_DONE : TASK_ABORTED, std::memory_order_release);
    }
    if (next != nullptr) {
        // Up to now it was a queued task that is not in the queue, and removeJob() goes by the queue.
        next->m_status.store(TASK_RUNNING, std::memory_order_relaxed);
    }
}

// Takes a task that waits out of the queue, and keeps the others in their order.
// Its status is the caller's to set, at once to the one that it is to have: others are looking.
// @return false if it was not in the queue: it does not wait, or a worker has just taken it
bool QueuedTaskMgr::removeJob(iQueuedTask *task)
{
    return task->getStatus() == TASK_QUEUED && std::erase(m_queue, task) > 0;
}

eTaskStatus QueuedTaskMgr::forceTask(iQueuedTask *task)
{
    {
        cCriticalHelper const guard(&m_lock);
        if (!removeJob(task) && task->getStatus() != TASK_IDLE) {
            return std::max(task->getStatus(), TASK_RUNNING);
        }
        task->m_status.store(TASK_RUNNING, std::memory_order_relaxed);
    }

    try {
        task->executeHere(true);
    } catch (...) {
        task->m_status.store(TASK_ABORTED, std::memory_order_release);
        throw;
    }
    task->m_status.store(TASK_DONE, std::memory_order_release);
    return TASK_DONE;
}

eTaskStatus QueuedTaskMgr::abortTask(iQueuedTask *task)
{
    cCriticalHelper const guard(&m_lock);
    if (removeJob(task) || task->getStatus() == TASK_IDLE) {
        task->m_status.store(TASK_ABORTED, std::memory_order_release);
    }
    return std::max(task->getStatus(), TASK_RUNNING);
}

void QueuedTaskMgr::abortQueuedTasks()
{
    for (;;) {
        cCriticalHelper const guard(&m_lock);
        if (m_queue.empty()) {
            return;
        }
        while (!m_queue.empty()) {
            iQueuedTask *const task = m_queue.front();
            m_queue.pop_front();
            task->m_status.store(TASK_ABORTED, std::memory_order_release);
        }
    }
}

// Takes a task out of the queue and out of the workers' hands.
bool QueuedTaskMgr::forget(iQueuedTask *task)
{
    cCriticalHelper const guard(&m_lock);
    bool known = std::erase(m_queue, task) > 0;
    for (std::unique_ptr<iQueuedThread> const &thread : m_threads) {
        if (thread->getTask() == task) {
            thread->m_task.store(nullptr, std::memory_order_release);
            ++m_idle;
            known = true;
        }
    }
    return known;
}

// Has the pool stopped in the middle of a task, so that it will never end?
bool QueuedTaskMgr::hasLeft(iQueuedTask const *task) const
{
    cCriticalHelper const guard(&m_lock);
    return m_closing && std::ranges::any_of(m_threads, [task](auto const &thread) {
               return thread->m_finished && thread->getTask() == task;
           });
}

void QueuedTaskMgr::setThreadPriority(eThreadPriority priority)
{
    cCriticalHelper const guard(&m_lock);
    for (std::unique_ptr<iQueuedThread> const &thread : m_threads) {
        thread->setThreadPriority(priority);
    }
}

iQueuedThread const *QueuedTaskMgr::getThread(unsigned int index) const
{
    return index < m_threads.size() ? m_threads[index].get() : nullptr;
}

float QueuedTaskMgr::getThreadLoad(unsigned int index, float period)
{
    return index < m_threads.size() ? m_threads[index]->getThreadLoad(period) : 0.0f;
}

unsigned int QueuedTaskMgr::getIdleThreads() const
{
    cCriticalHelper const guard(&m_lock);
    return m_idle;
}

unsigned int QueuedTaskMgr::getQueuedTasks() const
{
    cCriticalHelper const guard(&m_lock);
    return static_cast<unsigned int>(m_queue.size());
}

} // namespace Qel
