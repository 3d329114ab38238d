#include "Support/OS/thread.h"

#include "Support/OS/affinity.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <unordered_map>

namespace os {

namespace {

constexpr int niceStep = 5;
constexpr std::uint64_t nanosecondsPerUnit = 100;

// The nice value that the process was started with is what "normal" means for it.
int const normalNice = getpriority(PRIO_PROCESS, 0);

std::atomic<int> refusals{0};

// On Linux the nice value belongs to the thread whose id is named.
bool setNice(std::uint32_t threadId, int nice)
{
    return setpriority(PRIO_PROCESS, threadId, nice) == 0;
}

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

bool setPriorityOf(std::uint32_t threadId, ThreadPriority priority)
{
    switch (priority) {
    case ThreadPriority::BelowNormal:
        return setNice(threadId, normalNice + niceStep);
    case ThreadPriority::Normal:
        return setNice(threadId, normalNice);
    case ThreadPriority::AboveNormal:
        break;
    }
    // A process may be allowed to go part of the way.
    for (int nice = normalNice - niceStep; nice < normalNice; ++nice) {
        if (setNice(threadId, nice)) {
            return true;
        }
    }
    return false;
}

std::uint64_t threadCpuTime()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return (static_cast<std::uint64_t>(used.tv_sec) * 1'000'000'000u +
            static_cast<std::uint64_t>(used.tv_nsec)) /
           nanosecondsPerUnit;
}

// Who can be reached by queueCompletion(). Never freed: threads may end after the static objects.
struct Mailboxes {
    std::mutex lock;
    std::unordered_map<std::uint32_t, std::shared_ptr<ThreadEvents>> byThread;
};

Mailboxes &mailboxes()
{
    alignas(Mailboxes) static unsigned char room[sizeof(Mailboxes)];
    static Mailboxes *const all = ::new (room) Mailboxes;
    return *all;
}

// The calling thread's own entry; it goes when the thread ends.
class OwnMailbox {
public:
    ~OwnMailbox()
    {
        if (m_events != nullptr) {
            Mailboxes &all = mailboxes();
            std::lock_guard const guard(all.lock);
            all.byThread.erase(m_id);
        }
    }

    void adopt(std::shared_ptr<ThreadEvents> events)
    {
        m_events = std::move(events);
        m_id = currentThreadId();
        Mailboxes &all = mailboxes();
        std::lock_guard const guard(all.lock);
        all.byThread[m_id] = m_events;
    }

    ThreadEvents &events()
    {
        if (m_events == nullptr) {
            adopt(std::make_shared<ThreadEvents>());
        }
        return *m_events;
    }

private:
    std::shared_ptr<ThreadEvents> m_events;
    std::uint32_t m_id = 0;
};

// Asking the system each time would be a call each time.
[[gnu::tls_model("initial-exec")]] constinit thread_local std::uint32_t ownId = 0;
thread_local OwnMailbox ownMailbox;
thread_local Thread const *runningThread = nullptr; // which of ours the calling thread is

} // namespace

std::uint32_t currentThreadId()
{
    if (ownId == 0) [[unlikely]] {
        // The one thread of a forked process is another one than it was.
        static int const resets = pthread_atfork(nullptr, nullptr, [] { ownId = 0; });
        static_cast<void>(resets);
        ownId = static_cast<std::uint32_t>(gettid());
    }
    return ownId;
}

bool setCurrentThreadPriority(ThreadPriority priority)
{
    if (priority == ThreadPriority::BelowNormal && !mayReturnToNormal()) {
        return false;
    }
    return setPriorityOf(currentThreadId(), priority);
}

UrgentScope::UrgentScope() : m_before(getpriority(PRIO_PROCESS, currentThreadId()))
{
    for (int nice = PRIO_MIN; nice < m_before && !setNice(currentThreadId(), nice); ++nice) {
    }
}

UrgentScope::~UrgentScope()
{
    setNice(currentThreadId(), m_before);
}

bool setThreadName(std::uint32_t threadId, char const *name)
{
    char path[64];
    std::snprintf(path, sizeof path, "/proc/self/task/%u/comm", threadId);
    int const file = open(path, O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        return false;
    }
    bool const written = write(file, name, std::strlen(name)) >= 0;
    close(file);
    return written;
}

void acceptCompletions()
{
    ownMailbox.events();
}

