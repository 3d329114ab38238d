#include "Support/OS/threadWatch.h"

#include "Support/OS/file.h"
#include "Support/OS/thread.h"

#include <pthread.h>

#include <cstdio>
#include <cstring>
#include <ctime>

namespace os {

namespace {

constexpr std::int64_t enough = 1'000'000; // ns

std::int64_t readClock(clockid_t clock)
{
    timespec used{};
    return clock_gettime(clock, &used) == 0 ? used.tv_sec * std::int64_t{1'000'000'000} + used.tv_nsec : -1;
}

// Does the thread run or wait for a processor? A thread that has ended does not.
bool isRunnable(std::uint32_t id)
{
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%u/stat", id);
    FilePtr const file(std::fopen(path, "r"));
    char line[256] = "";
    if (!file || std::fgets(line, sizeof line, file.get()) == nullptr) {
        return false;
    }
    // The state stands behind the name, which is in parentheses and may hold some itself.
    char const *const name = std::strrchr(line, ')');
    return name != nullptr && std::strncmp(name, ") R", 3) == 0;
}

} // namespace

ThreadWatch::ThreadWatch() : m_id(currentThreadId())
{
    clockid_t clock = 0;
    if (pthread_getcpuclockid(pthread_self(), &clock) == 0) {
        m_clock = clock;
        m_usedBefore = readClock(clock);
    }
}

void ThreadWatch::restart()
{
    if (m_usedBefore >= 0) {
        m_usedBefore = readClock(m_clock);
    }
}

bool ThreadWatch::hasGoneOn() const
{
    std::int64_t const now = m_usedBefore < 0 ? -1 : readClock(m_clock);
    return now < 0 || now - m_usedBefore >= enough || !isRunnable(m_id);
}

} // namespace os
