#pragma once

#include "System/math/kernels/kernels.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

// Improved noise after K. Perlin, "Improving Noise", 2002. A single value takes its corners side by side. A
// row of a field goes from one lattice cell to the next: within a cell the corners' gradients are functions
// of one coordinate, and a vector's width of samples is taken at a time. Both give the bits of the plain
// formula.

namespace Qel {
namespace {

using Noise4 [[gnu::vector_size(16)]] = float;
using NoiseMask4 [[gnu::vector_size(16)]] = std::int32_t;
using NoiseCount4 [[gnu::vector_size(16)]] = std::uint32_t;

constexpr std::int32_t noiseSign = static_cast<std::int32_t>(0x80000000U);

template <class Value>
inline Value noiseCurve(Value t)
{
    return t * t * t * (t * (t * 6.0F - 15.0F) + 10.0F);
}

template <class Value>
inline Value noiseLerp(Value t, Value a, Value b)
{
    return a + (b - a) * t;
}

// Where a sample lies: its lattice cell, of which the low eight bits count, and what is left of each
// coordinate.
struct NoisePlace {
    NoiseMask4 cell;
    Noise4 fraction;

    std::size_t cellOf(int lane) const { return static_cast<std::uint8_t>(cell[lane]); }
};

inline NoisePlace noisePlace(Noise4 v)
{
#if defined(__SSE4_1__)
    Noise4 const floor = _mm_floor_ps(v);
    NoiseMask4 const cell = reinterpret_cast<NoiseMask4>(_mm_cvttps_epi32(floor));
#elif defined(__SSE2__)
    // From 2^23 on every float is whole; what leaves 32 bits is a multiple of 256, as is what comes out.
    NoiseMask4 cell = reinterpret_cast<NoiseMask4>(_mm_cvttps_epi32(v));
    Noise4 floor = __builtin_convertvector(cell, Noise4);
    NoiseMask4 const small =
        reinterpret_cast<Noise4>(reinterpret_cast<NoiseMask4>(v) & ~noiseSign) < 8388608.0F;
    NoiseMask4 const above = (floor > v) & small;
    cell = reinterpret_cast<NoiseMask4>(reinterpret_cast<NoiseCount4>(cell) +
                                        reinterpret_cast<NoiseCount4>(above));
    floor += __builtin_convertvector(above, Noise4);
    floor = reinterpret_cast<Noise4>((reinterpret_cast<NoiseMask4>(floor) & small) |
                                     (reinterpret_cast<NoiseMask4>(v) & ~small));
#else
    NoiseMask4 cell = {};
    Noise4 floor = v;
    for (int i = 0; i < 4; ++i) {
        floor[i] = __builtin_floorf(v[i]);
        cell[i] = __builtin_fabsf(floor[i]) < 2147483648.0F ? static_cast<std::int32_t>(floor[i]) : 0;
    }
#endif
    return {cell, v - floor};
}

template <int Lane>
inline Noise4 noiseSpread(Noise4 v)
{
    return __builtin_shufflevector(v, v, Lane, Lane, Lane, Lane);
}

// Two neighbouring values of the permutation, the first one in the low byte.
inline std::size_t noisePair(std::size_t at)
{
    std::uint16_t pair = 0;
    __builtin_memcpy(&pair, noisePermutation.at + at, sizeof pair);
    return pair;
}

// The gradients of several corners, u or v of which is picked by bits of their hashes.
template <class Vector, class Mask>
inline Vector noiseGradients(Mask hash, Vector x, Vector y, Vector z)
{
    auto const bitsX = reinterpret_cast<Mask>(x);
    auto const bitsY = reinterpret_cast<Mask>(y);
    auto const bitsZ = reinterpret_cast<Mask>(z);
    Mask const takesY = (hash << 28) >> 31;  // u: 8 and above
    Mask const firstFour = (hash & 12) == 0; // v
    Mask const takesX = (hash & 13) == 12;   // v: 12 and 14
    Mask const u = bitsX ^ ((bitsX ^ bitsY) & takesY);
    Mask const others = bitsZ ^ ((bitsZ ^ bitsX) & takesX);
    Mask const v = others ^ ((others ^ bitsY) & firstFour);
    return reinterpret_cast<Vector>(u ^ (hash << 31)) +
           reinterpret_cast<Vector>(v ^ ((hash << 30) & noiseSign));
}

// The gradients of the corners on the two sides in x; hashes are those of the z pairs of AA and AB, and of BA
// and BB.
struct NoiseSides {
    Noise4 near, far;
};

#if defined(__AVX2__)

using Noise8 [[gnu::vector_size(32)]] = float;
using NoiseMask8 [[gnu::vector_size(32)]] = std::int32_t;

inline NoiseSides noiseSides(std::uint32_t hashesA, std::uint32_t hashesB, Noise4 f)
{
    std::uint64_t const bytes = hashesA | std::uint64_t{hashesB} << 32U;
    auto const hashes =
        reinterpret_cast<NoiseMask8>(_mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(bytes))));
    Noise8 const corners =
        noiseGradients(hashes, f[0] - Noise8{0, 0, 0, 0, 1, 1, 1, 1}, f[1] - Noise8{0, 0, 1, 1, 0, 0, 1, 1},
                       f[2] - Noise8{0, 1, 0, 1, 0, 1, 0, 1});
    return {__builtin_shufflevector(corners, corners, 0, 1, 2, 3),
            __builtin_shufflevector(corners, corners, 4, 5, 6, 7)};
}

