#pragma once

#include "System/math/kernels/crc32Constants.h"
#include "System/math/kernels/crc32PlainKernel.h"

#include <immintrin.h>

namespace Qel {
namespace {

inline __m128i crc32Load(unsigned char const *data)
{
    return _mm_loadu_si128(reinterpret_cast<__m128i const *>(data));
}

inline __m128i crc32Pair(std::uint64_t first, std::uint64_t second)
{
    return _mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first));
}

inline __m128i crc32Fold(__m128i value, __m128i constants)
{
    return _mm_xor_si128(_mm_clmulepi64_si128(value, constants, 0x00),
                         _mm_clmulepi64_si128(value, constants, 0x11));
}

// From 96 bits, the last of them the highest, to the checksum: what the quotient of the first 64 makes of
// the last 32.
inline std::uint32_t crc32Reduce(__m128i value)
{
    __m128i const barrett = crc32Pair(crc32Quotient, crc32Divisor);
    __m128i const quotient = _mm_clmulepi64_si128(value, barrett, 0x00);
    __m128i const product = _mm_clmulepi64_si128(quotient, barrett, 0x10);
    return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(value, product), 2));
}

inline std::uint32_t crc32Finish(__m128i value)
{
    __m128i const last = crc32Pair(crc32Power(96), 0);
    return crc32Reduce(_mm_xor_si128(_mm_srli_si128(value, 8), _mm_clmulepi64_si128(value, last, 0x00)));
}

// 4 to 15 bytes as the last ones of sixteen: zeros before them change nothing once the checksum so far is in.
inline std::uint32_t crc32Short(std::uint32_t crc, unsigned char const *data, std::size_t size)
{
    unsigned const bits = 8U * static_cast<unsigned>(size);
    if (size < 8) {
        std::uint32_t first = 0;
        std::uint32_t second = 0;
        __builtin_memcpy(&first, data, 4);
        __builtin_memcpy(&second, data + size - 4, 4);
        second ^= crc >> (bits - 32);
        std::uint64_t const word = std::uint64_t{second} << 32U | std::uint64_t{first ^ crc} << (64 - bits);
        return crc32Finish(crc32Pair(0, word));
    }
    std::uint64_t first = 0;
    std::uint64_t second = 0;
    __builtin_memcpy(&first, data, 8);
    __builtin_memcpy(&second, data + size - 8, 8);
    second ^= std::uint64_t{crc} >> (bits - 64);
    first = bits == 64 ? 0 : (first ^ crc) << (128 - bits);
    return crc32Finish(crc32Pair(first, second));
}

[[maybe_unused]] std::uint32_t crc32Clmul(std::uint32_t crc, unsigned char const *data, std::size_t size)
{
    // Whole blocks must remain, and the checksum so far must fall into the first of them.
    std::size_t const head = size < 16 ? size : size & 15U;
    if (head != 0) {
        crc = head < 4 ? crc32Bytes(crc, data, head) : crc32Short(crc, data, head);
    }
    data += head;
    size -= head;
    if (size == 0) {
        return crc;
    }
    __m128i const by128 = crc32Pair(crc32FoldFirst(128), crc32FoldSecond(128));
    __m128i value = _mm_xor_si128(crc32Load(data), _mm_cvtsi32_si128(static_cast<int>(crc)));
    if (size >= 128) {
        __m128i const by512 = crc32Pair(crc32FoldFirst(512), crc32FoldSecond(512));
        __m128i b = crc32Load(data + 16);
        __m128i c = crc32Load(data + 32);
        __m128i d = crc32Load(data + 48);
        for (data += 64, size -= 64; size >= 64; data += 64, size -= 64) {
            value = _mm_xor_si128(crc32Fold(value, by512), crc32Load(data));
            b = _mm_xor_si128(crc32Fold(b, by512), crc32Load(data + 16));
            c = _mm_xor_si128(crc32Fold(c, by512), crc32Load(data + 32));
            d = _mm_xor_si128(crc32Fold(d, by512), crc32Load(data + 48));
        }
        value = _mm_xor_si128(crc32Fold(value, by128), b);
        value = _mm_xor_si128(crc32Fold(value, by128), c);
        value = _mm_xor_si128(crc32Fold(value, by128), d);
    } else {
        data += 16;
        size -= 16;
    }
    for (; size != 0; data += 16, size -= 16) {
        value = _mm_xor_si128(crc32Fold(value, by128), crc32Load(data));
    }
    return crc32Finish(value);
}

} // namespace
} // namespace Qel
