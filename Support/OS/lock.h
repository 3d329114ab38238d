#pragma once

#include "Support/export.h"

#include <atomic>
#include <cstdint>

namespace os {

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

    bool heldByCaller() const; ///< does the calling thread own it?
    bool isHeld() const { return m_state.load(std::memory_order_relaxed) != 0; }

private:
    void lockSlow();

    std::atomic<std::uint32_t> m_state{0}; // 0 free, 1 held, 2 held and somebody may sleep
    std::uint32_t m_depth = 0;             // how often its owner has taken it again
    std::atomic<std::uintptr_t> m_owner{0};
    std::uint32_t m_spinCount;
};

} // namespace os
