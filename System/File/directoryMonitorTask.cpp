#include "System/File/directoryMonitorTask.h"

#include "Support/OS/thread.h"

#include <utility>

namespace Qel {

namespace {

constexpr unsigned int sleepMs = 1000;

} // namespace

DirectoryMonitorTask::DirectoryMonitorTask()
{
    setThreadSleep(sleepMs, true);
}

DirectoryMonitorTask::~DirectoryMonitorTask()
{
    waitThreadFinish();
}

void DirectoryMonitorTask::monitorDirectory(String const &path, DirectoryMonitorCallback callback,
                                            bool recursive)
{
    {
        cMutexHelper const guard(&m_mutex);
        m_requests.push_back({path, callback, recursive});
    }
    _beginSteps();
    // Any completion ends the sleep.
    if (std::uint32_t const thread = m_threadId; thread != 0) {
        os::queueCompletion(thread, [] {});
    }
}

bool DirectoryMonitorTask::process(float)
{
    m_threadId = os::currentThreadId();
    std::vector<Request> requests;
    {
        cMutexHelper const guard(&m_mutex);
        requests = std::exchange(m_requests, {});
    }
    // Not under the mutex: a large tree would hold up those who ask.
    for (Request const &request : requests) {
        DirectoryMonitor::monitorDirectory(request.path, request.callback, request.recursive);
    }
    return true;
}

} // namespace Qel
