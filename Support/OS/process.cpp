#include "Support/OS/process.h"

#include "Support/OS/handle.h"

#include <sys/utsname.h>

#include <atomic>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace os {

namespace {

bool askKernel(SystemVersion &version)
{
    utsname name{};
    if (uname(&name) != 0) {
        return false;
    }
    version = {};
    version.platform = SystemVersion::otherSystem;
    // "6.1.0-13-amd64": what is not there stays 0.
    std::sscanf(name.release, "%9u.%9u.%9u", &version.major, &version.minor, &version.build);
    return true;
}

constinit std::atomic<SystemVersionQuery> versionQuery{&askKernel};

} // namespace

bool processThreads(std::vector<std::uint32_t> &ids)
{
    FolderPtr const folder(opendir("/proc/self/task"));
    if (folder == nullptr) {
        return false;
    }
    while (dirent const *const entry = readdir(folder.get())) {
        char const *const end = entry->d_name + std::strlen(entry->d_name);
        std::uint32_t id = 0;
        auto const [stop, error] = std::from_chars(entry->d_name, end, id);
        if (error == std::errc() && stop == end) {
            ids.push_back(id);
        }
    }
    return true;
}

bool processCpuTime(std::uint64_t &time)
{
    timespec used{};
    if (clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used) != 0) {
        return false;
    }
    time = static_cast<std::uint64_t>(used.tv_sec) * 10'000'000u +
           static_cast<std::uint64_t>(used.tv_nsec) / 100u;
    return true;
}

bool systemVersion(SystemVersion &version)
{
    return versionQuery.load()(version);
}

SystemVersionScope::SystemVersionScope(SystemVersionQuery query) : m_before(versionQuery.exchange(query))
{
}

SystemVersionScope::~SystemVersionScope()
{
    versionQuery.store(m_before);
}

} // namespace os
