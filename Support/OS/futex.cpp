#include "Support/OS/futex.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>

namespace os {

static_assert(sizeof(std::atomic<std::uint32_t>) == 4 && std::atomic<std::uint32_t>::is_always_lock_free);

void futexWait(std::atomic<std::uint32_t> &word, std::uint32_t expected, FutexScope scope,
               std::uint32_t timeoutMs)
{
    timespec timeout{};
    timeout.tv_sec = timeoutMs / 1000;
    timeout.tv_nsec = static_cast<long>(timeoutMs % 1000) * 1'000'000;
    syscall(SYS_futex, &word, scope == FutexScope::Process ? FUTEX_WAIT_PRIVATE : FUTEX_WAIT, expected,
            timeoutMs == 0 ? nullptr : &timeout, nullptr, 0);
}

void futexWakeOne(std::atomic<std::uint32_t> &word, FutexScope scope)
{
    syscall(SYS_futex, &word, scope == FutexScope::Process ? FUTEX_WAKE_PRIVATE : FUTEX_WAKE, 1, nullptr,
            nullptr, 0);
}

} // namespace os
