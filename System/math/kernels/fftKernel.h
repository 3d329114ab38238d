#pragma once

#include "System/math/kernels/kernels.h"

#if defined(__SSE2__)
#include <immintrin.h>
#endif

// Radix-2 butterflies over vectors of QEL_VECTOR_BYTES bytes, which the including source defines.
//
// Every sample goes through the butterflies of the plain loop, with the same operands in the same order; they
// are only taken in an order that suits memory. So every width gives the same bits. Single precision samples
// are widened to double for each butterfly and rounded after it.

namespace Qel {
namespace {

constexpr unsigned fftLanes = QEL_VECTOR_BYTES / sizeof(double);

using FftVec [[gnu::vector_size(QEL_VECTOR_BYTES)]] = double;
// A whole number of stages over this many samples stays in the first level of the cache.
constexpr unsigned fftCached = 2048;

struct FftComplex {
    FftVec re, im;
};

inline FftVec fftLoad(double const *from)
{
    FftVec out;
    __builtin_memcpy(&out, from, sizeof out);
    return out;
}

// The compiler's own conversions between the two take several instructions where the processor has one.
#if defined(__AVX512F__)

inline FftVec fftLoad(float const *from)
{
    return _mm512_cvtps_pd(_mm256_loadu_ps(from));
}
inline FftVec fftRound(FftVec value)
{
    return _mm512_cvtps_pd(_mm512_cvtpd_ps(value));
}
inline void fftStore(float *to, FftVec value)
{
    _mm256_storeu_ps(to, _mm512_cvtpd_ps(value));
}

#elif defined(__AVX2__)

inline FftVec fftLoad(float const *from)
{
    return _mm256_cvtps_pd(_mm_loadu_ps(from));
}
inline FftVec fftRound(FftVec value)
{
    return _mm256_cvtps_pd(_mm256_cvtpd_ps(value));
}
inline void fftStore(float *to, FftVec value)
{
    _mm_storeu_ps(to, _mm256_cvtpd_ps(value));
}

#elif defined(__SSE2__)

inline FftVec fftLoad(float const *from)
{
    return _mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<__m128i const *>(from))));
}
inline FftVec fftRound(FftVec value)
{
    return _mm_cvtps_pd(_mm_cvtpd_ps(value));
}
inline void fftStore(float *to, FftVec value)
{
    _mm_storel_epi64(reinterpret_cast<__m128i *>(to), _mm_castps_si128(_mm_cvtpd_ps(value)));
}

#else

using FftHalf [[gnu::vector_size(QEL_VECTOR_BYTES / 2)]] = float;

inline FftVec fftLoad(float const *from)
{
    FftHalf half;
    __builtin_memcpy(&half, from, sizeof half);
    return __builtin_convertvector(half, FftVec);
}
inline FftVec fftRound(FftVec value)
{
    return __builtin_convertvector(__builtin_convertvector(value, FftHalf), FftVec);
}
inline void fftStore(float *to, FftVec value)
{
    FftHalf const half = __builtin_convertvector(value, FftHalf);
    __builtin_memcpy(to, &half, sizeof half);
}

#endif

inline void fftStore(double *to, FftVec value)
{
    __builtin_memcpy(to, &value, sizeof value);
}

template <class T>
constexpr bool fftSingle = sizeof(T) == sizeof(float);

// Results that are about to be stored are rounded there, the others here if their samples are floats.
template <bool Round>
[[gnu::always_inline]] inline void fftButterfly(FftComplex &a, FftComplex &b, FftComplex const &w)
{
    FftVec const tr = w.re * b.re - w.im * b.im;
    FftVec const ti = w.re * b.im + w.im * b.re;
    b.re = a.re - tr;
    b.im = a.im - ti;
    a.re = a.re + tr;
    a.im = a.im + ti;
    if constexpr (Round) {
        a = {fftRound(a.re), fftRound(a.im)};
        b = {fftRound(b.re), fftRound(b.im)};
    }
}

template <class T>
struct FftData {
    T *re;
    T *im;

    FftComplex load(std::size_t at) const { return {fftLoad(re + at), fftLoad(im + at)}; }
    void store(std::size_t at, FftComplex const &value) const
    {
        fftStore(re + at, value.re);
        fftStore(im + at, value.im);
    }
};

// The twiddles of the inverse are those of the forward transform with the sine's sign turned; a zero stays
// +0.
template <bool Inverse>
inline FftComplex fftTwiddles(double const *re, double const *im)
{
    FftVec const sine = fftLoad(im);
    return {fftLoad(re), Inverse ? FftVec{} - sine : sine};
}

template <bool Inverse>
inline FftComplex fftTwiddles(FftTables const &tables, std::size_t half, std::size_t n)
{
    return fftTwiddles<Inverse>(tables.re + half + n, tables.im + half + n);
}

// One stage: blocks of twice `half`.
template <class T, bool Inverse>
void fftStage(FftData<T> data, std::size_t size, std::size_t half, FftTables const &tables)
{
    for (std::size_t base = 0; base < size; base += 2 * half) {
        for (std::size_t n = 0; n < half; n += fftLanes) {
            FftComplex a = data.load(base + n);
            FftComplex b = data.load(base + n + half);
            fftButterfly<false>(a, b, fftTwiddles<Inverse>(tables, half, n));
            data.store(base + n, a);
            data.store(base + n + half, b);
        }
    }
}

