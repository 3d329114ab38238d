#include "System/Thread/queuedTask.h"

#include "Support/OS/clock.h"
#include "System/Thread/queuedTaskMgr.h"

namespace Qel {

namespace {

constexpr std::uint32_t pollMs = 1;

// The tasks that the calling thread is in the middle of, the innermost first.
struct Executing {
    iQueuedTask const *task;
    Executing const *outer;
};

[[gnu::tls_model("initial-exec")]] constinit thread_local Executing const *innermost = nullptr;

class ExecutingScope {
public:
    explicit ExecutingScope(iQueuedTask const *task) : m_entry{task, innermost} { innermost = &m_entry; }
    ~ExecutingScope() { innermost = m_entry.outer; }

    ExecutingScope(ExecutingScope const &) = delete;
    ExecutingScope &operator=(ExecutingScope const &) = delete;

private:
    Executing m_entry;
};

} // namespace

iQueuedTask::~iQueuedTask()
{
    if (getStatus() < TASK_IDLE) {
        if (QueuedTaskMgr *const pool = QueuedTaskMgr::InstancePtr()) {
            [[maybe_unused]] bool const known = pool->forget(this);
            QEL_ASSERT(!known);
        }
    }
}

String iQueuedTask::getTaskName() const
{
    return "default-task";
}

bool iQueuedTask::runsOnCaller() const
{
    for (Executing const *entry = innermost; entry != nullptr; entry = entry->outer) {
        if (entry->task == this) {
            return true;
        }
    }
    return false;
}

eThreadStatus iQueuedTask::executeHere(bool forced)
{
    ExecutingScope const scope(this);
    return execute(forced);
}

void iQueuedTask::finish()
{
    bool const waitsForItself = runsOnCaller();
    QEL_ASSERT(!waitsForItself);
    if (waitsForItself) {
        return;
    }
    while (QueuedTaskMgr *const pool = QueuedTaskMgr::InstancePtr()) {
        if (pool->forceTask(this) >= TASK_DONE || pool->hasLeft(this)) {
            return;
        }
        os::sleepMs(pollMs);
    }
}

void iQueuedTask::abort()
{
    bool const waitsForItself = runsOnCaller();
    QEL_ASSERT(!waitsForItself);
    if (waitsForItself) {
        return;
    }
    while (QueuedTaskMgr *const pool = QueuedTaskMgr::InstancePtr()) {
        if (pool->abortTask(this) >= TASK_DONE || pool->hasLeft(this)) {
            return;
        }
        os::sleepMs(pollMs);
    }
}

} // namespace Qel
