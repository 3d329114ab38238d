#include "System/File/directoryMonitor.h"

#include "Support/OS/clock.h"
#include "Support/OS/thread.h"
#include "System/System/logManager.h"
#include "System/Thread/critical.h"

#include <cxxabi.h>

#include <cstring>
#include <exception>
#include <string>

namespace Qel {

namespace {

// How long one delivery goes on before the thread can see whether it shall stop.
constexpr std::uint32_t deliveryMs = 20;
constexpr int mostChanges = 256;

eDirectoryMonitor kindOf(os::FolderChange change)
{
    switch (change) {
    case os::FolderChange::Added:
        return DIRMON_ADDED;
    case os::FolderChange::RenamedOld:
        return DIRMON_RENAMED_OLD;
    case os::FolderChange::RenamedNew:
        return DIRMON_RENAMED_NEW;
    case os::FolderChange::Removed:
        return DIRMON_REMOVED;
    case os::FolderChange::Modified:
        break;
    }
    return DIRMON_MODIFIED;
}

void reportThrow(sMonitorDirectory const &directory, char const *what)
{
    logMessage(String("Callback of directory ") + directory.buffer + " ended by an exception: " + what + "\n",
               3);
}

void tell(sMonitorDirectory const &directory, os::FolderChange change, std::string const &name)
{
    try {
        directory.callback(kindOf(change), name);
    } catch (abi::__forced_unwind &) {
        throw; // the system takes the thread down, and insists on passing
    } catch (std::exception const &failure) {
        reportThrow(directory, failure.what());
    } catch (...) {
        reportThrow(directory, "unknown");
    }
}

bool arm(sMonitorDirectory &directory);

void deliver(sMonitorDirectory &directory)
{
    std::uint32_t const start = os::milliseconds();
    os::FolderChange change;
    std::string name;
    for (int told = 0; told < mostChanges && os::milliseconds() - start < deliveryMs; ++told) {
        if (!directory.handle->next(change, name)) {
            arm(directory);
            return;
        }
        tell(directory, change, name);
    }
    os::queueCompletion(os::currentThreadId(),
                        [overlapped = directory.overlapped] { deliver(*overlapped.hEvent); });
}

bool arm(sMonitorDirectory &directory)
{
    directory.overlapped.hEvent = &directory;
    return directory.handle->callOnChange(
        [overlapped = directory.overlapped] { deliver(*overlapped.hEvent); });
}

} // namespace

sMonitorDirectory DirectoryMonitor::dirs[maxDirectories];

sMonitorDirectory::sMonitorDirectory() = default;
sMonitorDirectory::~sMonitorDirectory() = default;

unsigned int DirectoryMonitor::monitorDirectory(String const &path, DirectoryMonitorCallback callback,
                                                bool recursive)
{
    static cCritical const lock; // of the search for a free slot
    if (path.empty() || path.size() >= sizeof dirs[0].buffer || callback == nullptr) {
        return maxDirectories;
    }
    cCriticalHelper const guard(&lock);
    unsigned int slot = 0;
    while (slot < maxDirectories && dirs[slot].buffer[0] != 0) {
        ++slot;
    }
    if (slot == maxDirectories) {
        return maxDirectories;
    }
    sMonitorDirectory &directory = dirs[slot];
    directory.handle = os::FolderWatch::open(path.c_str(), recursive);
    if (directory.handle == nullptr) {
        return maxDirectories;
    }
    directory.callback = callback;
    directory.recursive = recursive;
    if (!arm(directory)) {
        directory.handle.reset();
        return maxDirectories;
    }
    std::memcpy(directory.buffer, path.c_str(), path.size() + 1);
    return slot;
}

} // namespace Qel
