#pragma once

#include "System/File/directoryMonitor.h"
#include "System/Thread/mutex.h"
#include "System/Thread/threadTask.h"

#include <atomic>
#include <vector>

namespace Qel {

/// A thread that watches directories for all others. One is enough for all of them.
///
/// @code
/// tThreaded<DirectoryMonitorTask> monitor;
/// monitor.monitorDirectory("media", &mediaChanged, true);
/// @endcode
///
/// Callbacks come on the thread of the task, so they lock what they share with others. Destroying the task
/// waits for the callback in progress and no longer; its watches are then told of no more, and keep their
/// slots.
///
/// @par Threads  Any. A callback may ask for another watch, and must not destroy the task.
class QEL_API DirectoryMonitorTask : public ThreadTask {
public:
    DirectoryMonitorTask();
    ~DirectoryMonitorTask() override;

    /// Asks for a watch, which begins within a second; DirectoryMonitor::monitorDirectory() says how it
    /// works. One that cannot be had is passed over in silence.
    void monitorDirectory(String const &path, DirectoryMonitorCallback callback, bool recursive);

private:
    struct Request {
        String path;
        DirectoryMonitorCallback callback;
        bool recursive;
    };

    bool process(float dt) override;

    cMutex m_mutex; // of m_requests
    std::vector<Request> m_requests;
    std::atomic<std::uint32_t> m_threadId{0}; // 0 before the first step
};

} // namespace Qel
