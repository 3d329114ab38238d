#include "System/Thread/gateHold.h"

#include <functional>

namespace Qel {

namespace {

constinit thread_local GateHold *innermost = nullptr;

} // namespace

GateHold::GateHold(void *object, std::size_t bytes)
    : m_begin(static_cast<char *>(object)), m_end(m_begin + bytes), m_outer(innermost)
{
    innermost = this;
}

GateHold::~GateHold()
{
    innermost = m_outer;
    m_released->store(true, std::memory_order_release);
}

GateHold::Released GateHold::around(void const *worker)
{
    auto const *const place = static_cast<char const *>(worker);
    for (GateHold const *hold = innermost; hold != nullptr; hold = hold->m_outer) {
        if (!std::less<>()(place, hold->m_begin) && std::less<>()(place, hold->m_end)) {
            return hold->m_released;
        }
    }
    return nullptr;
}

} // namespace Qel
