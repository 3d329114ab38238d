#include "System/Thread/signal.h"

namespace Qel {

cSignal::cSignal(char *name) : m_handle(os::SharedSignal::open(name))
{
}

cSignal::~cSignal() = default;

void cSignal::signal()
{
    if (m_handle != nullptr) {
        m_handle->give();
    }
}

void cSignal::wait_signal()
{
    if (m_handle != nullptr) {
        m_handle->wait();
    }
}

} // namespace Qel