// Two stages, of twice and four times `half`, in one walk through memory.
template <class T, bool Inverse>
void fftStagePair(FftData<T> data, std::size_t size, std::size_t half, FftTables const &tables)
{
    for (std::size_t base = 0; base < size; base += 4 * half) {
        for (std::size_t n = 0; n < half; n += fftLanes) {
            std::size_t const at = base + n;
            FftComplex a = data.load(at);
            FftComplex b = data.load(at + half);
            FftComplex c = data.load(at + 2 * half);
            FftComplex d = data.load(at + 3 * half);
            FftComplex const inner = fftTwiddles<Inverse>(tables, half, n);
            fftButterfly<fftSingle<T>>(a, b, inner);
            fftButterfly<fftSingle<T>>(c, d, inner);
            fftButterfly<false>(a, c, fftTwiddles<Inverse>(tables, 2 * half, n));
            fftButterfly<false>(b, d, fftTwiddles<Inverse>(tables, 2 * half, n + half));
            data.store(at, a);
            data.store(at + half, b);
            data.store(at + 2 * half, c);
            data.store(at + 3 * half, d);
        }
    }
}

// The stages from blocks of twice `half` up to blocks of `block`.
template <class T, bool Inverse>
void fftStages(FftData<T> data, std::size_t size, std::size_t half, std::size_t block,
               FftTables const &tables)
{
    while (half < block) {
        std::size_t const factor = block / half; // 2 to the number of stages
        // Rounding between two stages costs more than the way through the cache.
        if (fftSingle<T> || (__builtin_ctzll(factor) & 1) != 0) {
            fftStage<T, Inverse>(data, size, half, tables);
            half *= 2;
        } else {
            fftStagePair<T, Inverse>(data, size, half, tables);
            half *= 4;
        }
    }
}

inline FftVec fftAll(double value)
{
    return value - FftVec{}; // not a sum, which would lose the sign of a zero
}

constexpr unsigned fftReversed(unsigned index, unsigned count)
{
    unsigned out = 0;
    for (unsigned bit = 1; bit < count; bit *= 2) {
        out = out * 2 + ((index & bit) != 0 ? 1 : 0);
    }
    return out;
}

template <unsigned... Lane>
struct FftLaneList {
};

// One round of a transposition: rows and the rows half a square on are merged lane by lane.
template <unsigned... Lane>
inline void fftMerge(FftVec *rows, FftLaneList<Lane...>)
{
    FftVec out[fftLanes];
    for (std::size_t i = 0; i < fftLanes / 2; ++i) {
        out[2 * i] =
            __builtin_shufflevector(rows[i], rows[i + fftLanes / 2], (Lane / 2 + (Lane % 2) * fftLanes)...);
        out[2 * i + 1] = __builtin_shufflevector(rows[i], rows[i + fftLanes / 2],
                                                 (Lane / 2 + fftLanes / 2 + (Lane % 2) * fftLanes)...);
    }
    for (unsigned i = 0; i < fftLanes; ++i) {
        rows[i] = out[i];
    }
}

inline void fftTranspose(FftVec *rows)
{
    for (unsigned round = 1; round < fftLanes; round *= 2) {
#if QEL_VECTOR_BYTES == 64
        fftMerge(rows, FftLaneList<0, 1, 2, 3, 4, 5, 6, 7>());
#elif QEL_VECTOR_BYTES == 32
        fftMerge(rows, FftLaneList<0, 1, 2, 3>());
#else
        fftMerge(rows, FftLaneList<0, 1>());
#endif
    }
}

// One stage of blocks of twice Half within a column of vectors.
template <class T, bool Inverse, unsigned Half>
[[gnu::always_inline]] inline void fftColumnStages(FftVec *re, FftVec *im, FftTables const &tables)
{
    if constexpr (Half < fftLanes) {
        for (unsigned n = 0; n < Half; ++n) {
            double const sine = tables.im[Half + n];
            FftComplex const w = {fftAll(tables.re[Half + n]), fftAll(Inverse ? 0.0 - sine : sine)};
            for (unsigned base = 0; base < fftLanes; base += 2 * Half) {
                unsigned const row = base + n;
                FftComplex a = {re[row], im[row]};
                FftComplex b = {re[row + Half], im[row + Half]};
                fftButterfly<fftSingle<T> && (2 * Half < fftLanes)>(a, b, w);
                re[row] = a.re;
                im[row] = a.im;
                re[row + Half] = b.re;
                im[row + Half] = b.im;
            }
        }
        fftColumnStages<T, Inverse, 2 * Half>(re, im, tables);
    }
}

