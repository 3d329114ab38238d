#include "System/Thread/mutex.h"

namespace Qel {

cMutex::cMutex(char const *name) : m_handle(os::SharedMutex::open(name))
{
}

cMutex::~cMutex() = default;

void cMutex::on() const
{
    if (m_handle != nullptr) {
        m_handle->lock();
    }
}

void cMutex::off() const
{
    if (m_handle != nullptr) {
        [[maybe_unused]] bool const owned = m_handle->unlock();
        QEL_ASSERT(owned);
    }
}

cMutexHelper::cMutexHelper(cMutex *mutex) : m_mutex(mutex)
{
    if (m_mutex != nullptr) {
        m_mutex->on();
    }
}

cMutexHelper::~cMutexHelper()
{
    if (m_mutex != nullptr) {
        m_mutex->off();
        m_mutex = nullptr;
    }
}

} // namespace Qel
