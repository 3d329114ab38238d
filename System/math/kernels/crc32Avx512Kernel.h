#pragma once

#include "System/math/kernels/crc32ClmulKernel.h"

namespace Qel {
namespace {

inline __m512i crc32Wide(std::uint64_t first, std::uint64_t second)
{
    return _mm512_broadcast_i32x4(crc32Pair(first, second));
}

inline __m512i crc32FoldWide(__m512i value, __m512i constants, __m512i next)
{
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(value, constants, 0x00),
                                     _mm512_clmulepi64_epi128(value, constants, 0x11), next, 0x96);
}

inline __m512i crc32LoadWide(unsigned char const *data)
{
    return _mm512_loadu_si512(data);
}

// The bytes that the mask names. Bytes outside it are not touched, in whatever page they lie; an address and
// not a pointer, since it may lie before the data.
inline __m512i crc32LoadMasked(std::uint64_t mask, std::uintptr_t address)
{
    void const *const from = reinterpret_cast<void const *>(address); // NOLINT(performance-no-int-to-ptr)
    return _mm512_maskz_loadu_epi8(mask, from);
}

// Every eight bytes are carried to the end by a power of their own, all at once.
inline std::uint32_t crc32FinishWide(__m512i value)
{
    __m512i const powers =
        _mm512_set_epi64(crc32Power(32), crc32Power(96), crc32Power(160), crc32Power(224), crc32Power(288),
                         crc32Power(352), crc32Power(416), crc32Power(480));
    __m512i const products = _mm512_xor_si512(_mm512_clmulepi64_epi128(value, powers, 0x00),
                                              _mm512_clmulepi64_epi128(value, powers, 0x11));
    __m256i const half =
        _mm256_xor_si256(_mm512_castsi512_si256(products), _mm512_extracti64x4_epi64(products, 1));
    return crc32Reduce(_mm_xor_si128(_mm256_castsi256_si128(half), _mm256_extracti128_si256(half, 1)));
}

// The last `size` bytes of a vector, 1 to 64 of them.
inline std::uint64_t crc32LastBytes(std::size_t size)
{
    return ~std::uint64_t{0} << (64U - size);
}

// The checksum so far, where the first of the last `size` bytes stand; cut at the vector's end.
inline __m512i crc32At(std::uint32_t crc, std::size_t size)
{
    unsigned const turn = 8U * (0U - static_cast<unsigned>(size)) & 31U;
    std::uint32_t const turned = crc << turn | crc >> (-turn & 31U);
    return _mm512_maskz_mov_epi8(std::uint64_t{15} << (64U - size),
                                 _mm512_set1_epi32(static_cast<int>(turned)));
}

std::uint32_t crc32Avx512(std::uint32_t crc, unsigned char const *data, std::size_t size)
{
    std::size_t head = size & 63U;
    if (head != 0 && head < 4) {
        crc = crc32Bytes(crc, data, head);
        data += head;
        size -= head;
        head = 0;
    }
    if (size == 0) {
        return crc;
    }
    // What is no whole block comes first, behind zeros.
    head = head == 0 ? 64 : head;
    auto const address = reinterpret_cast<std::uintptr_t>(data);
    __m512i value =
        _mm512_xor_si512(crc32LoadMasked(crc32LastBytes(head), address + head - 64), crc32At(crc, head));
    data += head;
    size -= head;
    __m512i const by512 = crc32Wide(crc32FoldFirst(512), crc32FoldSecond(512));
    if (size >= 448) {
        __m512i const by2048 = crc32Wide(crc32FoldFirst(2048), crc32FoldSecond(2048));
        __m512i b = crc32LoadWide(data);
        __m512i c = crc32LoadWide(data + 64);
        __m512i d = crc32LoadWide(data + 128);
        for (data += 192, size -= 192; size >= 256; data += 256, size -= 256) {
            value = crc32FoldWide(value, by2048, crc32LoadWide(data));
            b = crc32FoldWide(b, by2048, crc32LoadWide(data + 64));
            c = crc32FoldWide(c, by2048, crc32LoadWide(data + 128));
            d = crc32FoldWide(d, by2048, crc32LoadWide(data + 192));
        }
        value = crc32FoldWide(value, by512, b);
        value = crc32FoldWide(value, by512, c);
        value = crc32FoldWide(value, by512, d);
    }
    for (; size != 0; data += 64, size -= 64) {
        value = crc32FoldWide(value, by512, crc32LoadWide(data));
    }
    return crc32FinishWide(value);
}

// Read from `length` bytes on, they show the last `length` bytes of a vector, and the first four of those.
struct alignas(64) NameSlides {
    unsigned char last[128];
    unsigned char start[128];
};

constexpr NameSlides nameSlides = [] {
    NameSlides slides{};
    for (int i = 64; i < 128; ++i) {
        slides.last[i] = 0xFF;
        slides.start[i] = i < 68 ? 0xFF : 0;
    }
    return slides;
}();

struct alignas(64) NameTurn {
    unsigned char from[64];
};

constexpr NameTurn nameTurn = [] {
    NameTurn turn{};
    for (unsigned i = 0; i < 64; ++i) {
        turn.from[i] = static_cast<unsigned char>(i);
    }
    return turn;
}();

// A name is read as whole vectors, from its start and up to its end: of less than 64 bytes and more than that
// away from the bounds of its page.
constexpr std::size_t nameTooLong = 64;

__attribute__((no_sanitize("address", "thread"))) inline std::size_t nameLength(char const *text)
{
    auto const inPage = reinterpret_cast<std::uintptr_t>(text) & 4095U;
    if (inPage - 64 > 4096 - 2 * 64) [[unlikely]] {
        return nameTooLong;
    }
    __m512i const bytes = _mm512_loadu_si512(text);
    return static_cast<std::size_t>(_tzcnt_u64(_mm512_testn_epi8_mask(bytes, bytes)));
}

__attribute__((no_sanitize("address", "thread"))) inline __m512i nameEnd(char const *text, std::size_t length)
{
    return _mm512_loadu_si512(text + length - 64);
}

inline NameHash hashNameEnd(__m512i bytes, std::size_t length)
{
    __m512i const last = crc32LoadWide(nameSlides.last + length);
    __m512i const start = crc32LoadWide(nameSlides.start + length);
    std::uint32_t hash = crc32FinishWide(_mm512_ternarylogic_epi64(bytes, last, start, 0x6A)); // a & b ^ c
    if (length < 4) [[unlikely]] {
        hash ^= nameHashStart >> (8U * static_cast<unsigned>(length)); // longer than the name
    }
    return {hash, static_cast<std::uint32_t>(length)};
}

NameHash hashNameAvx512(char const *text)
{
    std::size_t const length = nameLength(text);
    if (length == nameTooLong) [[unlikely]] {
        return hashNameBy<crc32Avx512>(text);
    }
    return hashNameEnd(nameEnd(text, length), length);
}

inline __m512i nameMapped(__m512i bytes, unsigned char const *map)
{
    __m512i const lower = _mm512_permutex2var_epi8(crc32LoadWide(map), bytes, crc32LoadWide(map + 64));
    __m512i const upper = _mm512_permutex2var_epi8(crc32LoadWide(map + 128), bytes, crc32LoadWide(map + 192));
    return _mm512_mask_blend_epi8(_mm512_movepi8_mask(bytes), lower, upper);
}

NameHash hashMappedNameAvx512(char const *text, unsigned char const *map)
{
    std::size_t const length = nameLength(text);
    if (length == nameTooLong) [[unlikely]] {
        return hashMappedNameBy<crc32Avx512>(text, map);
    }
    return hashNameEnd(nameMapped(nameEnd(text, length), map), length);
}

// Read once, and turned so that the zeros behind the name come before it.
__attribute__((no_sanitize("address", "thread"))) NameHash
mapShortNameAvx512(char const *text, unsigned char const *map, char *out)
{
    if ((reinterpret_cast<std::uintptr_t>(text) & 4095U) > 4096 - 64) [[unlikely]] {
        return mapShortNameBy<crc32Avx512>(text, map, out);
    }
    __m512i const bytes = _mm512_loadu_si512(text);
    std::uint64_t const ends = _mm512_testn_epi8_mask(bytes, bytes);
    if (ends == 0) [[unlikely]] {
        return {0, shortNameRoom};
    }
    auto const length = static_cast<std::size_t>(_tzcnt_u64(ends));
    __m512i const name = _mm512_maskz_mov_epi8(_blsmsk_u64(ends) >> 1U, nameMapped(bytes, map));
    _mm512_storeu_si512(out, name);
    __m512i const turn =
        _mm512_add_epi8(crc32LoadWide(nameTurn.from), _mm512_set1_epi8(static_cast<char>(length)));
    return hashNameEnd(_mm512_permutexvar_epi8(turn, name), length);
}

} // namespace
} // namespace Qel
