#pragma once

#include "System/System/export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

namespace Qel {

class ThreadControl;

/// What a step of a thread answers. Any other value but these stops the thread too; to a task it means that
/// it ended badly.
enum eThreadStatus : std::uint32_t {
    THREAD_CONTINUE = 0, ///< call again
    THREAD_DONE = 1,     ///< stop; a task ended well
};

/// Share of the processor. What the process may not have is given as far as it goes: an ordinary user's
/// process can lower a thread, but not bring it back, so that THREAD_PRIO_LOW is there for good.
enum eThreadPriority : std::uint32_t {
    THREAD_PRIO_NORMAL = 0,
    THREAD_PRIO_HIGH = 1, ///< one level above normal
    THREAD_PRIO_LOW = 2,  ///< one level below normal
};

/// Base of the workers of the task pool: a thread that calls runThread() until that answers anything but
/// THREAD_CONTINUE. It has a priority and an affinity, and tells how much of a processor it uses.
///
/// The rules of ThreadTask hold for the beginning and the end of its life: create it as tThreaded<Class>, or
/// begin the destructors of a plain class with _endSteps(). For a plain object, getThreadLoad() is the call
/// that lets the first step begin; if it comes by time, and the object's last class is still to be built, it
/// is the runThread() of the class before, or the base version, which does nothing.
///
/// @par Threads  The operations: any thread, while the object lives. The worker's own thread must not
///               destroy it.
class QEL_API iThread {
public:
    /// @param stackSize  bytes that the thread's stack needs; 1 MiB is there in any case
    explicit iThread(unsigned int stackSize = 32768);

    /// Stops the thread and waits for its end: at once if it is asleep, else after the step in progress.
    virtual ~iThread();

    iThread(iThread const &) = delete;
    iThread &operator=(iThread const &) = delete;

    /// One step, on the object's own thread. An exception ends the thread, and is logged at level 3.
    /// @param dt  seconds since the last step began; on the first one, since the thread began to run
    /// @return THREAD_CONTINUE to be called again. The base version gives the status: THREAD_CONTINUE until
    ///         the object is being destroyed
    virtual eThreadStatus runThread(float dt);

    /// @param ms  between two steps; with 0 they follow each other without a system call
    virtual void setThreadSleep(unsigned int ms);
    virtual unsigned int getThreadSleep() const; ///< ms; asked by the thread after each step
    virtual void setThreadPriority(eThreadPriority priority);
    virtual void setProcessorAffinity(unsigned int mask); ///< bit n for processor n
    virtual void _setThreadFinished();                    ///< called by the thread after its last step

    /// The processor time that the thread uses, measured anew when more than @p period has gone by since the
    /// last time, however often it is asked for.
    /// @param period  seconds
    /// @return percent of one processor; 0 on the first call and without a thread
    virtual float getThreadLoad(float period);

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
    static void operator delete(iThread *thread, std::destroying_delete_t);
    static void operator delete(iThread *thread, std::destroying_delete_t, std::align_val_t alignment);

    void _beginSteps(); ///< for tThreaded: the object is complete
    void _askToStop();  ///< for tThreaded: the thread makes no further step; waits for nothing
    void _endSteps();   ///< for tThreaded: the destructors are about to run

protected:
    std::uint64_t m_handle = 0;                           ///< the thread; 0 if the system gave none
    std::atomic<std::uint32_t> m_sleep{0};                ///< ms
    std::atomic<eThreadStatus> m_status{THREAD_CONTINUE}; ///< THREAD_DONE once the thread is to stop
    std::atomic<bool> m_finished{false};                  ///< the thread has made its last step
    std::atomic<std::uint32_t> m_lastCpuTime{0};          ///< at the last load sample, in 10 us
    std::atomic<std::uint32_t> m_lastTick{0};             ///< ms at the last load sample; 0 before the first
    std::atomic<float> m_load{0.0f};                      ///< percent of one processor
    std::uint64_t m_timingHandle = 0;                     ///< the thread that load sampling asks about

private:
    struct Control;
    static void run(ThreadControl &control, void *thread);
    Control *control() const;
    void endSteps(std::uint32_t waitMs);
};

} // namespace Qel
