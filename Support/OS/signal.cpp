#include "Support/OS/signal.h"

#include "Support/OS/pause.h"
#include "Support/OS/signalWord.h"

#include <sched.h>

namespace os {

namespace {

constexpr std::uint32_t given = 1;
constexpr std::uint32_t oneWaiter = 2;

// A process can die between its wake-up and taking the signal; the others then find it by looking again.
constexpr std::uint32_t sharedRecheckMs = 100;

// A waiter looks a few times before it sleeps, at last with its time slice given away.
constexpr int looksInPlace = 12;
constexpr int looksBeforeSleep = 16;

bool takeSignal(std::atomic<std::uint32_t> &state)
{
    std::uint32_t seen = state.load(std::memory_order_relaxed);
    while ((seen & given) != 0) {
        if (state.compare_exchange_weak(seen, seen & ~given, std::memory_order_acquire,
                                        std::memory_order_relaxed)) {
            return true;
        }
    }
    return false;
}

} // namespace

void giveSignal(std::atomic<std::uint32_t> &state, FutexScope scope)
{
    // Written also when it is pending already, so that whoever takes it sees what this thread did before.
    std::uint32_t seen = state.load(std::memory_order_relaxed);
    while (!state.compare_exchange_weak(seen, seen | given, std::memory_order_release,
                                        std::memory_order_relaxed)) {
    }
    // The word is read no more: the waiter may be through, and the word gone.
    if (seen >= oneWaiter && ((seen & given) == 0 || scope == FutexScope::Shared)) {
        futexWakeOne(state, scope);
    }
}

void waitSignal(std::atomic<std::uint32_t> &state, FutexScope scope)
{
    if (takeSignal(state)) {
        return;
    }
    // The next signal is often on its way already, and going to sleep costs the giver a system call as well.
    for (int look = 0; look < looksBeforeSleep; ++look) {
        if (look < looksInPlace) {
            pauseBriefly();
        } else {
            sched_yield();
        }
        if (takeSignal(state)) {
            return;
        }
    }

    std::uint32_t const recheck = scope == FutexScope::Shared ? sharedRecheckMs : 0;
    std::uint32_t seen = state.fetch_add(oneWaiter, std::memory_order_relaxed) + oneWaiter;
    for (;;) {
        if ((seen & given) == 0) {
            futexWait(state, seen, scope, recheck);
            seen = state.load(std::memory_order_relaxed);
        } else if (state.compare_exchange_weak(seen, (seen & ~given) - oneWaiter, std::memory_order_acquire,
                                               std::memory_order_relaxed)) {
            return;
        }
    }
}

void Signal::give()
{
    giveSignal(m_state, FutexScope::Process);
}

void Signal::wait()
{
    waitSignal(m_state, FutexScope::Process);
}

} // namespace os
