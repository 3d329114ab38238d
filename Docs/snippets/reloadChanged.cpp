#include "System/File/directoryMonitorTask.h"
#include "System/File/fileSystem.h"
#include "System/System/stringVector.h"
#include "System/Thread/critical.h"
#include "System/Thread/threaded.h"

#include <cstdio>

namespace {

Qel::cCritical changedLock;
Qel::StringVector changed;

// Called on the monitor's thread: it takes the name and leaves the work to the game.
bool fileChanged(Qel::eDirectoryMonitor change, Qel::String const &name)
{
    if (change != Qel::DIRMON_REMOVED && change != Qel::DIRMON_RENAMED_OLD) {
        Qel::cCriticalHelper const guard(&changedLock);
        changed.push_back(name);
    }
    return true;
}

} // namespace

int main()
{
    Qel::tThreaded<Qel::DirectoryMonitorTask> monitor;
    monitor.monitorDirectory(".", &fileChanged, true);

    Qel::StringVector scripts;
    if (!Qel::FileSystem::getFiles("./*.*", scripts, "*.particle", true)) {
        return 1;
    }
    std::printf("%zu scripts\n", scripts.size());

    // Once a frame:
    Qel::cCriticalHelper const guard(&changedLock);
    for (Qel::String const &name : changed) {
        std::printf("load %s again\n", name.c_str());
    }
    changed.clear();
    return 0;
}
