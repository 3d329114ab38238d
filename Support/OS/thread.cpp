#include "Support/OS/thread.h"

#include <sys/resource.h>
#include <unistd.h>

namespace os {

namespace {

constexpr int belowNormalNice = 5;

// The nice value that the process was started with is what "normal" means for it.
int const normalNice = getpriority(PRIO_PROCESS, 0);

} // namespace

bool setCurrentThreadPriority(ThreadPriority priority)
{
    int const nice = priority == ThreadPriority::Normal ? normalNice : normalNice + belowNormalNice;
    // On Linux the nice value belongs to the thread whose id is named.
    return setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), nice) == 0;
}

} // namespace os
