#include "System/Thread/queuedThread.h"

#include "System/Thread/queuedTask.h"
#include "System/Thread/queuedTaskMgr.h"
#include "System/Thread/threadBarrier.h"

namespace Qel {

namespace {

constexpr auto endedByException = static_cast<eThreadStatus>(2);

} // namespace

iQueuedThread::iQueuedThread(QueuedTaskMgr *owner, unsigned int stackSize, unsigned int sleepMs)
    : iThread(stackSize), m_owner(owner)
{
    m_sleep = sleepMs;
    _beginSteps();
}

iQueuedThread::~iQueuedThread()
{
    endWork();
}

void *iQueuedThread::operator new(std::size_t size)
{
    return ::operator new(size);
}

void iQueuedThread::operator delete(void *block)
{
    ::operator delete(block);
}

void iQueuedThread::askToEnd()
{
    // First, so that the worker that wakes up finds it.
    _askToStop();
    m_wakeUp.give();
}

void iQueuedThread::endWork()
{
    askToEnd();
    _endSteps(); // the signal lives until its thread is gone
}

iQueuedTask *iQueuedThread::assignTask(iQueuedTask *task)
{
    iQueuedTask *const before = m_task.exchange(task, std::memory_order_acq_rel);
    if (task != nullptr) {
        m_wakeUp.give();
    }
    return before;
}

eThreadStatus iQueuedThread::runThread(float)
{
    // Without a sleep between the steps the way back through the thread's loop would only read the clock.
    do {
        if (iQueuedTask *const task = getTask()) {
            m_stepped = task;
            eThreadStatus ended = endedByException;
            threadBarrier([&] { ended = task->executeHere(false); });
            if (ended != THREAD_CONTINUE) {
                m_owner->returnToPool(this, ended);
            }
        }
        if (getTask() == nullptr) {
            m_wakeUp.wait();
        }
    } while (m_sleep == 0 && m_status == THREAD_CONTINUE);
    return m_status;
}

} // namespace Qel