#else

inline NoiseSides noiseSides(std::uint32_t hashesA, std::uint32_t hashesB, Noise4 f)
{
    // Only the low four bits of each hash are looked at.
    auto const a = static_cast<std::int32_t>(hashesA);
    auto const b = static_cast<std::int32_t>(hashesB);
    Noise4 const x = noiseSpread<0>(f);
    Noise4 const y = noiseSpread<1>(f) - Noise4{0, 0, 1, 1};
    Noise4 const z = noiseSpread<2>(f) - Noise4{0, 1, 0, 1};
    return {noiseGradients(NoiseMask4{a, a >> 8, a >> 16, a >> 24}, x, y, z),
            noiseGradients(NoiseMask4{b, b >> 8, b >> 16, b >> 24}, x - 1.0F, y, z)};
}

#endif

float noiseSpace(float x, float y, float z)
{
    NoisePlace const place = noisePlace(Noise4{x, y, z, 0});
    std::size_t const cellY = place.cellOf(1);
    std::size_t const cellZ = place.cellOf(2);
    std::size_t const ab = noisePair(place.cellOf(0));
    std::size_t const a = noisePair((ab & 255U) + cellY);
    std::size_t const b = noisePair((ab >> 8U) + cellY);
    std::size_t const hashesA = noisePair((a & 255U) + cellZ) | noisePair((a >> 8U) + cellZ) << 16U;
    std::size_t const hashesB = noisePair((b & 255U) + cellZ) | noisePair((b >> 8U) + cellZ) << 16U;
    NoiseSides const sides =
        noiseSides(static_cast<std::uint32_t>(hashesA), static_cast<std::uint32_t>(hashesB), place.fraction);
    Noise4 const fade = noiseCurve(place.fraction);
    Noise4 const alongX = noiseLerp(noiseSpread<0>(fade), sides.near, sides.far);
    Noise4 const alongY =
        noiseLerp(noiseSpread<1>(fade), alongX, __builtin_shufflevector(alongX, alongX, 2, 3, 2, 3));
    return noiseLerp(float{fade[2]}, float{alongY[0]}, float{alongY[1]});
}

float noisePlane(float x, float y)
{
    NoisePlace const place = noisePlace(Noise4{x, y, 0, 0});
    std::size_t const cellY = place.cellOf(1);
    std::size_t const ab = noisePair(place.cellOf(0));
    std::size_t const a = noisePair((ab & 255U) + cellY);
    std::size_t const b = noisePair((ab >> 8U) + cellY);
    NoiseMask4 const hashes = {noisePermutation.at[a & 255U], noisePermutation.at[a >> 8U],
                               noisePermutation.at[b & 255U], noisePermutation.at[b >> 8U]};
    Noise4 const f = place.fraction;
    Noise4 const corners =
        noiseGradients(hashes, f[0] - Noise4{0, 0, 1, 1}, f[1] - Noise4{0, 1, 0, 1}, Noise4{});
    Noise4 const fade = noiseCurve(f);
    Noise4 const alongX = noiseLerp(__builtin_shufflevector(fade, fade, 0, 0, 0, 0), corners,
                                    __builtin_shufflevector(corners, corners, 2, 3, 2, 3));
    return noiseLerp(float{fade[1]}, float{alongX[0]}, float{alongX[1]});
}

// Rows of fields.

constexpr unsigned noiseLanes = QEL_VECTOR_BYTES / sizeof(float);

using NoiseVec [[gnu::vector_size(QEL_VECTOR_BYTES)]] = float;
using NoiseMask [[gnu::vector_size(QEL_VECTOR_BYTES)]] = std::int32_t;

