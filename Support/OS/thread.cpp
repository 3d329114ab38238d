#include "Support/OS/thread.h"

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

namespace os {

namespace {

constexpr int belowNormalNice = 5;

// The nice value that the process was started with is what "normal" means for it.
int const normalNice = getpriority(PRIO_PROCESS, 0);

bool mayRaisePriority()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    return syscall(SYS_capget, &header, data) == 0 && (data[0].effective & 1u << CAP_SYS_NICE) != 0;
}

// A nice value that has been raised cannot always be lowered again: the limit counts from 20 downwards.
bool mayReturnToNormal()
{
    rlimit limit{};
    return mayRaisePriority() || (getrlimit(RLIMIT_NICE, &limit) == 0 &&
                                  (limit.rlim_cur == RLIM_INFINITY ||
                                   20 - static_cast<std::int64_t>(limit.rlim_cur) <= normalNice));
}

} // namespace

bool setCurrentThreadPriority(ThreadPriority priority)
{
    if (priority == ThreadPriority::BelowNormal && !mayReturnToNormal()) {
        return false;
    }
    int const nice = priority == ThreadPriority::Normal ? normalNice : normalNice + belowNormalNice;
    // On Linux the nice value belongs to the thread whose id is named.
    return setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), nice) == 0;
}

} // namespace os
