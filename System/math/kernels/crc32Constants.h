#pragma once

#include <cstdint>

namespace Qel {
namespace {

// What folding by carry-less multiplication needs, for a polynomial whose bits run the other way round: see
// V. Gopal and others, "Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction", 2009.

constexpr std::uint64_t crc32Divisor = 0x1DB710640; // the polynomial, reflected, without its leading term

// x^95 divided by the polynomial, reflected into 64 bits.
constexpr std::uint64_t crc32Quotient = [] {
    std::uint32_t rest = 0x80000000; // x^31
    std::uint64_t quotient = 0;
    for (unsigned bit = 0; bit < 64; ++bit) {
        std::uint32_t const carried = rest >> 31U;
        quotient |= std::uint64_t{carried} << bit;
        rest = (rest << 1U) ^ ((0U - carried) & 0x04C11DB7U);
    }
    return quotient;
}();

// x to this power modulo the polynomial, reflected into 33 bits.
constexpr std::uint64_t crc32Power(unsigned exponent)
{
    std::uint32_t forward = 1;
    for (unsigned i = 0; i < exponent; ++i) {
        forward = (forward << 1U) ^ ((0U - (forward >> 31U)) & 0x04C11DB7U);
    }
    std::uint64_t reflected = 0;
    for (unsigned bit = 0; bit < 32; ++bit) {
        reflected |= std::uint64_t{forward >> bit & 1U} << (32U - bit);
    }
    return reflected;
}

// Carries 128 bits over this many bits: the first half by the one power, the second by the other.
constexpr std::uint64_t crc32FoldFirst(unsigned bits)
{
    return crc32Power(bits + 32);
}
constexpr std::uint64_t crc32FoldSecond(unsigned bits)
{
    return crc32Power(bits - 32);
}

} // namespace
} // namespace Qel
