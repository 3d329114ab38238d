#pragma once

#include "System/Graphics/image/kernels/pixelLanes.h"

namespace Qel {

namespace {

template <class Vector, class Lane>
Vector turned(Vector vector)
{
    constexpr std::size_t count = sizeof(Vector) / sizeof(Lane);
    Vector order{};
    for (std::size_t i = 0; i < count; ++i) {
        order[i] = static_cast<Lane>(count - 1 - i);
    }
#if defined(__clang__)
    Vector result{};
    for (std::size_t i = 0; i < count; ++i) {
        result[i] = vector[order[i]];
    }
    return result;
#else
    return __builtin_shuffle(vector, order);
#endif
}

// Functions of the standard library have one copy for all levels: none of them here.

// From both ends, a vector at a time, until they would meet.
template <unsigned int bytes>
void mirrorBy(unsigned char *row, std::size_t pixels)
{
    using Bytes = unsigned char __attribute__((vector_size(QEL_VECTOR_BYTES)));
    using FullWords = std::uint16_t __attribute__((vector_size(QEL_VECTOR_BYTES)));
    constexpr std::size_t step = bytes == 1 ? QEL_VECTOR_BYTES : bytes == 2 ? QEL_VECTOR_BYTES / 2 : lanes;
    std::size_t left = 0;
    std::size_t right = pixels;
    for (; right - left >= 2 * step + 2; left += step, right -= step) {
        unsigned char *const first = row + left * bytes;
        unsigned char *const last = row + (right - step) * bytes;
        if constexpr (bytes == 1) {
            Bytes const a = loadAs<Bytes>(first);
            storeAs(first, turned<Bytes, unsigned char>(loadAs<Bytes>(last)));
            storeAs(last, turned<Bytes, unsigned char>(a));
        } else if constexpr (bytes == 2) {
            FullWords const a = loadAs<FullWords>(first);
            storeAs(first, turned<FullWords, std::uint16_t>(loadAs<FullWords>(last)));
            storeAs(last, turned<FullWords, std::uint16_t>(a));
        } else if constexpr (bytes == 3) {
            // Reading ahead has to stay in the row.
            Lanes const a = loadTriples(first);
            Lanes b;
            if (left == 0) {
                unsigned char end[3 * lanes + 8] = {};
                std::memcpy(end, last, 3 * lanes);
                b = loadTriples(end);
            } else {
                b = loadTriples(last);
            }
            storeTriples(first, turned<Lanes, std::uint32_t>(b));
            storeTriples(last, turned<Lanes, std::uint32_t>(a));
        } else {
            Lanes const a = loadAs<Lanes>(first);
            storeAs(first, turned<Lanes, std::uint32_t>(loadAs<Lanes>(last)));
            storeAs(last, turned<Lanes, std::uint32_t>(a));
        }
    }
    for (; left + 1 < right; ++left, --right) {
        unsigned char pixel[bytes];
        std::memcpy(pixel, row + left * bytes, bytes);
        std::memcpy(row + left * bytes, row + (right - 1) * bytes, bytes);
        std::memcpy(row + (right - 1) * bytes, pixel, bytes);
    }
}

void mirrorRow(unsigned char *row, unsigned int bytes, std::size_t pixels)
{
    switch (bytes) {
    case 1:
        return mirrorBy<1>(row, pixels);
    case 2:
        return mirrorBy<2>(row, pixels);
    case 3:
        return mirrorBy<3>(row, pixels);
    default:
        return mirrorBy<4>(row, pixels);
    }
}

void grayPixels(std::uint32_t *pixels, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        std::uint32_t const pixel = pixels[i];
        std::uint32_t const sum = (pixel & 255) + (pixel >> 8 & 255) + (pixel >> 16 & 255);
        constexpr std::uint32_t third = 43691; // of 2 to the 17, rounded up: exact for sums up to 765
        pixels[i] = (pixel & 0xFF000000) | (sum * third >> 17) * 0x010101;
    }
}

void filterBytes(unsigned char *out, FilterTap const *taps, unsigned int numTaps, std::int32_t divisor,
                 std::size_t bytes)
{
    using Sums = std::int32_t __attribute__((vector_size(QEL_VECTOR_BYTES)));
    constexpr std::size_t vectors = 4;
    constexpr std::size_t step = vectors * lanes;
    std::int32_t const by = divisor < 0 ? -divisor : divisor;
    std::int32_t const top = 256 * by - 1;
    float const share = 1.0f / static_cast<float>(by);
    for (std::size_t at = 0; at < bytes; at += step) {
        Sums sums[vectors] = {};
        for (unsigned int t = 0; t < numTaps; ++t) {
            unsigned char const *const from = taps[t].row + at;
            std::int32_t const weight = taps[t].weight;
            for (std::size_t i = 0; i < vectors; ++i) {
                sums[i] += (Sums)widened(from + i * lanes) * weight;
            }
        }
        // What is below 0 or above 255 in the end is cut first. The quotient by floats is off by one at
        // most, which its remainder shows.
        std::int32_t flat[step];
        std::memcpy(flat, sums, sizeof flat);
        for (std::size_t i = 0; i < step; ++i) {
            std::int32_t const upright = divisor < 0 ? -flat[i] : flat[i];
            std::int32_t const sum = upright < 0 ? 0 : upright > top ? top : upright;
            auto quotient = static_cast<std::int32_t>(static_cast<float>(sum) * share);
            std::int32_t const rest = sum - quotient * by;
            quotient += (rest >= by ? 1 : 0) - (rest < 0 ? 1 : 0);
            out[at + i] = static_cast<unsigned char>(quotient);
        }
    }
}

void slopesOf(BumpRow const &to, std::int16_t const *above, std::int16_t const *row,
              std::int16_t const *below, std::size_t count)
{
    std::int32_t *const __restrict nx = to.nx;
    std::int32_t *const __restrict ny = to.ny;
    float *const __restrict length = to.length;
    for (std::size_t i = 0; i < count; ++i) {
        // Index i is the left neighbour.
        std::int32_t const x =
            above[i] + 2 * row[i] + below[i] - above[i + 2] - 2 * row[i + 2] - below[i + 2];
        std::int32_t const y =
            below[i] + 2 * below[i + 1] + below[i + 2] - above[i] - 2 * above[i + 1] - above[i + 2];
        nx[i] = x;
        ny[i] = y;
        float const fx = static_cast<float>(x) / 255;
        float const fy = static_cast<float>(y) / 255;
        length[i] = 1 + fx * fx + fy * fy;
    }
}

// cMath::sqrt_base with cMath::rsqrt_base below it.
void rootBase(float *values, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        float const x = values[i];
        std::uint32_t const difference = 0xBE800000u - __builtin_bit_cast(std::uint32_t, x);
        float y = __builtin_bit_cast(float, static_cast<std::int32_t>(difference) >> 1);
        y = __builtin_fabsf((1.47f - 0.47f * x * y * y) * y);
        values[i] = x * (y * (3.0f - y * y * x) * 0.5f);
    }
}

