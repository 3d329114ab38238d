#pragma once

#include "System/System/export.h"

#include <cstdint>

namespace Qel {

/// The "minimal standard" generator of S. Park and K. Miller (1988): 16807 times the seed modulo 2^31 - 1.
///
/// Small enough to hold one per object. A seed of 0 stays 0 and gives 0 for ever.
class QEL_API RandPseudo {
public:
    RandPseudo() = default; ///< seed 0
    explicit RandPseudo(std::int32_t value) : m_seed(value) {}

    void seed(unsigned int value) { m_seed = static_cast<std::int32_t>(value); }
    std::int32_t getSeed() const { return m_seed; }

    /// The next value modulo n + 1.
    /// @param n  0 or more; -1 gives 0
    /// @return 0 to @p n
    std::int32_t rand(std::int32_t n)
    {
        QEL_ASSERT(n != -1);
        std::int64_t const value = step();
        return n == -1 ? 0 : static_cast<std::int32_t>(value % (std::int64_t{n} + 1));
    }

    /// a + (b - a) r, with r = random01().
    float random(float a, float b) { return a + (b - a) * random01(); }

    /// The next value in 32768 steps, 0 and 1 included.
    float random01() { return static_cast<float>(step() & 0x7FFF) * 3.051851e-5F; }

private:
    // The product modulo 2^31 - 1 from two halves: no division, nothing above 32 bits.
    std::int32_t step()
    {
        auto const now = static_cast<std::uint32_t>(m_seed);
        std::uint32_t const hi = 16807U * (now >> 16U);
        std::uint32_t lo = 16807U * (now & 0xFFFFU);
        lo = folded(lo + ((hi & 0x7FFFU) << 16U));
        lo = folded(lo + (hi >> 15U));
        m_seed = static_cast<std::int32_t>(lo);
        return m_seed;
    }

    static std::uint32_t folded(std::uint32_t sum)
    {
        return sum > 0x7FFFFFFFU ? (sum & 0x7FFFFFFFU) + 1U : sum;
    }

    std::int32_t m_seed = 0;
};

} // namespace Qel
