#include "Support/OS/lock.h"

#include "Support/OS/futex.h"
#include "Support/OS/pause.h"

namespace os {

void RecursiveLock::lockTaken()
{
    for (std::uint32_t tries = m_spinCount; tries > 0; --tries) {
        pauseBriefly();
        std::uint32_t expected = isFree;
        if (m_state.load(std::memory_order_relaxed) == isFree &&
            m_state.compare_exchange_weak(expected, held, std::memory_order_acquire,
                                          std::memory_order_relaxed)) {
            m_owner.store(threadMark(), std::memory_order_relaxed);
            return;
        }
    }
    // Whoever comes through here leaves the mark of a sleeper behind: there may be another one.
    while (m_state.exchange(contended, std::memory_order_acquire) != isFree) {
        futexWait(m_state, contended, FutexScope::Process);
    }
    m_owner.store(threadMark(), std::memory_order_relaxed);
}

void RecursiveLock::wakeNext()
{
    // Reads nothing: the lock may be gone by now.
    futexWakeOne(m_state, FutexScope::Process);
}

} // namespace os
