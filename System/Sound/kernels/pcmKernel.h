#pragma once

#include <immintrin.h>

// A sample of 1 and above becomes 32767, of -1 and below -32768, any other 32767 times it, cut; what is no
// number is silence. Only -1 and below come to -32767 by the product, which tells them apart once they are
// integers.

namespace Qel {
namespace {

inline short toI16(float sample)
{
    if (sample >= 1.0f) {
        return 32767;
    }
    if (sample <= -1.0f) {
        return -32768;
    }
    return sample == sample ? static_cast<short>(sample * 32767) : short{0};
}

// As many samples as a vector holds, in 32 bits each: right but for the lower end, which is cut by packing or
// by inRange() to -32768, and lastly by fullScale().
#if QEL_VECTOR_BYTES == 64
using Ints = __m512i;

inline Ints toInts(float const *in)
{
    __m512 const sample = _mm512_loadu_ps(in);
    __m512 const most = _mm512_set1_ps(32767.0f);
    return _mm512_maskz_cvttps_epi32(_mm512_cmp_ps_mask(sample, sample, _CMP_ORD_Q),
                                     _mm512_min_ps(_mm512_mul_ps(sample, most), most));
}
inline Ints inRange(Ints v)
{
    return _mm512_max_epi32(v, _mm512_set1_epi32(-32768));
}
inline Ints fullScale(Ints v)
{
    __mmask32 const isEnd = _mm512_cmpeq_epi16_mask(v, _mm512_set1_epi16(-32767));
    return _mm512_mask_set1_epi16(v, isEnd, -32768);
}
inline Ints sideBySide(Ints low, Ints high)
{
    return _mm512_mask_blend_epi16(0xAAAAAAAAU, low, _mm512_slli_epi32(high, 16));
}
inline void storePacked(short *out, Ints first, Ints second)
{
    __m512i const order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
    _mm512_storeu_si512(out, fullScale(_mm512_permutexvar_epi64(order, _mm512_packs_epi32(first, second))));
}
inline void store(short *out, Ints v)
{
    _mm512_storeu_si512(out, v);
}
inline void storeEverySecond(short *out, Ints v)
{
    _mm512_mask_storeu_epi16(out, 0x55555555U, v);
}
inline Ints silence()
{
    return _mm512_setzero_si512();
}
// Three vectors of pairs, in turn.
inline void storeThree(short *out, Ints a, Ints b, Ints c)
{
    __m512i const ab0 = _mm512_setr_epi32(0, 16, 0, 1, 17, 0, 2, 18, 0, 3, 19, 0, 4, 20, 0, 5);
    __m512i const ab1 = _mm512_setr_epi32(21, 0, 6, 22, 0, 7, 23, 0, 8, 24, 0, 9, 25, 0, 10, 26);
    __m512i const ab2 = _mm512_setr_epi32(0, 11, 27, 0, 12, 28, 0, 13, 29, 0, 14, 30, 0, 15, 31, 0);
    __m512i const c0 = _mm512_setr_epi32(0, 0, 0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0);
    __m512i const c1 = _mm512_setr_epi32(0, 5, 0, 0, 6, 0, 0, 7, 0, 0, 8, 0, 0, 9, 0, 0);
    __m512i const c2 = _mm512_setr_epi32(10, 0, 0, 11, 0, 0, 12, 0, 0, 13, 0, 0, 14, 0, 0, 15);
    auto const put = [&](int at, __m512i ab, __m512i fromC, __mmask16 isC) {
        __m512i const both = _mm512_permutex2var_epi32(a, ab, b);
        _mm512_storeu_si512(out + at, _mm512_mask_permutexvar_epi32(both, isC, fromC, c));
    };
    put(0, ab0, c0, 0x4924);
    put(32, ab1, c1, 0x2492);
    put(64, ab2, c2, 0x9249);
}
#elif QEL_VECTOR_BYTES == 32
using Ints = __m256i;

inline Ints toInts(float const *in)
{
    __m256 const most = _mm256_set1_ps(32767.0f);
    __m256 const scaled = _mm256_mul_ps(_mm256_loadu_ps(in), most);
    __m256 const isNumber = _mm256_cmp_ps(scaled, scaled, _CMP_ORD_Q);
    return _mm256_cvttps_epi32(_mm256_and_ps(_mm256_min_ps(scaled, most), isNumber));
}
inline Ints inRange(Ints v)
{
    return _mm256_max_epi32(v, _mm256_set1_epi32(-32768));
}
inline Ints fullScale(Ints v)
{
    return _mm256_add_epi16(v, _mm256_cmpeq_epi16(v, _mm256_set1_epi16(-32767)));
}
inline Ints sideBySide(Ints low, Ints high)
{
    return _mm256_blend_epi16(low, _mm256_slli_epi32(high, 16), 0xAA);
}
inline void store(short *out, Ints v)
{
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(out), v);
}
inline void storePacked(short *out, Ints first, Ints second)
{
    store(out, fullScale(_mm256_permute4x64_epi64(_mm256_packs_epi32(first, second), 0xD8)));
}
inline void storeEverySecond(short *out, Ints v)
{
    store(out, _mm256_blend_epi16(v, _mm256_loadu_si256(reinterpret_cast<__m256i const *>(out)), 0xAA));
}
inline Ints silence()
{
    return _mm256_setzero_si256();
}
#else
using Ints = __m128i;

inline Ints toInts(float const *in)
{
    __m128 const most = _mm_set1_ps(32767.0f);
    __m128 const scaled = _mm_mul_ps(_mm_loadu_ps(in), most);
    return _mm_cvttps_epi32(_mm_and_ps(_mm_min_ps(scaled, most), _mm_cmpord_ps(scaled, scaled)));
}
inline Ints inRange(Ints v)
{
    __m128i const least = _mm_set1_epi32(-32768);
    __m128i const isBelow = _mm_cmplt_epi32(v, least);
    return _mm_or_si128(_mm_and_si128(isBelow, least), _mm_andnot_si128(isBelow, v));
}
inline Ints fullScale(Ints v)
{
    return _mm_add_epi16(v, _mm_cmpeq_epi16(v, _mm_set1_epi16(-32767)));
}
inline Ints sideBySide(Ints low, Ints high)
{
    return _mm_or_si128(_mm_and_si128(low, _mm_set1_epi32(0xFFFF)), _mm_slli_epi32(high, 16));
}
inline void store(short *out, Ints v)
{
    _mm_storeu_si128(reinterpret_cast<__m128i *>(out), v);
}
inline void storePacked(short *out, Ints first, Ints second)
{
    store(out, fullScale(_mm_packs_epi32(first, second)));
}
inline void storeEverySecond(short *out, Ints v)
{
    __m128i const isSample = _mm_set1_epi32(0xFFFF);
    __m128i const old = _mm_loadu_si128(reinterpret_cast<__m128i const *>(out));
    store(out, _mm_or_si128(_mm_and_si128(isSample, v), _mm_andnot_si128(isSample, old)));
}
inline Ints silence()
{
    return _mm_setzero_si128();
}
#endif

#if QEL_VECTOR_BYTES != 64
// a0 b0 c0 a1, b1 c1 a2 b2, c2 a3 b3 c3
inline void storeThreeOfFour(short *out, __m128i aInts, __m128i bInts, __m128i cInts)
{
    __m128 const c = _mm_castsi128_ps(cInts);
    __m128 const low = _mm_castsi128_ps(_mm_unpacklo_epi32(aInts, bInts));
    __m128 const high = _mm_castsi128_ps(_mm_unpackhi_epi32(aInts, bInts));
    __m128 const c0a1 = _mm_shuffle_ps(c, low, _MM_SHUFFLE(2, 2, 0, 0));
    __m128 const b1c1 = _mm_shuffle_ps(low, c, _MM_SHUFFLE(1, 1, 3, 3));
    __m128 const c2a3 = _mm_shuffle_ps(c, high, _MM_SHUFFLE(2, 2, 2, 2));
    __m128 const b3c3 = _mm_shuffle_ps(high, c, _MM_SHUFFLE(3, 3, 3, 3));
    auto const put = [out](int at, __m128 v) {
        _mm_storeu_si128(reinterpret_cast<__m128i *>(out + at), _mm_castps_si128(v));
    };
    put(0, _mm_shuffle_ps(low, c0a1, _MM_SHUFFLE(2, 0, 1, 0)));
    put(8, _mm_shuffle_ps(b1c1, high, _MM_SHUFFLE(1, 0, 2, 0)));
    put(16, _mm_shuffle_ps(c2a3, b3c3, _MM_SHUFFLE(2, 0, 2, 0)));
}
inline void storeThree(short *out, Ints a, Ints b, Ints c)
{
#if QEL_VECTOR_BYTES == 32
    storeThreeOfFour(out, _mm256_castsi256_si128(a), _mm256_castsi256_si128(b), _mm256_castsi256_si128(c));
    storeThreeOfFour(out + 24, _mm256_extracti128_si256(a, 1), _mm256_extracti128_si256(b, 1),
                     _mm256_extracti128_si256(c, 1));
#else
    storeThreeOfFour(out, a, b, c);
#endif
}
#endif

constexpr unsigned int lanes = QEL_VECTOR_BYTES / sizeof(float);

inline void plane(float const *in, short *out, unsigned int count, unsigned int stride)
{
    unsigned int i = 0;
    if (stride == 1) {
        for (; i + 2 * lanes <= count; i += 2 * lanes) {
            storePacked(out + i, toInts(in + i), toInts(in + i + lanes));
        }
    } else if (stride == 2) {
        // What lies behind the last sample may be another's.
        for (; i + lanes < count; i += lanes) {
            storeEverySecond(out + 2ULL * i, fullScale(inRange(toInts(in + i))));
        }
    } else {
        for (; i + 2 * lanes <= count; i += 2 * lanes) {
            alignas(QEL_VECTOR_BYTES) short packed[2 * lanes];
            storePacked(packed, toInts(in + i), toInts(in + i + lanes));
            short *to = out + 1ULL * i * stride;
            for (short const sample : packed) {
                *to = sample;
                to += stride;
            }
        }
    }
    for (; i < count; ++i) {
        out[1ULL * i * stride] = toI16(in[i]);
    }
}

inline Ints pairOf(float const *low, float const *high, unsigned int at)
{
    Ints const first = low == nullptr ? silence() : inRange(toInts(low + at));
    Ints const second = high == nullptr ? silence() : inRange(toInts(high + at));
    return fullScale(sideBySide(first, second));
}

inline void stereo(float const *left, float const *right, short *out, unsigned int count)
{
    unsigned int i = 0;
    for (; i + lanes <= count; i += lanes) {
        store(out + 2ULL * i, pairOf(left, right, i));
    }
    for (; i < count; ++i) {
        out[2ULL * i] = toI16(left[i]);
        out[2ULL * i + 1] = toI16(right[i]);
    }
}

inline void six(float const *const *planes, short *out, unsigned int count)
{
    unsigned int i = 0;
    for (; i + lanes <= count; i += lanes) {
        storeThree(out + 6ULL * i, pairOf(planes[0], planes[1], i), pairOf(planes[2], planes[3], i),
                   pairOf(planes[4], planes[5], i));
    }
    for (; i < count; ++i) {
        for (unsigned int k = 0; k < 6; ++k) {
            out[6ULL * i + k] = planes[k] == nullptr ? short{0} : toI16(planes[k][i]);
        }
    }
}

} // namespace
} // namespace Qel
