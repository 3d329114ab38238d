#pragma once

#include "Support/OS/thread.h"
#include "Support/OS/threadWatch.h"
#include "System/Thread/gateHold.h"

#include <atomic>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>

namespace Qel {

/// What a worker object and its thread share. The thread is made in the constructor of the worker's base
/// class, and waits at the gate here until the whole object has been built.
class ThreadControl {
public:
    using Body = void (*)(ThreadControl &control, void *worker);

    /// @return false if the system gives no thread
    bool start(Body body, void *worker, std::size_t stackBytes);

    // For the worker's owner.

    /// Opens the gate, the first time. @p resolve is called before any step can run.
    template <class Resolve>
    void open(Resolve resolve)
    {
        if (isOpen()) {
            return;
        }
        std::lock_guard const guard(m_events->lock);
        if (!m_opened.load(std::memory_order_relaxed)) {
            resolve();
            m_opened.store(true, std::memory_order_release);
            m_events->changed.notify_all();
        }
    }

    void stop();                      ///< no further step; ends all waiting of the thread
    bool waitEnd(std::uint32_t ms);   ///< until the body is through; false if it is not after so long
    void join() { m_thread->join(); } ///< until the system has taken the thread down
    std::uint32_t suspend();          ///< the count before, or 0xFFFFFFFF if it can not grow
    std::uint32_t resume();           ///< the count before
    os::Thread &thread() { return *m_thread; }

    // For the thread itself.

    /// Waits until the gate opens. A worker that lies in an object under a GateHold waits for the hold's end
    /// at least. Another one waits until its table pointer has been the same for the time of grace, in which
    /// its creator must have had a turn: each constructor sets it when it begins.
    /// @param mayBeWhole  false while the table that the object has now is certainly not its last one
    /// @return false if it is still closed, and nothing is left to wait for
    bool waitAtGate(std::function<bool()> const &mayBeWhole);
    bool isOpen() const { return m_opened.load(std::memory_order_acquire); }
    bool mayStep(); ///< waits while suspended; false once it has been stopped
    bool stopped() const { return m_stopped.load(std::memory_order_acquire); }
    void sleep(std::uint32_t ms, bool alertable); ///< ends early when it is stopped
    void yield(bool alertable);                   ///< in place of a sleep of 0
    void setEnded();                              ///< the last that the body does

private:
    static void run(void *self);

    Body m_body = nullptr;
    void *m_worker = nullptr;
    GateHold::Released m_hold;
    os::ThreadWatch m_creator;
    std::shared_ptr<os::ThreadEvents> m_events = std::make_shared<os::ThreadEvents>();
    std::atomic<bool> m_opened{false};
    std::atomic<bool> m_stopped{false};
    std::atomic<std::uint32_t> m_suspends{0};
    bool m_ended = false;
    std::unique_ptr<os::Thread> m_thread; // the creator's
};

/// The longest waitEnd(): without a limit.
inline constexpr std::uint32_t noLimit = 0xFFFFFFFF;

/// How long `delete` waits for the step in progress before it goes on to the destructors, one of which may be
/// what the step waits for.
inline constexpr std::uint32_t deleteWaitMs = 1000;

/// The table pointer of an object, whose constructors and destructors may be setting it on another thread. A
/// pointer is read as a whole; that nothing orders the two is known, so the sanitizer does not look.
__attribute__((no_sanitize("thread"), noinline)) inline char const *tableOf(void const *object)
{
    using Table [[gnu::may_alias]] = char const *;
    return *static_cast<Table const volatile *>(object);
}

/// A virtual operation of an object, looked up once: the thread then never reads the object's table pointer,
/// which the destructors write.
template <class Class, class Result, class... Arguments>
class FinalOverrider {
public:
    using Function = Result (*)(Class *, Arguments...);

    /// @param object  the operation is the one that it has at this moment
    template <class Member>
    void resolve(Class *object, Member member)
    {
        // A pointer to a virtual member function as the Itanium C++ ABI has it: the place in the table plus
        // one, and what to add to the object's address, which is nothing inside one class.
        struct {
            std::uintptr_t place;
            std::ptrdiff_t adjustment;
        } parts;
        static_assert(sizeof member == sizeof parts);
        std::memcpy(&parts, &member, sizeof parts);
        std::memcpy(&m_function, tableOf(object) + parts.place - 1, sizeof m_function);
    }

    bool operator==(FinalOverrider const &) const = default;

    Result operator()(Class *object, Arguments... arguments) const
    {
        return m_function(object, arguments...);
    }

private:
    Function m_function = nullptr;
};

} // namespace Qel