// Brings the samples into bit-reversed order and takes the stages of blocks up to one vector. A vector of
// neighbouring inputs holds one sample each of as many blocks, so that these stages go from vector to vector;
// then the square is turned, and each vector is a block.
template <class T, bool Inverse>
void fftOpen(FftData<T> out, FftData<T const> in, std::size_t size, FftTables const &tables)
{
    std::size_t const rowStride = size / fftLanes;
    std::size_t reversed = 0; // of the column, over the bits above a vector
    for (std::size_t column = 0; column < rowStride; column += fftLanes) {
        FftVec re[fftLanes];
        FftVec im[fftLanes];
        for (unsigned row = 0; row < fftLanes; ++row) {
            std::size_t const at = fftReversed(row, fftLanes) * rowStride + column;
            re[row] = fftLoad(in.re + at);
            im[row] = in.im != nullptr ? fftLoad(in.im + at) : FftVec{};
        }
        fftColumnStages<T, Inverse, 1>(re, im, tables);
        fftTranspose(re);
        fftTranspose(im);
        for (unsigned lane = 0; lane < fftLanes; ++lane) {
            std::size_t const at = reversed * fftLanes + fftReversed(lane, fftLanes) * rowStride;
            out.store(at, {re[lane], im[lane]});
        }
        // Counts up in reversed order: carries run down from the highest bit.
        std::size_t bit = rowStride / fftLanes / 2;
        while (bit != 0 && (reversed & bit) != 0) {
            reversed ^= bit;
            bit /= 2;
        }
        reversed |= bit;
    }
}

// Stages whose twiddles are in no table: they are stepped for some vectors at a time and used in every block.
template <class T, bool Inverse>
void fftLongStage(FftData<T> data, std::size_t size, std::size_t half, FftRecurrence recurrence)
{
    constexpr std::size_t piece = 256;
    double re[piece];
    double im[piece];
    for (std::size_t start = 0; start < half; start += piece) {
        recurrence.step(re, im, piece);
        for (std::size_t base = start; base < size; base += 2 * half) {
            for (std::size_t n = 0; n < piece; n += fftLanes) {
                FftComplex a = data.load(base + n);
                FftComplex b = data.load(base + n + half);
                fftButterfly<false>(a, b, fftTwiddles<Inverse>(re + n, im + n));
                data.store(base + n, a);
                data.store(base + n + half, b);
            }
        }
    }
}

// Sizes below a square of vectors.
template <class T, bool Inverse>
void fftSmall(FftData<T> out, FftData<T const> in, std::size_t size, FftTables const &tables)
{
    for (unsigned i = 0; i < size; ++i) {
        unsigned const at = fftReversed(i, static_cast<unsigned>(size));
        out.re[at] = in.re[i];
        out.im[at] = in.im != nullptr ? in.im[i] : T{};
    }
    for (std::size_t half = 1; half < size; half *= 2) {
        for (std::size_t base = 0; base < size; base += 2 * half) {
            for (std::size_t n = 0; n < half; ++n) {
                T &aRe = out.re[base + n];
                T &aIm = out.im[base + n];
                T &bRe = out.re[base + n + half];
                T &bIm = out.im[base + n + half];
                double const cosine = tables.re[half + n];
                double const sine = Inverse ? 0.0 - tables.im[half + n] : tables.im[half + n];
                double const tr = cosine * bRe - sine * bIm;
                double const ti = cosine * bIm + sine * bRe;
                bRe = static_cast<T>(aRe - tr);
                bIm = static_cast<T>(aIm - ti);
                aRe = static_cast<T>(aRe + tr);
                aIm = static_cast<T>(aIm + ti);
            }
        }
    }
}

template <class T, bool Inverse>
void fftTransform(FftData<T> out, FftData<T const> in, std::size_t size, FftTables const &tables,
                  FftRecurrence (*recurrence)(std::size_t block))
{
    if (size < std::size_t{fftLanes} * fftLanes) {
        fftSmall<T, Inverse>(out, in, size, tables);
    } else {
        fftOpen<T, Inverse>(out, in, size, tables);
        std::size_t const cached = size < fftCached ? size : fftCached;
        for (std::size_t start = 0; start < size; start += cached) {
            fftStages<T, Inverse>({out.re + start, out.im + start}, cached, fftLanes, cached, tables);
        }
        std::size_t const listed = size < fftTableSize ? size : fftTableSize;
        fftStages<T, Inverse>(out, size, cached, listed, tables);
        for (std::size_t half = listed; half < size; half *= 2) {
            fftLongStage<T, Inverse>(out, size, half, recurrence(2 * half));
        }
    }
    if (Inverse) {
        T const scale = static_cast<T>(1.0 / static_cast<double>(size));
        for (std::size_t i = 0; i < size; ++i) {
            out.re[i] *= scale;
            out.im[i] *= scale;
        }
    }
}

template <class T>
void fftBoth(FftJob<T> const &job, FftTables const &tables, FftRecurrence (*recurrence)(std::size_t block))
{
    FftData<T> const out = {job.realOut, job.imagOut};
    FftData<T const> const in = {job.realIn, job.imagIn};
    if (job.inverse) {
        fftTransform<T, true>(out, in, job.size, tables, recurrence);
    } else {
        fftTransform<T, false>(out, in, job.size, tables, recurrence);
    }
}

} // namespace
} // namespace Qel
