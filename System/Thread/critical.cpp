#include "System/Thread/critical.h"

namespace Qel {

cCritical::cCritical(unsigned int spinCount) : m_lock(spinCount)
{
}

cCritical::~cCritical()
{
    QEL_ASSERT(!m_lock.isHeld());
}

} // namespace Qel
