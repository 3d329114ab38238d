#include "System/Thread/threadTask.h"

#include "Support/OS/clock.h"
#include "System/Thread/threadBarrier.h"
#include "System/Thread/threadControl.h"

namespace Qel {

namespace {

constexpr std::size_t stackBytes = 0x100000;
constexpr std::uint32_t noThread = 0xFFFFFFFF;

} // namespace

struct ThreadTask::Control : ThreadControl {
    using Process = FinalOverrider<ThreadTask, bool, float>;

    // For the thread itself: that of the whole object, or, while nobody has said that it is whole, the one
    // that it has at this moment.
    Process current(ThreadTask *task) const
    {
        if (isOpen()) {
            return ofWhole;
        }
        Process ofNow;
        ofNow.resolve(task, &ThreadTask::process);
        return ofNow;
    }

    Process none;    // what a class without one has in its place
    Process ofWhole; // found when the gate opens
};

ThreadTask::ThreadTask()
{
    auto control = std::make_unique<Control>();
    control->none.resolve(this, &ThreadTask::process);
    if (control->start(&ThreadTask::run, this, stackBytes)) {
        m_info.handle = reinterpret_cast<std::uintptr_t>(control.release());
    }
}

ThreadTask::~ThreadTask()
{
    _endSteps();
    std::unique_ptr<Control> const last(control());
    if (last != nullptr) {
        last->join();
    }
    m_info.handle = 0;
}

ThreadTask::Control *ThreadTask::control() const
{
    return reinterpret_cast<Control *>(static_cast<std::uintptr_t>(m_info.handle));
}

void ThreadTask::_beginSteps() const
{
    if (Control *const thread = control()) {
        thread->open([&] { thread->ofWhole.resolve(const_cast<ThreadTask *>(this), &ThreadTask::process); });
    }
}

void ThreadTask::_askToStop()
{
    m_info.running = false;
    if (Control *const thread = control()) {
        thread->stop();
    }
}

void ThreadTask::_endSteps()
{
    endSteps(noLimit);
}

void ThreadTask::endSteps(std::uint32_t waitMs)
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

void ThreadTask::waitThreadFinish()
{
    _endSteps();
}

bool ThreadTask::isThreadFinished() const
{
    _beginSteps();
    return m_info.finished;
}

void ThreadTask::setThreadSleep(unsigned int ms, bool alertable)
{
    m_info.sleep = ms;
    m_info.alertable = alertable;
}

std::uint32_t ThreadTask::suspend()
{
    Control *const thread = control();
    return thread == nullptr ? noThread : thread->suspend();
}

std::uint32_t ThreadTask::resume()
{
    _beginSteps();
    Control *const thread = control();
    return thread == nullptr ? noThread : thread->resume();
}

bool ThreadTask::_process(Control &control, float dt)
{
    Control::Process const process = control.current(this);
    // Only a false is kept: a stop that came during the step must not be undone by its result. The class that
    // had a process() may be gone already, if nobody has stopped the thread before its destructor.
    if (m_info.running && process != control.none && !process(this, dt)) {
        m_info.running = false;
    }
    return m_info.running;
}

void ThreadTask::run(ThreadControl &shared, void *worker)
{
    auto &control = static_cast<Control &>(shared);
    auto *const task = static_cast<ThreadTask *>(worker);
    ThreadEnd const end(control, [task] { task->setThreadFinished(); });
    if (!control.waitAtGate([&] { return control.current(task) != control.none; })) {
        // Whoever set the sleep after the construction has told this thread by that of all that was built.
        static_cast<void>(task->m_info.sleep.load());
    }

    threadBarrier([&] {
        std::uint32_t last = os::milliseconds();
        while (control.mayStep()) {
            std::uint32_t const now = os::milliseconds();
            // In 32 bits, so that the wrap of the clock is a short step like any other.
            float const dt = static_cast<float>(static_cast<double>(now - last) * 0.001);
            if (!task->_process(control, dt)) {
                break;
            }
            if (std::uint32_t const ms = task->m_info.sleep; ms != 0) {
                control.sleep(ms, task->m_info.alertable);
            } else {
                control.yield(task->m_info.alertable);
            }
            last = now;
        }
    });
}

void *ThreadTask::operator new(std::size_t size)
{
    return ::operator new(size);
}

void ThreadTask::operator delete(void *block)
{
    ::operator delete(block);
}

void *ThreadTask::operator new(std::size_t size, std::nothrow_t const &) noexcept
{
    return ::operator new(size, std::nothrow);
}

void *ThreadTask::operator new(std::size_t size, std::align_val_t alignment)
{
    return ::operator new(size, alignment);
}

void ThreadTask::operator delete(void *block, std::align_val_t alignment)
{
    ::operator delete(block, alignment);
}

void ThreadTask::operator delete(ThreadTask *task, std::destroying_delete_t)
{
    task->endSteps(deleteWaitMs);
    void *const block = dynamic_cast<void *>(task);
    task->~ThreadTask();
    ::operator delete(block);
}

void ThreadTask::operator delete(ThreadTask *task, std::destroying_delete_t, std::align_val_t alignment)
{
    task->endSteps(deleteWaitMs);
    void *const block = dynamic_cast<void *>(task);
    task->~ThreadTask();
    ::operator delete(block, alignment);
}

} // namespace Qel
