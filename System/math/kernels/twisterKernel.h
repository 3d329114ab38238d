#pragma once

#include <cstddef>
#include <cstdint>

namespace Qel {
namespace {

inline std::uint32_t mixedTwister(std::uint32_t top, std::uint32_t rest)
{
    std::uint32_t const joined = (top & 0x80000000U) | (rest & 0x7FFFFFFFU);
    return (joined >> 1U) ^ ((0U - (rest & 1U)) & 0x9908B0DFU);
}

// The order of the words is the serial one; written as two runs in which no word is read within a vector of
// where it is written, the compiler steps as many at a time as the level allows.
void stepTwister(std::uint32_t *state)
{
    constexpr int count = 624;
    constexpr int middle = 397;
    for (int i = 0; i < count - middle; ++i) {
        state[i] = state[i + middle] ^ mixedTwister(state[i], state[i + 1]);
    }
    for (int i = count - middle; i < count - 1; ++i) {
        state[i] = state[i - (count - middle)] ^ mixedTwister(state[i], state[i + 1]);
    }
    state[count - 1] = state[middle - 1] ^ mixedTwister(state[count - 1], state[0]);
}

inline std::uint32_t temperedTwister(std::uint32_t y)
{
    y ^= y >> 11U;
    y ^= (y << 7U) & 0x9D2C5680U;
    y ^= (y << 15U) & 0xEFC60000U;
    return y ^ (y >> 18U);
}

void temperTwister(std::uint32_t const *words, std::size_t count, std::uint32_t *values)
{
    for (std::size_t i = 0; i < count; ++i) {
        values[i] = temperedTwister(words[i]);
    }
}

void temperTwister01(std::uint32_t const *words, std::size_t count, float *values)
{
    for (std::size_t i = 0; i < count; ++i) {
        float const value =
            static_cast<float>(static_cast<std::int32_t>(temperedTwister(words[i]) & 0x7FFFFFU)) *
            __builtin_bit_cast(float, 0x34000001U);
        constexpr float belowOne = __builtin_bit_cast(float, 0x3F7FFFFFU);
        values[i] = value < belowOne ? value : belowOne;
    }
}

} // namespace
} // namespace Qel
