#pragma once

#include "System/System/export.h"

#include <cstdint>
#include <vector>

namespace Qel {

/// The system that was detected. Later ones have higher values.
enum OS_TYPE : std::int32_t {
    OS_NOT_DETECTED = 0,
    OS_UNKNOWN = 1, ///< a system that answered, but is none of those below
    OS_WINDOWS_3_1 = 2,
    OS_WINDOWS_95 = 3,
    OS_WINDOWS_95_OSR2 = 4,
    OS_WINDOWS_NT = 5,
    OS_WINDOWS_98 = 6,
    OS_WINDOWS_98_SE = 7,
    OS_WINDOWS_ME = 8,
    OS_WINDOWS_2000 = 9,
    OS_WINDOWS_XP = 10,
    OS_WINDOWS_SERVER = 11,
    OS_WINDOWS_VISTA = 12,
    OS_WINDOWS = 13,
    OS_LINUX = 14, ///< has a name, and is never detected: Linux counts as OS_UNKNOWN
};

/// The system's version. On Linux the first three are the kernel's.
struct sOsBuild {
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::uint32_t servicePackMajor = 0;
    std::uint32_t servicePackMinor = 0;
};

/// Room for what a tool notes about a thread. The library does not use it.
struct sOsThread {
    std::uint32_t id = 0;
    char const *name = nullptr;
};

/// What system this is, and helpers for its threads.
///
/// @par Threads  The first call is to be on the main thread; after that, any.
class QEL_API OsInfo {
public:
    OsInfo() { os_detectVersion(); }

    static OS_TYPE osType;         ///< OS_NOT_DETECTED until the first question
    static sOsBuild osBuild;       ///< zeros until the first question
    static sOsThread osThread[16]; ///< all cleared

    static OS_TYPE os_getVersion();
    static char const *os_getString(); ///< the detected system's name; a literal
    static sOsBuild const *os_getBuild();

    /// Is the detected value at least @p minimum? A system that could not be detected has the value 0.
    static bool os_meetsRequirements(OS_TYPE minimum);

    static void os_detectVersion(); ///< asks the system, unless it has answered already

    /// Names a thread of this process for debuggers, cut to 15 bytes by the system. Null does nothing.
    static void setThreadName(unsigned threadId, char const *name);

    /// Appends the ids of the process's threads.
    /// @return false if the system does not tell; @p ids is then unchanged
    static bool getProcessThreadsSnapshot(std::vector<unsigned> &ids);

    /// The ids in @p after that do not stand in @p before, in the order of @p after: the threads that began
    /// between the two snapshots.
    static std::vector<unsigned> getProcessThreadsSnapshotDiff(std::vector<unsigned> &before,
                                                               std::vector<unsigned> after);
};

} // namespace Qel