inline void noiseStoreBytes(unsigned char *to, NoiseMask value)
{
#if defined(__AVX512F__)
    _mm_storeu_si128(reinterpret_cast<__m128i *>(to), _mm512_cvtepi32_epi8(reinterpret_cast<__m512i>(value)));
#elif defined(__AVX2__)
    auto const whole = reinterpret_cast<__m256i>(value & 255);
    __m128i const words = _mm_packus_epi32(_mm256_castsi256_si128(whole), _mm256_extracti128_si256(whole, 1));
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_packus_epi16(words, words));
#else
    using Bytes [[gnu::vector_size(QEL_VECTOR_BYTES / 4)]] = std::uint8_t;
    Bytes const bytes = __builtin_convertvector(value & 255, Bytes);
    __builtin_memcpy(to, &bytes, sizeof bytes);
#endif
}

// One term of a gradient as a function of the row's coordinate: that coordinate or a constant, with a sign.
struct NoiseTerm {
    std::int32_t mask; // all ones where it is the coordinate
    std::int32_t bits; // the constant, and the sign

    float constant() const { return __builtin_bit_cast(float, bits); }
};

inline NoiseVec noiseValue(NoiseTerm term, NoiseVec t)
{
    return reinterpret_cast<NoiseVec>((reinterpret_cast<NoiseMask>(t) & term.mask) ^ term.bits);
}

constexpr NoiseTerm noiseFixed(float value, std::int32_t sign)
{
    return {0, __builtin_bit_cast(std::int32_t, value) ^ sign};
}

constexpr NoiseTerm noiseMoving(std::int32_t sign)
{
    return {-1, sign};
}

// The corners of one cell of a row in the plane, and its samples.
struct NoisePlaneRow {
    NoiseTerm u[4], v[4]; // A, A + 1, B, B + 1
    float fade;

    float x;
    std::size_t ab;

    NoisePlaneRow(float at, float)
    {
        NoisePlace const place = noisePlace(Noise4{at, 0, 0, 0});
        x = place.fraction[0];
        fade = noiseCurve(x);
        ab = noisePair(place.cellOf(0));
    }

    void enter(unsigned cell)
    {
        std::size_t const a = noisePair((ab & 255U) + cell);
        std::size_t const b = noisePair((ab >> 8U) + cell);
        unsigned const hashes[4] = {noisePermutation.at[a & 255U], noisePermutation.at[a >> 8U],
                                    noisePermutation.at[b & 255U], noisePermutation.at[b >> 8U]};
        for (unsigned i = 0; i < 4; ++i) {
            unsigned const hash = hashes[i] & 15U;
            float const side = i < 2 ? x : x - 1;
            std::int32_t const signU = static_cast<std::int32_t>(hash << 31U);
            std::int32_t const signV = static_cast<std::int32_t>(hash >> 1U << 31U);
            u[i] = hash < 8 ? noiseFixed(side, signU) : noiseMoving(signU);
            v[i] = hash < 4 ? noiseMoving(signV) : noiseFixed(hash == 12 || hash == 14 ? side : 0.0F, signV);
        }
    }

    NoiseVec operator()(NoiseVec t) const
    {
        NoiseVec const below = t - 1.0F;
        NoiseVec const across = fade - NoiseVec{};
        NoiseVec const near = noiseLerp(across, gradient(0, t), gradient(2, t));
        NoiseVec const far = noiseLerp(across, gradient(1, below), gradient(3, below));
        return noiseLerp(noiseCurve(t), near, far);
    }

    NoiseVec gradient(unsigned i, NoiseVec t) const { return noiseValue(u[i], t) + noiseValue(v[i], t); }

    static float single(float x, float, float t) { return noisePlane(x, t); }
};

// The same in space. u never is the row's coordinate there.
struct NoiseSpaceRow {
    float u[8]; // the z pairs of AA, AB, BA and BB
    NoiseTerm v[8];
    float fadeX, fadeY;

    float x, y;
    std::size_t a, b;

    NoiseSpaceRow(float atX, float atY)
    {
        NoisePlace const place = noisePlace(Noise4{atX, atY, 0, 0});
        x = place.fraction[0];
        y = place.fraction[1];
        fadeX = noiseCurve(x);
        fadeY = noiseCurve(y);
        std::size_t const ab = noisePair(place.cellOf(0));
        a = noisePair((ab & 255U) + place.cellOf(1));
        b = noisePair((ab >> 8U) + place.cellOf(1));
    }

