#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// Small generator of 15-bit values, a linear congruence that keeps only the upper half of its product.
class QEL_API cRandMsvc {
public:
    explicit cRandMsvc(unsigned int value) : m_state(value) {}

    void seed(unsigned int value) { m_state = value; }

    /// The next value, 0 to 32767.
    int rand()
    {
        m_state = (m_state * 214013U + 2531011U) >> 16U;
        return static_cast<int>(m_state & 0x7FFFU);
    }

private:
    std::uint32_t m_state;
};

} // namespace Qel
