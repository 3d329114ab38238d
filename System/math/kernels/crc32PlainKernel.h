#pragma once

#include "System/math/kernels/kernels.h"

namespace Qel {
namespace {

inline std::uint32_t crc32Bytes(std::uint32_t crc, unsigned char const *data, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        crc = (crc >> 8U) ^ crc32Steps.after[0][(crc ^ data[i]) & 0xFFU];
    }
    return crc;
}

// Eight bytes a step, each through the table of its distance from the step's end.
[[maybe_unused]] std::uint32_t crc32Plain(std::uint32_t crc, unsigned char const *data, std::size_t size)
{
    auto const &after = crc32Steps.after;
    for (; size >= 8; data += 8, size -= 8) {
        std::uint64_t word = 0;
        __builtin_memcpy(&word, data, sizeof word);
        word ^= crc;
        crc = after[7][word & 0xFFU] ^ after[6][word >> 8U & 0xFFU] ^ after[5][word >> 16U & 0xFFU] ^
              after[4][word >> 24U & 0xFFU] ^ after[3][word >> 32U & 0xFFU] ^ after[2][word >> 40U & 0xFFU] ^
              after[1][word >> 48U & 0xFFU] ^ after[0][word >> 56U];
    }
    return crc32Bytes(crc, data, size);
}

constexpr std::uint32_t nameHashStart = 0xFFFFFFFF;

inline NameHash nameHashOf(std::uint32_t hash, std::size_t length)
{
    return {hash, length > 0xFFFFFFFFU ? 0xFFFFFFFFU : static_cast<std::uint32_t>(length)};
}

template <std::uint32_t (*Crc)(std::uint32_t, unsigned char const *, std::size_t)>
NameHash hashNameBy(char const *text)
{
    std::size_t const length = __builtin_strlen(text);
    return nameHashOf(Crc(nameHashStart, reinterpret_cast<unsigned char const *>(text), length), length);
}

// Mapped into a buffer first, a piece at a time.
template <std::uint32_t (*Crc)(std::uint32_t, unsigned char const *, std::size_t)>
NameHash hashMappedNameBy(char const *text, unsigned char const *map)
{
    std::uint32_t crc = nameHashStart;
    std::size_t length = 0;
    unsigned char piece[256];
    for (;;) {
        std::size_t count = 0;
        while (count < sizeof piece && text[length + count] != 0) {
            piece[count] = map[static_cast<unsigned char>(text[length + count])];
            ++count;
        }
        crc = Crc(crc, piece, count);
        length += count;
        if (count < sizeof piece) {
            return nameHashOf(crc, length);
        }
    }
}

template <std::uint32_t (*Crc)(std::uint32_t, unsigned char const *, std::size_t)>
NameHash mapShortNameBy(char const *text, unsigned char const *map, char *out)
{
    __builtin_memset(out, 0, shortNameRoom);
    std::size_t length = 0;
    while (length < shortNameRoom && text[length] != 0) {
        out[length] = static_cast<char>(map[static_cast<unsigned char>(text[length])]);
        ++length;
    }
    return nameHashOf(Crc(nameHashStart, reinterpret_cast<unsigned char const *>(out), length), length);
}

} // namespace
} // namespace Qel
