#pragma once

// Pixels side by side, each in 32 bits. Compiled once for each processor level, whose source says how wide.

#include "System/Graphics/image/kernels/imageKernels.h"

#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace Qel {

namespace {

constexpr std::size_t lanes = QEL_VECTOR_BYTES / 4;

using Lanes = std::uint32_t __attribute__((vector_size(QEL_VECTOR_BYTES)));
using Words = std::uint16_t __attribute__((vector_size(QEL_VECTOR_BYTES / 2)));

Lanes all(std::uint32_t value)
{
    return value - Lanes{};
}

template <class Vector>
Vector loadAs(void const *from)
{
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

template <class Vector>
void storeAs(void *to, Vector vector)
{
    std::memcpy(to, &vector, sizeof vector);
}

inline Lanes rotated(Lanes pixels, std::uint32_t places)
{
#if defined(__AVX512F__)
    return (Lanes)_mm512_rolv_epi32((__m512i)pixels, _mm512_set1_epi32(static_cast<int>(places)));
#else
    return pixels << places | pixels >> (-places & 31);
#endif
}

#if defined(__AVX512VBMI__)

constexpr __mmask64 threeQuarters = 0xFFFFFFFFFFFF;

// Masked, or reading on into the next 16 bytes.
template <bool isMasked = true>
Lanes loadTriples(unsigned char const *from)
{
    static_assert(lanes == 16);
    alignas(64) static constexpr unsigned char places[64] = {
        0,  1,  2,  63, 3,  4,  5,  63, 6,  7,  8,  63, 9,  10, 11, 63, 12, 13, 14, 63, 15, 16,
        17, 63, 18, 19, 20, 63, 21, 22, 23, 63, 24, 25, 26, 63, 27, 28, 29, 63, 30, 31, 32, 63,
        33, 34, 35, 63, 36, 37, 38, 63, 39, 40, 41, 63, 42, 43, 44, 63, 45, 46, 47, 63};
    __m512i const bytes = isMasked ? _mm512_maskz_loadu_epi8(threeQuarters, from) : _mm512_loadu_si512(from);
    constexpr __mmask64 lowThree = 0x7777777777777777; // of each four bytes
    return (Lanes)_mm512_maskz_permutexvar_epi8(lowThree, _mm512_load_si512(places), bytes);
}

// Masked, or with zeros in the next 16 bytes, which are faster.
template <bool isMasked = true>
void storeTriples(unsigned char *to, Lanes pixels)
{
    alignas(64) static constexpr unsigned char places[64] = {
        0,  1,  2,  4,  5,  6,  8,  9,  10, 12, 13, 14, 16, 17, 18, 20, 21, 22, 24, 25, 26, 28,
        29, 30, 32, 33, 34, 36, 37, 38, 40, 41, 42, 44, 45, 46, 48, 49, 50, 52, 53, 54, 56, 57,
        58, 60, 61, 62, 0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0};
    __m512i const packed = _mm512_permutexvar_epi8(_mm512_load_si512(places), (__m512i)pixels);
    if constexpr (isMasked) {
        _mm512_mask_storeu_epi8(to, threeQuarters, packed);
    } else {
        _mm512_storeu_si512(to, packed);
    }
}

#elif defined(__SSSE3__)

// Four pixels. Reads the four bytes behind them too; writes no more than theirs.
inline __m128i loadFourTriples(unsigned char const *from)
{
    __m128i const bytes = _mm_loadu_si128(reinterpret_cast<__m128i const *>(from));
    return _mm_shuffle_epi8(bytes, _mm_setr_epi8(0, 1, 2, -1, 3, 4, 5, -1, 6, 7, 8, -1, 9, 10, 11, -1));
}

inline void storeFourTriples(unsigned char *to, __m128i pixels)
{
    __m128i const packed =
        _mm_shuffle_epi8(pixels, _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), packed);
    storeAs(to + 8, _mm_extract_epi32(packed, 2));
}

inline Lanes loadTriples(unsigned char const *from)
{
#if defined(__AVX2__)
    return (Lanes)_mm256_set_m128i(loadFourTriples(from + 12), loadFourTriples(from));
#else
    return (Lanes)loadFourTriples(from);
#endif
}

inline void storeTriples(unsigned char *to, Lanes pixels)
{
#if defined(__AVX2__)
    storeFourTriples(to, _mm256_castsi256_si128((__m256i)pixels));
    storeFourTriples(to + 12, _mm256_extracti128_si256((__m256i)pixels, 1));
#else
    storeFourTriples(to, (__m128i)pixels);
#endif
}

#else

inline Lanes loadTriples(unsigned char const *from)
{
    Lanes pixels{};
    for (std::size_t i = 0; i < lanes; ++i) {
        pixels[i] = from[3 * i] | std::uint32_t{from[3 * i + 1]} << 8 | std::uint32_t{from[3 * i + 2]} << 16;
    }
    return pixels;
}

inline void storeTriples(unsigned char *to, Lanes pixels)
{
    for (std::size_t i = 0; i < lanes; ++i) {
        std::uint32_t const pixel = pixels[i];
        std::memcpy(to + 3 * i, &pixel, 3);
    }
}

#endif

/// A vector of pixels of so many bytes each.
template <unsigned int bytes>
Lanes loadPixels(unsigned char const *from)
{
    if constexpr (bytes == 4) {
        return loadAs<Lanes>(from);
    } else if constexpr (bytes == 3) {
        return loadTriples(from);
    } else {
        return __builtin_convertvector(loadAs<Words>(from), Lanes);
    }
}

template <unsigned int bytes>
void storePixels(unsigned char *to, Lanes pixels)
{
    if constexpr (bytes == 4) {
        storeAs(to, pixels);
    } else if constexpr (bytes == 3) {
        storeTriples(to, pixels);
    } else {
        storeAs(to, __builtin_convertvector(pixels, Words));
    }
}

constexpr std::size_t group = 4; // vectors

/// A group of vectors; all loads of a group come before its stores.
template <unsigned int bytes>
void loadGroup(Lanes (&pixels)[group], unsigned char const *from)
{
#if defined(__AVX512VBMI__)
    if constexpr (bytes == 3) {
        for (std::size_t i = 0; i + 1 < group; ++i) {
            pixels[i] = loadTriples<false>(from + i * lanes * bytes);
        }
        pixels[group - 1] = loadTriples(from + (group - 1) * lanes * bytes);
        return;
    }
#endif
    for (std::size_t i = 0; i < group; ++i) {
        pixels[i] = loadPixels<bytes>(from + i * lanes * bytes);
    }
}

template <unsigned int bytes>
void storeGroup(unsigned char *to, Lanes const (&pixels)[group])
{
#if defined(__AVX512VBMI__)
    if constexpr (bytes == 3) {
        // Each one covers what the one before has written too much.
        for (std::size_t i = 0; i + 1 < group; ++i) {
            storeTriples<false>(to + i * lanes * bytes, pixels[i]);
        }
        storeTriples(to + (group - 1) * lanes * bytes, pixels[group - 1]);
        return;
    }
#endif
    for (std::size_t i = 0; i < group; ++i) {
        storePixels<bytes>(to + i * lanes * bytes, pixels[i]);
    }
}

/// Bytes as numbers of 32 bits.
inline Lanes widened(unsigned char const *from)
{
#if defined(__AVX512F__)
    return (Lanes)_mm512_cvtepu8_epi32(loadAs<__m128i>(from));
#elif defined(__AVX2__)
    return (Lanes)_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<__m128i const *>(from)));
#elif defined(__SSE2__)
    __m128i const bytes = _mm_cvtsi32_si128(loadAs<int>(from));
    __m128i const zero = _mm_setzero_si128();
    return (Lanes)_mm_unpacklo_epi16(_mm_unpacklo_epi8(bytes, zero), zero);
#else
    Lanes result{};
    for (std::size_t i = 0; i < lanes; ++i) {
        result[i] = from[i];
    }
    return result;
#endif
}

} // namespace

} // namespace Qel
