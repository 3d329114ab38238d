#pragma once

#include "Support/OS/folderWatch.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>
#include <memory>

namespace Qel {

/// What happened to a file.
enum eDirectoryMonitor : std::uint32_t {
    DIRMON_MODIFIED = 0,    ///< content, size, times or rights
    DIRMON_ADDED = 1,       ///< made, or moved in
    DIRMON_RENAMED_OLD = 2, ///< renamed inside the directory: the old name; the new one follows
    DIRMON_RENAMED_NEW = 3, ///< the new name
    DIRMON_REMOVED = 4      ///< removed, or moved out
};

/// Told of one change. What it returns is not looked at; an exception out of it is logged at level 3.
/// @param fileName  relative to the directory, with `/` between
using DirectoryMonitorCallback = bool (*)(eDirectoryMonitor change, String const &fileName);

struct sMonitorDirectory;

/// What a wait for changes knows of the directory it is for.
struct sOverlapped {
    sMonitorDirectory *hEvent = nullptr;
};

/// One watched directory.
struct QEL_API sMonitorDirectory {
    sMonitorDirectory();
    ~sMonitorDirectory();

    sMonitorDirectory(sMonitorDirectory const &) = delete;
    sMonitorDirectory &operator=(sMonitorDirectory const &) = delete;

    char buffer[512] = {};                   ///< its path; the slot is free while the first byte is 0
    std::unique_ptr<os::FolderWatch> handle; ///< null when free
    sOverlapped overlapped;                  ///< of the wait that is under way
    DirectoryMonitorCallback callback = nullptr;
    bool recursive = false; ///< whether subdirectories count
};

/// Watches directories, on the thread that asks for it.
///
/// Callbacks are called on that thread while it sleeps alertably (os::sleepAlertable(), a ThreadTask whose
/// sleep is alertable). DirectoryMonitorTask brings a thread of its own for this.
///
/// Files are told of, directories are not. Those that come into a recursive watch are watched as well, and
/// their files told of as added. If more happens than the system can keep, changes are lost, and the watch
/// goes on. A directory that is removed keeps its slot and is told of no more, also if another takes its
/// name.
///
/// @par Limits   32 directories, for as long as the process lives: nothing ends a watch. If the thread that
///               asked for one ends, its callbacks come no more.
/// @par Threads  Any may ask. A callback holds up the others of its thread while it runs.
class QEL_API DirectoryMonitor {
public:
    DirectoryMonitor() = delete;

    static constexpr unsigned int maxDirectories = 32;

    /// Watches one directory more.
    /// @param path      at most 511 characters
    /// @param callback  not null
    /// @return the slot, or 32 if all are taken or the directory cannot be watched
    static unsigned int monitorDirectory(String const &path, DirectoryMonitorCallback callback,
                                         bool recursive);

    static sMonitorDirectory
        dirs[maxDirectories]; ///< the slots; each belongs to the thread that asked for it
};

} // namespace Qel
