#include "System/System/logIndent.h"

#include "System/System/logManager.h"

namespace Qel {

LogIndent::LogIndent(unsigned short width) : m_width(width)
{
    if (LogManager *const manager = LogManager::InstancePtr()) {
        manager->changeIndent(m_width);
    }
}

LogIndent::~LogIndent()
{
    if (LogManager *const manager = LogManager::InstancePtr()) {
        manager->changeIndent(-int{m_width});
    }
}

} // namespace Qel