void rootSse(float *values, std::size_t count)
{
    std::size_t i = 0;
#if defined(__SSE2__)
    for (; i + 4 <= count; i += 4) {
        _mm_storeu_ps(values + i, _mm_sqrt_ps(_mm_loadu_ps(values + i)));
    }
#endif
    for (; i < count; ++i) {
        values[i] = __builtin_sqrtf(values[i]);
    }
}

void normalsOf(unsigned char *to, BumpRow const &from, int mode, std::size_t count)
{
    std::int32_t const *const nx = from.nx;
    std::int32_t const *const ny = from.ny;
    float const *const length = from.length;
    auto const whole = [](float value) {
        return static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
    };
    constexpr std::size_t part = 64;
    for (std::size_t at = 0; at < count; at += part) {
        std::uint32_t pixels[part];
        std::size_t const here = count - at < part ? count - at : part;
        for (std::size_t i = 0; i < here; ++i) {
            float const l = 1 / length[at + i];
            float const x = static_cast<float>(nx[at + i]) / 255 * l;
            float const y = static_cast<float>(ny[at + i]) / 255 * l;
            pixels[i] = mode == 0 ? (whole((x + 1) * 127.5f) & 255) | (whole((y + 1) * 127.5f) & 255) << 8 |
                                        (whole((l + 1) * 127.5f) & 255) << 16
                                  : (whole(x * 127) & 255) | (whole(y * 127) & 255) << 8;
        }
        std::size_t i = 0;
        for (; i + lanes <= here; i += lanes) {
            storeTriples(to + 3 * (at + i), loadAs<Lanes>(pixels + i));
        }
        for (; i < here; ++i) {
            std::memcpy(to + 3 * (at + i), &pixels[i], 3);
        }
    }
}

} // namespace

} // namespace Qel
