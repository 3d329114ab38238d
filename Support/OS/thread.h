#pragma once

#include "Support/export.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

namespace os {

enum class ThreadPriority {
    BelowNormal,
    Normal,
    AboveNormal,
};

/// The system's number of the calling thread. A number is used again after its thread has ended.
QEL_API std::uint32_t currentThreadId();

/// Sets the calling thread's share of the processor, as far as the process may. A thread is not set below
/// normal where the process could not bring it back.
/// @return false if nothing has changed
QEL_API bool setCurrentThreadPriority(ThreadPriority priority);

/// While one exists, the calling thread is as urgent as the process may make it.
class QEL_API UrgentScope {
public:
    UrgentScope();
    ~UrgentScope();

    UrgentScope(UrgentScope const &) = delete;
    UrgentScope &operator=(UrgentScope const &) = delete;

private:
    int m_before;
};

/// Names a thread of this process for debuggers; the system keeps the first 15 bytes.
/// @return false if there is no such thread
QEL_API bool setThreadName(std::uint32_t threadId, char const *name);

/// What can wake a sleeping thread: a lock, a condition, and the calls that wait for an alertable sleep.
struct ThreadEvents {
    std::mutex lock;
    std::condition_variable changed;
    std::deque<std::function<void()>> completions; ///< under the lock
};

/// From now on queueCompletion() reaches the calling thread, also before its first alertable sleep.
QEL_API void acceptCompletions();

/// Queues a call for a thread, to be made there during its next alertable sleep.
/// @return false if that thread has ended, or is none of Thread's and has never slept alertably or
///         called acceptCompletions()
QEL_API bool queueCompletion(std::uint32_t threadId, std::function<void()> call);

/// Sleeps, and makes the calls that are queued for this thread.
/// @return true if it made any; the sleep then ended with them
QEL_API bool sleepAlertable(std::uint32_t ms);

/// Makes the calls that are queued in @p events, without its lock held.
/// @return true if there were any
QEL_API bool deliverCompletions(ThreadEvents &events);

/// A thread of the system.
class QEL_API Thread {
public:
    using Body = void (*)(void *argument);

    /// Starts a thread that runs @p body once.
    /// @param stackBytes  room for its stack; at least minimumStack is reserved
    /// @param events      what wakes it; shared, so that the body can know it before start() has returned
    /// @return null if the system gives no thread
    static std::unique_ptr<Thread> start(Body body, void *argument, std::size_t stackBytes,
                                         std::shared_ptr<ThreadEvents> events);
    ~Thread(); ///< waits for the thread's end

    Thread(Thread const &) = delete;
    Thread &operator=(Thread const &) = delete;

    /// Address space only: the system fills it page by page as it is used.
    static constexpr std::size_t minimumStack = 0x100000;

    void join();            ///< waits for the thread's end; again does nothing
    bool isCurrent() const; ///< is it the calling thread?

    bool setPriority(ThreadPriority priority); ///< false if it has ended or the system refuses
    bool setAffinity(std::uint64_t mask);      ///< false if it has ended or the system refuses

    /// The processor time it has used, also after its end.
    /// @param time  kernel and user time in units of 100 ns
    bool cpuTime(std::uint64_t &time) const;

private:
    Thread() = default;
    static void *run(void *self);
    std::uint32_t waitForId() const;

    Body m_body = nullptr;
    void *m_argument = nullptr;
    std::uintptr_t m_handle = 0; // the creator's; the thread itself may run before it is set
    bool m_joined = false;
    std::atomic<std::uint32_t> m_id{0}; // 0 until the thread has told it
    std::shared_ptr<ThreadEvents> m_events;

    // Held while the thread is asked about by its number, and while it ends and gives that number back.
    mutable std::mutex m_endLock;
    bool m_ended = false;
    std::uint64_t m_finalCpuTime = 0; // 100 ns
};

/// While one exists, the system seems to have no more threads to give.
class QEL_API ThreadRefusalScope {
public:
    ThreadRefusalScope();
    ~ThreadRefusalScope();

    ThreadRefusalScope(ThreadRefusalScope const &) = delete;
    ThreadRefusalScope &operator=(ThreadRefusalScope const &) = delete;
};

} // namespace os
