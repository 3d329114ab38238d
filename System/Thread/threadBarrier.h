#pragma once

#include "System/Thread/threadControl.h"

#include <cxxabi.h>

#include <exception>

namespace Qel {

/// Logs an exception that reached the end of a thread, at level 3.
void reportThreadException(char const *what);

/// Runs a thread's loop, and keeps what it throws from ending the process.
template <class Loop>
void threadBarrier(Loop loop)
{
    try {
        loop();
    } catch (abi::__forced_unwind &) {
        throw; // the system takes the thread down, and insists on passing
    } catch (std::exception const &failure) {
        reportThreadException(failure.what());
    } catch (...) {
        reportThreadException("unknown");
    }
}

/// Tells a worker and its owner at the end of a thread's body, however it ends.
template <class Tell>
class ThreadEnd {
public:
    ThreadEnd(ThreadControl &control, Tell tell) : m_control(control), m_tell(tell) {}
    ~ThreadEnd()
    {
        m_tell();
        m_control.setEnded();
    }

    ThreadEnd(ThreadEnd const &) = delete;
    ThreadEnd &operator=(ThreadEnd const &) = delete;

private:
    ThreadControl &m_control;
    Tell m_tell;
};

} // namespace Qel
