#include "System/Thread/critical.h"

namespace Qel {

cCritical::cCritical(unsigned int spinCount) : m_lock(spinCount)
{
}

cCritical::~cCritical()
{
    QEL_ASSERT(!m_lock.isHeld());
}

void cCritical::off() const
{
    QEL_ASSERT(m_lock.heldByCaller());
    m_lock.unlock();
}

cCriticalHelper::cCriticalHelper(cCritical const *critical) : m_critical(critical)
{
    if (m_critical != nullptr) {
        m_critical->on();
    }
}

cCriticalHelper::~cCriticalHelper()
{
    if (m_critical != nullptr) {
        m_critical->off();
        m_critical = nullptr;
    }
}

} // namespace Qel
