#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Qel {

/// The reflected CRC-32 polynomial of ISO 3309 and ITU-T V.42.
inline constexpr std::uint32_t crc32Polynomial = 0xEDB88320;

/// Table 0 takes one byte: crc = (crc >> 8) ^ table[0][(crc & 255) ^ byte]. Table n is the effect of a byte
/// with n more after it, so that eight bytes are taken by eight independent look-ups ("slicing by 8",
/// Kounavis and Berry 2005).
inline constexpr std::array<std::array<std::uint32_t, 256>, 8> crc32Tables = [] {
    std::array<std::array<std::uint32_t, 256>, 8> tables{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        std::uint32_t value = i;
        for (int bit = 0; bit < 8; ++bit) {
            value = (value & 1) != 0 ? value >> 1 ^ crc32Polynomial : value >> 1;
        }
        tables[0][i] = value;
    }
    for (std::size_t n = 1; n < tables.size(); ++n) {
        for (std::size_t i = 0; i < 256; ++i) {
            std::uint32_t const before = tables[n - 1][i];
            tables[n][i] = before >> 8 ^ tables[0][before & 255];
        }
    }
    return tables;
}();

/// The table of one byte alone.
inline constexpr std::array<std::uint32_t, 256> const &crc32Table = crc32Tables[0];

} // namespace Qel
