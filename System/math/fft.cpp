#include "System/math/fft.h"

#include "System/math/kernels/kernels.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cmath>
#include <functional>
#include <mutex>

namespace Qel {

namespace {

FftRecurrence recurrenceOf(std::size_t block)
{
    constexpr double fullTurn = 6.2831854820251465; // 2 pi in single precision
    double const delta = fullTurn / static_cast<double>(block);
    return {.re1 = std::cos(-delta),
            .re2 = std::cos(-2 * delta),
            .im1 = std::sin(-delta),
            .im2 = std::sin(-2 * delta),
            .w = 2 * std::cos(-delta)};
}

constinit FftTables tables{};
constinit std::atomic<std::size_t> tabled = 1; // the greatest block whose twiddles are there

// A process pays for the blocks that it uses, each once.
void fillTables(std::size_t size)
{
    std::size_t const wanted = std::min(size, fftTableSize);
    if (tabled.load(std::memory_order_acquire) >= wanted) {
        return;
    }
    static constinit std::mutex filling;
    std::scoped_lock const lock(filling);
    for (std::size_t block = 2 * tabled.load(std::memory_order_relaxed); block <= wanted; block *= 2) {
        std::size_t const half = block / 2;
        recurrenceOf(block).step(tables.re + half, tables.im + half, half);
        tabled.store(block, std::memory_order_release);
    }
}

template <class T>
bool overlap(T const *a, T const *b, std::size_t size)
{
    return std::less<>()(a, b + size) && std::less<>()(b, a + size);
}

template <class T>
bool sound(FftJob<T> const &job)
{
    if (!std::has_single_bit(job.size) || job.size < 2) {
        return false;
    }
    if (job.realIn == nullptr || job.realOut == nullptr || job.imagOut == nullptr) {
        return false;
    }
    for (T const *const in : {job.realIn, job.imagIn}) {
        if (in != nullptr && (overlap(in, static_cast<T const *>(job.realOut), job.size) ||
                              overlap(in, static_cast<T const *>(job.imagOut), job.size))) {
            return false;
        }
    }
    return !overlap(static_cast<T const *>(job.realOut), static_cast<T const *>(job.imagOut), job.size);
}

} // namespace

void cFFT::fft_double(unsigned int numSamples, int inverseTransform, double const *realIn,
                      double const *imagIn, double *realOut, double *imagOut)
{
    FftJob<double> const job{numSamples, inverseTransform != 0, realIn, imagIn, realOut, imagOut};
    if (sound(job)) {
        fillTables(job.size);
        kernels->fftDouble(job, tables, recurrenceOf);
    }
}

void cFFT::fft_float(unsigned int numSamples, int inverseTransform, float const *realIn, float const *imagIn,
                     float *realOut, float *imagOut)
{
    FftJob<float> const job{numSamples, inverseTransform != 0, realIn, imagIn, realOut, imagOut};
    if (sound(job)) {
        fillTables(job.size);
        kernels->fftFloat(job, tables, recurrenceOf);
    }
}

} // namespace Qel
