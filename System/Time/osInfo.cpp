#include "System/Time/osInfo.h"

#include "Support/OS/process.h"
#include "Support/OS/thread.h"

#include <algorithm>
#include <iterator>

namespace Qel {

namespace {

char const *const names[] = {
    "Not Detected",
    "Unknown",
    "Microsoft Windows 3.1",
    "Microsoft Windows 95",
    "Microsoft Windows 95 osr2",
    "Microsoft Windows NT",
    "Microsoft Windows 98",
    "Microsoft Windows 98 se",
    "Microsoft Windows Millennium",
    "Microsoft Windows 2000",
    "Microsoft Windows XP",
    "Microsoft Windows Server",
    "Microsoft Windows Vista",
    "Microsoft Windows",
    "Linux Flavour",
};

OS_TYPE windows9x(os::SystemVersion const &version)
{
    if (version.major != 4) {
        return OS_UNKNOWN;
    }
    char const edition = version.servicePack[1];
    switch (version.minor) {
    case 0:
        return edition == 'C' || edition == 'B' ? OS_WINDOWS_95_OSR2 : OS_WINDOWS_95;
    case 10:
        return edition == 'A' ? OS_WINDOWS_98_SE : OS_WINDOWS_98;
    case 90:
        return OS_WINDOWS_ME;
    default:
        return OS_UNKNOWN;
    }
}

OS_TYPE windowsNt(os::SystemVersion const &version)
{
    if (version.major < 5) {
        return OS_WINDOWS_NT;
    }
    if (version.major == 5) {
        switch (version.minor) {
        case 0:
            return OS_WINDOWS_2000;
        case 1:
            return OS_WINDOWS_XP;
        case 2:
            return OS_WINDOWS_SERVER;
        default:
            return OS_UNKNOWN;
        }
    }
    return version.major == 6 && version.minor == 0 ? OS_WINDOWS_VISTA : OS_WINDOWS;
}

OS_TYPE typeOf(os::SystemVersion const &version)
{
    switch (version.platform) {
    case os::SystemVersion::oldWindows:
        return OS_WINDOWS_3_1;
    case os::SystemVersion::windows9x:
        return windows9x(version);
    case os::SystemVersion::windowsNt:
        return windowsNt(version);
    default:
        return OS_UNKNOWN;
    }
}

} // namespace

constinit OS_TYPE OsInfo::osType = OS_NOT_DETECTED;
constinit sOsBuild OsInfo::osBuild{};
constinit sOsThread OsInfo::osThread[16]{};

void OsInfo::os_detectVersion()
{
    if (osType != OS_NOT_DETECTED) {
        return;
    }
    os::SystemVersion version;
    if (!os::systemVersion(version)) {
        return;
    }
    osBuild = {version.major, version.minor, version.build, version.servicePackMajor,
               version.servicePackMinor};
    osType = typeOf(version);
}

OS_TYPE OsInfo::os_getVersion()
{
    os_detectVersion();
    return osType;
}

char const *OsInfo::os_getString()
{
    os_detectVersion();
    auto const index = static_cast<std::size_t>(osType); // public, so it may hold anything
    return index < std::size(names) ? names[index] : names[OS_UNKNOWN];
}

sOsBuild const *OsInfo::os_getBuild()
{
    os_detectVersion();
    return &osBuild;
}

bool OsInfo::os_meetsRequirements(OS_TYPE minimum)
{
    os_detectVersion();
    return osType >= minimum;
}

void OsInfo::setThreadName(unsigned threadId, char const *name)
{
    if (name != nullptr) {
        os::setThreadName(threadId, name);
    }
}

bool OsInfo::getProcessThreadsSnapshot(std::vector<unsigned> &ids)
{
    return os::processThreads(ids);
}

std::vector<unsigned> OsInfo::getProcessThreadsSnapshotDiff(std::vector<unsigned> &before,
                                                            std::vector<unsigned> after)
{
    std::erase_if(after, [&](unsigned id) { return std::ranges::find(before, id) != before.end(); });
    return after;
}

} // namespace Qel