bool queueCompletion(std::uint32_t threadId, std::function<void()> call)
{
    std::shared_ptr<ThreadEvents> events;
    {
        Mailboxes &all = mailboxes();
        std::lock_guard const guard(all.lock);
        auto const found = all.byThread.find(threadId);
        if (found == all.byThread.end()) {
            return false;
        }
        events = found->second;
    }
    std::lock_guard const guard(events->lock);
    events->completions.push_back(std::move(call));
    events->changed.notify_all();
    return true;
}

bool deliverCompletions(ThreadEvents &events)
{
    std::deque<std::function<void()>> calls;
    {
        std::lock_guard const guard(events.lock);
        calls.swap(events.completions);
    }
    for (std::function<void()> const &call : calls) {
        call();
    }
    return !calls.empty();
}

bool sleepAlertable(std::uint32_t ms)
{
    ThreadEvents &events = ownMailbox.events();
    {
        std::unique_lock lock(events.lock);
        events.changed.wait_for(lock, std::chrono::milliseconds(ms),
                                [&] { return !events.completions.empty(); });
    }
    return deliverCompletions(events);
}

std::unique_ptr<Thread> Thread::start(Body body, void *argument, std::size_t stackBytes,
                                      std::shared_ptr<ThreadEvents> events)
{
    if (refusals.load() > 0) {
        return nullptr;
    }
    std::unique_ptr<Thread> thread(new Thread);
    thread->m_body = body;
    thread->m_argument = argument;
    thread->m_events = std::move(events);

    pthread_attr_t attributes{};
    if (pthread_attr_init(&attributes) != 0) {
        return nullptr;
    }
    std::size_t const page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    std::size_t const stack = (std::max(stackBytes, minimumStack) + page - 1) / page * page;
    pthread_t handle{};
    bool const started = pthread_attr_setstacksize(&attributes, stack) == 0 &&
                         pthread_create(&handle, &attributes, &Thread::run, thread.get()) == 0;
    pthread_attr_destroy(&attributes);
    if (!started) {
        thread->m_joined = true;
        return nullptr;
    }
    thread->m_handle = static_cast<std::uintptr_t>(handle);
    return thread;
}

void *Thread::run(void *self)
{
    auto *const thread = static_cast<Thread *>(self);
    runningThread = thread;
    ownMailbox.adopt(thread->m_events);
    thread->m_id.store(os::currentThreadId(), std::memory_order_release);
    thread->m_id.notify_all();

    thread->m_body(thread->m_argument);

    std::lock_guard const guard(thread->m_endLock);
    thread->m_finalCpuTime = threadCpuTime();
    thread->m_ended = true;
    return nullptr;
}

Thread::~Thread()
{
    join();
}

void Thread::join()
{
    if (!m_joined) {
        pthread_join(static_cast<pthread_t>(m_handle), nullptr);
        m_joined = true;
    }
}

bool Thread::isCurrent() const
{
    return runningThread == this;
}

std::uint32_t Thread::waitForId() const
{
    m_id.wait(0, std::memory_order_acquire);
    return m_id.load(std::memory_order_relaxed);
}

bool Thread::setPriority(ThreadPriority priority)
{
    std::uint32_t const id = waitForId();
    std::lock_guard const guard(m_endLock);
    return !m_ended && setPriorityOf(id, priority);
}

bool Thread::setAffinity(std::uint64_t mask)
{
    std::uint32_t const id = waitForId();
    std::lock_guard const guard(m_endLock);
    return !m_ended && affinity().bindThread(id, mask);
}

bool Thread::cpuTime(std::uint64_t &time) const
{
    waitForId();
    std::lock_guard const guard(m_endLock);
    if (m_ended) {
        time = m_finalCpuTime;
        return true;
    }
    clockid_t clock{};
    timespec used{};
    if (pthread_getcpuclockid(static_cast<pthread_t>(m_handle), &clock) != 0 ||
        clock_gettime(clock, &used) != 0) {
        return false;
    }
    time = (static_cast<std::uint64_t>(used.tv_sec) * 1'000'000'000u +
            static_cast<std::uint64_t>(used.tv_nsec)) /
           nanosecondsPerUnit;
    return true;
}

ThreadRefusalScope::ThreadRefusalScope()
{
    ++refusals;
}

ThreadRefusalScope::~ThreadRefusalScope()
{
    --refusals;
}

} // namespace os
