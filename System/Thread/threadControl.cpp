#include "System/Thread/threadControl.h"

#include "Support/OS/clock.h"

#include <chrono>

namespace Qel {

namespace {

// How long a worker object that nobody asks anything stays at the gate without a sign of being built.
constexpr std::chrono::milliseconds grace{100};
constexpr std::chrono::milliseconds pollGate{5};

// As often as a thread can be suspended on the system that this count comes from.
constexpr std::uint32_t mostSuspends = 127;
constexpr std::uint32_t suspendFailed = 0xFFFFFFFF;

} // namespace

bool ThreadControl::start(Body body, void *worker, std::size_t stackBytes)
{
    m_body = body;
    m_worker = worker;
    m_hold = GateHold::around(worker);
    m_thread = os::Thread::start(&ThreadControl::run, this, stackBytes, m_events);
    return m_thread != nullptr;
}

void ThreadControl::run(void *self)
{
    auto *const control = static_cast<ThreadControl *>(self);
    control->m_body(*control, control->m_worker);
}

void ThreadControl::stop()
{
    std::lock_guard const guard(m_events->lock);
    m_stopped.store(true, std::memory_order_release);
    m_events->changed.notify_all();
}

void ThreadControl::setEnded()
{
    std::lock_guard const guard(m_events->lock);
    m_ended = true;
    m_events->changed.notify_all();
}

bool ThreadControl::waitEnd(std::uint32_t ms)
{
    std::unique_lock lock(m_events->lock);
    if (ms == noLimit) {
        m_events->changed.wait(lock, [this] { return m_ended; });
        return true;
    }
    return m_events->changed.wait_for(lock, std::chrono::milliseconds(ms), [this] { return m_ended; });
}

std::uint32_t ThreadControl::suspend()
{
    std::lock_guard const guard(m_events->lock);
    std::uint32_t const before = m_suspends.load(std::memory_order_relaxed);
    if (before == mostSuspends) {
        return suspendFailed;
    }
    m_suspends.store(before + 1, std::memory_order_relaxed);
    return before;
}

std::uint32_t ThreadControl::resume()
{
    std::lock_guard const guard(m_events->lock);
    std::uint32_t const before = m_suspends.load(std::memory_order_relaxed);
    if (before > 0) {
        m_suspends.store(before - 1, std::memory_order_relaxed);
        m_events->changed.notify_all();
    }
    return before;
}

bool ThreadControl::waitAtGate(std::function<bool()> const &mayBeWhole)
{
    std::unique_lock lock(m_events->lock);
    auto const open = [this] { return m_opened || m_stopped; };
    if (m_hold != nullptr) {
        // The worker that the hold is for is woken; one that lies deeper inside looks for itself.
        while (!m_events->changed.wait_for(lock, pollGate, open) &&
               !m_hold->load(std::memory_order_acquire)) {
        }
        return open();
    }
    char const *table = tableOf(m_worker);
    auto since = std::chrono::steady_clock::now();
    while (!m_events->changed.wait_for(lock, pollGate, open)) {
        if (char const *const now = tableOf(m_worker); now != table) {
            table = now;
            since = std::chrono::steady_clock::now();
            m_creator.restart();
        } else if (std::chrono::steady_clock::now() - since >= grace && mayBeWhole() &&
                   m_creator.hasGoneOn()) { // on a busy machine the constructors may have had no turn
            return open();
        }
    }
    return true;
}

bool ThreadControl::mayStep()
{
    if (m_suspends.load(std::memory_order_relaxed) != 0) {
        std::unique_lock lock(m_events->lock);
        m_events->changed.wait(lock, [this] { return m_suspends == 0 || m_stopped; });
    }
    return !stopped();
}

void ThreadControl::sleep(std::uint32_t ms, bool alertable)
{
    {
        std::unique_lock lock(m_events->lock);
        m_events->changed.wait_for(lock, std::chrono::milliseconds(ms), [&] {
            return m_stopped || (alertable && !m_events->completions.empty());
        });
    }
    if (alertable) {
        os::deliverCompletions(*m_events);
    }
}

void ThreadControl::yield(bool alertable)
{
    os::sleepMs(0);
    if (alertable) {
        os::deliverCompletions(*m_events);
    }
}

} // namespace Qel