    void enter(unsigned cell)
    {
        std::size_t const pairs[4] = {noisePair((a & 255U) + cell), noisePair((a >> 8U) + cell),
                                      noisePair((b & 255U) + cell), noisePair((b >> 8U) + cell)};
        for (unsigned i = 0; i < 8; ++i) {
            unsigned const hash = static_cast<unsigned>(pairs[i / 2] >> (8 * (i & 1U))) & 15U;
            float const sideX = i < 4 ? x : x - 1;
            float const sideY = (i & 2U) == 0 ? y : y - 1;
            std::int32_t const signU = static_cast<std::int32_t>(hash << 31U);
            std::int32_t const signV = static_cast<std::int32_t>(hash >> 1U << 31U);
            u[i] = noiseFixed(hash < 8 ? sideX : sideY, signU).constant();
            v[i] = hash < 4                   ? noiseFixed(sideY, signV)
                   : hash == 12 || hash == 14 ? noiseFixed(sideX, signV)
                                              : noiseMoving(signV);
        }
    }

    NoiseVec operator()(NoiseVec t) const
    {
        return noiseLerp(noiseCurve(t), layer(0, t), layer(1, t - 1.0F));
    }

    NoiseVec layer(unsigned i, NoiseVec t) const
    {
        NoiseVec const acrossX = fadeX - NoiseVec{};
        NoiseVec const acrossY = fadeY - NoiseVec{};
        NoiseVec const near = noiseLerp(acrossX, gradient(i, t), gradient(i + 4, t));
        NoiseVec const far = noiseLerp(acrossX, gradient(i + 2, t), gradient(i + 6, t));
        return noiseLerp(acrossY, near, far);
    }

    NoiseVec gradient(unsigned i, NoiseVec t) const { return u[i] + noiseValue(v[i], t); }

    static float single(float x, float y, float t) { return noiseSpace(x, y, t); }
};

inline NoiseMask noiseIota()
{
    NoiseMask iota = {};
    for (unsigned i = 0; i < noiseLanes; ++i) {
        iota[i] = static_cast<std::int32_t>(i);
    }
    return iota;
}

inline unsigned char noiseByte(float value)
{
    return static_cast<unsigned char>(static_cast<std::int32_t>((value + 1.0F) * 128.0F));
}

// The first sample that lies in a later cell than this one.
inline std::uint32_t noiseCellEnd(std::uint32_t from, std::uint32_t end, float step, float floor)
{
    double const guess = (static_cast<double>(floor) + 1.0) / static_cast<double>(step);
    std::uint32_t at = guess < static_cast<double>(end) ? static_cast<std::uint32_t>(guess) : end;
    at = at > from ? at : from + 1;
    float const next = floor + 1.0F;
    while (at > from + 1 && static_cast<float>(at - 1) * step >= next) {
        --at;
    }
    while (at < end && static_cast<float>(at) * step < next) {
        ++at;
    }
    return at;
}

// Samples first to end - 1 of a row, at multiples of the step.
template <class Row>
void noiseRow(float x, float y, float step, std::uint32_t first, std::uint32_t end, unsigned char *out)
{
    // Cells of a few samples, or beyond what a float counts: one by one.
    if (!(step <= 0.25F) || end > (1U << 24U)) {
        for (std::uint32_t i = first; i < end; ++i) {
            out[i - first] = noiseByte(Row::single(x, y, static_cast<float>(i) * step));
        }
        return;
    }
    NoiseMask const iota = noiseIota();
    Row row(x, y);
    for (std::uint32_t i = first; i < end;) {
        float const floor = __builtin_floorf(static_cast<float>(i) * step);
        std::uint32_t const cellEnd = noiseCellEnd(i, end, step, floor);
        row.enter(static_cast<unsigned>(static_cast<std::int32_t>(floor)) & 255U);
        for (; i < cellEnd; i += noiseLanes) {
            NoiseVec const at = __builtin_convertvector(iota + static_cast<std::int32_t>(i), NoiseVec) * step;
            NoiseVec const value = (row(at - floor) + 1.0F) * 128.0F;
            NoiseMask const whole = __builtin_convertvector(value, NoiseMask);
            // What runs over into the next cell is written again there.
            if (end - i >= noiseLanes) {
                noiseStoreBytes(out + (i - first), whole);
            } else {
                unsigned char bytes[noiseLanes];
                noiseStoreBytes(bytes, whole);
                __builtin_memcpy(out + (i - first), bytes, end - i);
            }
        }
        i = cellEnd;
    }
}

void noiseRowPlane(float x, float step, std::uint32_t first, std::uint32_t end, unsigned char *out)
{
    noiseRow<NoisePlaneRow>(x, 0, step, first, end, out);
}

void noiseRowSpace(float x, float y, float step, std::uint32_t first, std::uint32_t end, unsigned char *out)
{
    noiseRow<NoiseSpaceRow>(x, y, step, first, end, out);
}

} // namespace
} // namespace Qel
