#pragma once

#include <array>
#include <cstdint>

namespace Qel {

/// The reflected CRC-32 polynomial of ISO 3309 and ITU-T V.42.
inline constexpr std::uint32_t crc32Polynomial = 0xEDB88320;

/// The table of one step of eight bits: crc = (crc >> 8) ^ table[(crc & 255) ^ byte].
inline constexpr std::array<std::uint32_t, 256> crc32Table = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? value >> 1 ^ crc32Polynomial : value >> 1;
        }
        table[i] = value;
    }
    return table;
}();

} // namespace Qel
