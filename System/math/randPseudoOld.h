#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// A linear congruence over 32 bits, seed = 1859 seed + 3719. Kept for data that depends on its sequence.
class QEL_API RandPseudoOld {
public:
    RandPseudoOld() = default; ///< seed 0
    explicit RandPseudoOld(std::int32_t value) { seed(value); }

    void seed(std::int32_t value)
    {
        m_seed = value;
        m_multiplier = 1859;
        m_increment = 3719;
    }
    std::int32_t getSeed() const { return m_seed; }

    /// The absolute value of the next value modulo @p n.
    /// @param n  not 0, which gives 0
    std::int32_t rand(std::int32_t n)
    {
        QEL_ASSERT(n != 0);
        std::int64_t const value = step();
        return n == 0 ? 0 : static_cast<std::int32_t>(magnitude(value % n));
    }

    /// a + (b - a) r, with r = random01().
    float random(float a, float b) { return a + (b - a) * random01(); }

    /// The next value in 32767 steps: at least 0 and below 1.
    float random01() { return static_cast<float>(magnitude(step() % 32767)) * 3.051851e-5F; }

private:
    static std::int64_t magnitude(std::int64_t value) { return value < 0 ? -value : value; }

    std::int32_t step()
    {
        auto const now = static_cast<std::uint32_t>(m_seed);
        m_seed = static_cast<std::int32_t>(static_cast<std::uint32_t>(m_multiplier) * now +
                                           static_cast<std::uint32_t>(m_increment));
        return m_seed;
    }

    std::int32_t m_seed = 0;
    std::int32_t m_multiplier = 1859;
    std::int32_t m_increment = 3719;
};

} // namespace Qel
