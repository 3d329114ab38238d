#include "Support/OS/lock.h"

#include "Support/OS/futex.h"

#include <pthread.h>

namespace os {

namespace {

constexpr std::uint32_t isFree = 0;
constexpr std::uint32_t held = 1;
constexpr std::uint32_t contended = 2;

std::uintptr_t self()
{
    return static_cast<std::uintptr_t>(pthread_self());
}

void pauseBriefly()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

} // namespace

void RecursiveLock::lock()
{
    std::uintptr_t const me = self();
    std::uint32_t expected = isFree;
    if (!m_state.compare_exchange_strong(expected, held, std::memory_order_acquire,
                                         std::memory_order_relaxed)) {
        // Only the owner itself can find its own name here, whatever the other threads do.
        if (m_owner.load(std::memory_order_relaxed) == me) {
            ++m_depth;
            return;
        }
        lockSlow();
    }
    m_owner.store(me, std::memory_order_relaxed);
}

void RecursiveLock::lockSlow()
{
    for (std::uint32_t tries = m_spinCount; tries > 0; --tries) {
        pauseBriefly();
        std::uint32_t expected = isFree;
        if (m_state.load(std::memory_order_relaxed) == isFree &&
            m_state.compare_exchange_weak(expected, held, std::memory_order_acquire,
                                          std::memory_order_relaxed)) {
            return;
        }
    }
    // Whoever comes through here leaves the mark of a sleeper behind: there may be another one.
    while (m_state.exchange(contended, std::memory_order_acquire) != isFree) {
        futexWait(m_state, contended, FutexScope::Process);
    }
}

void RecursiveLock::unlock()
{
    if (m_depth > 0) {
        --m_depth;
        return;
    }
    m_owner.store(0, std::memory_order_relaxed);
    if (m_state.exchange(isFree, std::memory_order_release) == contended) {
        futexWakeOne(m_state, FutexScope::Process);
    }
}

bool RecursiveLock::heldByCaller() const
{
    return m_owner.load(std::memory_order_relaxed) == self();
}

} // namespace os
