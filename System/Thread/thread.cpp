#include "System/Thread/thread.h"

#include "Support/OS/clock.h"
#include "System/Thread/threadBarrier.h"
#include "System/Thread/threadControl.h"
#include "System/Time/osInfo.h"

namespace Qel {

namespace {

constexpr std::uint64_t unitsPerLoadStep = 100; // 10 us in units of 100 ns

os::ThreadPriority const priorities[] = {
    os::ThreadPriority::Normal,
    os::ThreadPriority::AboveNormal,
    os::ThreadPriority::BelowNormal,
};

float secondsNow()
{
    return static_cast<float>(os::milliseconds() * 0.001);
}

} // namespace

struct iThread::Control : ThreadControl {
    struct Operations {
        FinalOverrider<iThread, eThreadStatus, float> runThread;
        FinalOverrider<iThread const, unsigned int> getThreadSleep;
        FinalOverrider<iThread, void> setThreadFinished;

        void resolve(iThread *thread)
        {
            runThread.resolve(thread, &iThread::runThread);
            getThreadSleep.resolve(thread, &iThread::getThreadSleep);
            setThreadFinished.resolve(thread, &iThread::_setThreadFinished);
        }
    };

    // For the thread itself: those of the whole object, or, while nobody has said that it is whole, those
    // that it has at this moment.
    Operations current(iThread *thread) const
    {
        if (isOpen()) {
            return ofWhole;
        }
        Operations ofNow;
        ofNow.resolve(thread);
        return ofNow;
    }

    Operations ofWhole; // found when the gate opens
};

iThread::iThread(unsigned int stackSize)
{
    auto control = std::make_unique<Control>();
    if (control->start(&iThread::run, this, stackSize)) {
        m_handle = reinterpret_cast<std::uintptr_t>(control.release());
        m_timingHandle = m_handle;
    }
}

iThread::~iThread()
{
    _endSteps();
    std::unique_ptr<Control> const last(control());
    if (last != nullptr) {
        last->join();
    }
    m_handle = 0;
    m_timingHandle = 0;
}

iThread::Control *iThread::control() const
{
    return reinterpret_cast<Control *>(static_cast<std::uintptr_t>(m_handle));
}

void iThread::_beginSteps()
{
    if (Control *const thread = control()) {
        thread->open([&] { thread->ofWhole.resolve(this); });
    }
}

void iThread::_askToStop()
{
    m_status = THREAD_DONE;
    if (Control *const thread = control()) {
        thread->stop();
    }
}

void iThread::_endSteps()
{
    endSteps(noLimit);
}

void iThread::endSteps(std::uint32_t waitMs)
{
    _askToStop();
    if (Control *const thread = control()) {
        bool const waitsForItself = thread->thread().isCurrent();
        QEL_ASSERT(!waitsForItself);
        if (!waitsForItself) {
            thread->waitEnd(waitMs);
        }
    }
}

eThreadStatus iThread::runThread(float)
{
    return m_status;
}

void iThread::setThreadSleep(unsigned int ms)
{
    m_sleep = ms;
}

unsigned int iThread::getThreadSleep() const
{
    return m_sleep;
}

void iThread::setThreadPriority(eThreadPriority priority)
{
    Control *const thread = control();
    if (thread != nullptr && priority < std::size(priorities)) {
        thread->thread().setPriority(priorities[priority]);
    }
}

void iThread::setProcessorAffinity(unsigned int mask)
{
    if (Control *const thread = control()) {
        thread->thread().setAffinity(mask);
    }
}

void iThread::_setThreadFinished()
{
    m_finished = true;
}

float iThread::getThreadLoad(float period)
{
    _beginSteps();
    auto *const timed = reinterpret_cast<Control *>(static_cast<std::uintptr_t>(m_timingHandle));
    std::uint64_t used = 0;
    if (timed == nullptr || !timed->thread().cpuTime(used)) {
        return 0.0f;
    }
    auto const cpu = static_cast<std::uint32_t>(used / unitsPerLoadStep);
    std::uint32_t const tick = os::milliseconds();
    std::uint32_t const lastTick = m_lastTick;
    if (lastTick == 0) {
        m_lastTick = tick;
        m_lastCpuTime = cpu;
        return m_load;
    }
    std::uint32_t const elapsed = tick - lastTick;
    // A negative period lets an elapsed time of 0 through, which can not be divided by.
    if (elapsed != 0 && static_cast<float>(elapsed) > period * 1000.0f) {
        m_load = static_cast<float>(cpu - m_lastCpuTime) / static_cast<float>(elapsed);
        m_lastCpuTime = cpu;
        m_lastTick = tick;
    }
    return m_load;
}

void iThread::run(ThreadControl &shared, void *worker)
{
    auto &control = static_cast<Control &>(shared);
    auto *const thread = static_cast<iThread *>(worker);
    bool stepped = false;
    ThreadEnd const end(control, [&] {
        // Before the first step the object may not be whole; only the base class's own version is then safe.
        if (stepped) {
            control.current(thread).setThreadFinished(thread);
        } else {
            thread->m_finished = true;
        }
    });
    float last = secondsNow();
    OsInfo::setThreadName(os::currentThreadId(), "task-thread");
    if (!control.waitAtGate([] { return true; })) {
        // Whoever set the sleep after the construction has told this thread by that of all that was built.
        static_cast<void>(thread->m_sleep.load());
    }

    threadBarrier([&] {
        while (control.mayStep()) {
            stepped = true;
            float const now = secondsNow();
            if (control.current(thread).runThread(thread, now - last) != THREAD_CONTINUE) {
                break;
            }
            if (unsigned int const ms = control.current(thread).getThreadSleep(thread); ms != 0) {
                control.sleep(ms, false);
            }
            last = now;
        }
    });
}

void *iThread::operator new(std::size_t size)
{
    return ::operator new(size);
}

void iThread::operator delete(void *block)
{
    ::operator delete(block);
}

void *iThread::operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    return ::operator new(size, std::nothrow);
}

void *iThread::operator new(std::size_t size, std::align_val_t alignment)
{
    return ::operator new(size, alignment);
}

void iThread::operator delete(void *block, std::align_val_t alignment)
{
    ::operator delete(block, alignment);
}

void iThread::operator delete(iThread *thread, std::destroying_delete_t)
{
    thread->endSteps(deleteWaitMs);
    void *const block = dynamic_cast<void *>(thread);
    thread->~iThread();
    ::operator delete(block);
}

void iThread::operator delete(iThread *thread, std::destroying_delete_t, std::align_val_t alignment)
{
    thread->endSteps(deleteWaitMs);
    void *const block = dynamic_cast<void *>(thread);
    thread->~iThread();
    ::operator delete(block, alignment);
}

} // namespace Qel
