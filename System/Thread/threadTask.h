#pragma once

#include "System/System/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace Qel {

class ThreadControl;

/// A polling worker: a thread that calls process(), sleeps, and does so again until it is told to stop.
///
/// The thread belongs to the object from the base class's constructor on. Nothing starts it: its first step
/// waits until the whole object has been built. Create workers as tThreaded<Class>, which makes that certain
/// and stops the thread before the first destructor, on any way of creating and destroying it:
///
/// @code
/// class Poller : public ThreadTask {
///     bool process(float) override { return poll(); }
/// };
/// tThreaded<Poller> poller;                             // or
/// auto other = std::make_unique<tThreaded<Poller>>();
/// @endcode
///
/// An object of a plain class runs too, on a weaker promise. Its first step waits for a call that nobody
/// makes before the object is complete: isThreadFinished() or resume(), which its constructors must not call.
/// If nobody asks it anything, the first step comes 100 ms after the last class to have a constructor began
/// with its own part. How many are still to come cannot be known, so the limit is for each of them: a class
/// that takes longer than 100 ms over its members and its constructor's body, after its bases are done, is
/// stepped in the middle of that. Until one of the calls has been made, each step is the process() that the
/// object has just then; while it has none, there is no step. When it goes by `delete`, its thread is stopped
/// first; as a local or a member it is not, and the destructor of each class that process() needs something
/// of begins with waitThreadFinish().
///
/// @par Threads  The operations: any thread, while the object lives. The worker's own thread must not
///               destroy it or wait for it.
class QEL_API ThreadTask {
public:
    struct ThreadTaskInfo {
        std::uint64_t handle = 0;             ///< the thread; 0 if the system gave none
        std::atomic<std::uint32_t> sleep{50}; ///< ms between two steps
        std::atomic<bool> running{true};      ///< the loop goes on while it is set
        std::atomic<bool> finished{false};    ///< set by the thread as its last act
        std::atomic<bool> alertable{false};   ///< does the sleep deliver completions?
    };

    ThreadTask();

    /// Stops the thread as waitThreadFinish() does. A step that does not return keeps it waiting.
    virtual ~ThreadTask();

    ThreadTask(ThreadTask const &) = delete;
    ThreadTask &operator=(ThreadTask const &) = delete;

    /// One step, on the object's own thread, never two at once.
    /// @param dt  seconds since the last step began; on the first one, since the thread began to run
    /// @return false to end the thread. An exception ends it as well, and is logged at level 3
    virtual bool process(float dt) = 0;

    /// @param ms         between two steps; 0 only gives the time slice away
    /// @param alertable  whether completions that are queued for the thread are delivered meanwhile; they end
    ///                   the sleep
    void setThreadSleep(unsigned int ms, bool alertable);
    unsigned int getThreadSleep() const { return m_info.sleep; } ///< ms
    bool isAlertable() { return m_info.alertable; }

    bool isThreadFinished() const; ///< has the thread left its loop?

    /// Holds the thread before its next step; a step in progress is not touched. Calls are counted, and a
    /// stop goes before them.
    /// @return how often it was suspended before; 0xFFFFFFFF without a thread or after 127 times
    std::uint32_t suspend();
    std::uint32_t resume(); ///< takes one suspend() back; the result as there

    /// Asks the thread to stop, and returns when it has left its loop: at once if it is asleep, else after
    /// the step in progress. Not from process().
    void waitThreadFinish();

    /// The global ones. They stand here, and only the one for a given place is inline, so that the compiler
    /// takes them and the ones below for pairs that belong together.
    static void *operator new(std::size_t size);
    static void *operator new(std::size_t size, std::align_val_t alignment);
    static void *operator new(std::size_t size, std::nothrow_t const &) noexcept;
    static void *operator new(std::size_t, void *place) noexcept { return place; }
    static void operator delete(void *block);                             ///< after a constructor has thrown
    static void operator delete(void *block, std::align_val_t alignment); ///< after a constructor has thrown

    /// `delete` stops the thread before the first destructor runs. It waits a second at most for the step in
    /// progress: a destructor may be what ends it.
    static void operator delete(ThreadTask *task, std::destroying_delete_t);
    static void operator delete(ThreadTask *task, std::destroying_delete_t, std::align_val_t alignment);

    void _beginSteps() const; ///< for tThreaded: the object is complete
    void _askToStop();        ///< for tThreaded: the thread makes no further step; waits for nothing
    void _endSteps();         ///< for tThreaded: the destructors are about to run

protected:
    ThreadTaskInfo m_info;

private:
    struct Control;
    static void run(ThreadControl &control, void *task);
    Control *control() const;
    void endSteps(std::uint32_t waitMs);
    bool _process(Control &control, float dt);
    void setThreadFinished() { m_info.finished = true; }
};

} // namespace Qel
