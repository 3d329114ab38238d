#pragma once

#include "Support/export.h"

#include <atomic>
#include <cstdint>

namespace os {

/// A number that no other living thread of the process has. Nothing is called for it where the processor
/// keeps one.
inline std::uintptr_t threadMark()
{
#if defined(__x86_64__)
    std::uintptr_t mark = 0;
    __asm__("movq %%fs:0, %0" : "=r"(mark)); // where the thread's own data lie
    return mark;
#else
    thread_local char mark = 0;
    return reinterpret_cast<std::uintptr_t>(&mark);
#endif
}

/// A lock of this process that its owner may take again. Its owner gives it back as often as it took it.
///
/// A free lock costs one atomic exchange each way. A thread that finds it taken first tries again for a
/// while, if it was told to, and then sleeps in the system.
class QEL_API RecursiveLock {
public:
    /// @param spinCount  further tries before a thread goes to sleep
    explicit RecursiveLock(std::uint32_t spinCount = 0) : m_spinCount(spinCount) {}

    RecursiveLock(RecursiveLock const &) = delete;
    RecursiveLock &operator=(RecursiveLock const &) = delete;

    void lock();
    void unlock(); ///< by the owner only

    /// Does the calling thread own it?
    bool heldByCaller() const { return m_owner.load(std::memory_order_relaxed) == threadMark(); }
    bool isHeld() const { return m_state.load(std::memory_order_relaxed) != isFree; }

private:
    static constexpr std::uint32_t isFree = 0;
    static constexpr std::uint32_t held = 1;
    static constexpr std::uint32_t contended = 2; // held, and somebody may sleep

    void lockTaken();
    void wakeNext();

    std::atomic<std::uint32_t> m_state{isFree};
    std::uint32_t m_depth = 0; // how often its owner has taken it again
    std::atomic<std::uintptr_t> m_owner{0};
    std::uint32_t m_spinCount;
};

inline void RecursiveLock::lock()
{
    // Asking for the owner first would fetch the line twice when another processor has it.
    std::uint32_t expected = isFree;
    if (m_state.compare_exchange_strong(expected, held, std::memory_order_acquire, std::memory_order_relaxed))
        [[likely]] {
        m_owner.store(threadMark(), std::memory_order_relaxed);
    } else if (heldByCaller()) {
        ++m_depth; // only the owner itself can find its own mark, whatever the other threads do
    } else {
        lockTaken();
    }
}

inline void RecursiveLock::unlock()
{
    if (m_depth > 0) {
        --m_depth;
        return;
    }
    m_owner.store(0, std::memory_order_relaxed);
    if (m_state.exchange(isFree, std::memory_order_release) == contended) {
        wakeNext();
    }
}

} // namespace os
