#pragma once

#include "System/Graphics/image/kernels/pixelLanes.h"

namespace Qel {

namespace {

#if defined(__AVX512VBMI__)

// Where each byte of a pixel comes from, if all its bits come from one channel.
struct ByteRoute {
    int from[4] = {}; // the place in the source pixel of what becomes the byte's lowest bit; may be negative
    bool isWhole = true;

    [[gnu::always_inline]] ByteRoute(PixelRoute const &route, unsigned int dstBytes)
    {
        for (unsigned int byte = 0; byte < dstBytes; ++byte) {
            unsigned int sources = 0;
            for (unsigned int i = 0; i < route.terms; ++i) {
                std::uint32_t const kept = route.keep[i] & 0xFFu << (8 * byte);
                if (kept != 0) {
                    // A bit that a rotation brings from the other end has moved down.
                    int const lowest = __builtin_ctz(kept);
                    int const rotate = static_cast<int>(route.rotate[i]);
                    from[byte] = static_cast<int>(8 * byte) - (lowest >= rotate ? rotate : rotate - 32);
                    ++sources;
                }
            }
            isWhole = isWhole && sources <= 1;
        }
    }
};

template <unsigned int bytes>
void storeFour(unsigned char *to, __m512i const (&packed)[group])
{
    for (std::size_t i = 0; i < group; ++i) {
        unsigned char *const place = to + i * lanes * bytes;
        if (bytes == 3 && i == group - 1) {
            _mm512_mask_storeu_epi8(place, threeQuarters, packed[i]);
        } else {
            _mm512_storeu_si512(place, packed[i]); // the next one covers what is too much
        }
    }
}

// Bytes of three or four to a pixel: one permutation does it.
// @return pixels done, in whole groups
template <unsigned int dstBytes, unsigned int srcBytes>
std::size_t permuteBytes(PixelRoute const &route, ByteRoute const &bytes, unsigned char *dst,
                         unsigned char const *src, std::size_t pixels)
{
    std::uint32_t kept = 0;
    for (unsigned int i = 0; i < route.terms; ++i) {
        kept |= route.keep[i];
    }
    alignas(64) unsigned char places[64];
    alignas(64) unsigned char keep[64];
    alignas(64) unsigned char always[64];
    for (unsigned int i = 0; i < 64; ++i) {
        unsigned int const byte = i % dstBytes;
        unsigned int const place = static_cast<unsigned int>(bytes.from[byte]) / 8;
        places[i] = static_cast<unsigned char>(i / dstBytes * srcBytes + place);
        keep[i] = static_cast<unsigned char>(place < srcBytes ? kept >> (8 * byte) : 0);
        always[i] = static_cast<unsigned char>(route.always >> (8 * byte));
    }
    __m512i const order = _mm512_load_si512(places);
    __m512i const mask = _mm512_load_si512(keep);
    __m512i const ones = _mm512_load_si512(always);
    std::size_t done = 0;
    for (; done + group * lanes <= pixels; done += group * lanes) {
        __m512i vectors[group];
        for (std::size_t i = 0; i < group; ++i) {
            unsigned char const *const from = src + (done + i * lanes) * srcBytes;
            vectors[i] = srcBytes == 3 && i == group - 1 ? _mm512_maskz_loadu_epi8(threeQuarters, from)
                                                         : _mm512_loadu_si512(from);
        }
        for (__m512i &vector : vectors) {
            vector = _mm512_or_si512(_mm512_and_si512(_mm512_permutexvar_epi8(order, vector), mask), ones);
        }
        storeFour<dstBytes>(dst + done * dstBytes, vectors);
    }
    return done;
}

// Words to three or four bytes: any eight bits of a pixel become a byte.
template <unsigned int dstBytes>
std::size_t spreadWords(PixelRoute const &route, ByteRoute const &bytes, unsigned char *dst,
                        unsigned char const *src, std::size_t pixels)
{
    std::uint32_t kept = 0;
    for (unsigned int i = 0; i < route.terms; ++i) {
        kept |= route.keep[i];
    }
    alignas(64) unsigned char places[64];
    for (unsigned int i = 0; i < 64; ++i) {
        int const first = i % 8 < 4 ? 0 : 16; // two pixels to eight bytes
        places[i] = static_cast<unsigned char>((first + bytes.from[i % 4]) & 63);
    }
    __m512i const order = _mm512_load_si512(places);
    __m512i const mask = _mm512_set1_epi32(static_cast<int>(kept));
    __m512i const ones = _mm512_set1_epi32(static_cast<int>(route.always));
    std::size_t done = 0;
    for (; done + group * lanes <= pixels; done += group * lanes) {
        Lanes vectors[group];
        for (std::size_t i = 0; i < group; ++i) {
            __m512i const pairs = _mm512_cvtepu32_epi64(loadAs<__m256i>(src + (done + i * lanes) * 2));
            __m512i const spread = _mm512_multishift_epi64_epi8(order, pairs);
            vectors[i] = (Lanes)_mm512_or_si512(_mm512_and_si512(spread, mask), ones);
        }
        storeGroup<dstBytes>(dst + done * dstBytes, vectors);
    }
    return done;
}

template <unsigned int dstBytes, unsigned int srcBytes>
std::size_t convertByBytes(PixelRoute const &route, unsigned char *dst, unsigned char const *src,
                           std::size_t pixels)
{
    constexpr std::size_t worthIt = 256; // below, the tables take longer than they save
    if constexpr (dstBytes == 2) {
        return 0;
    } else {
        if (pixels < worthIt) {
            return 0;
        }
        ByteRoute const bytes(route, dstBytes);
        if constexpr (srcBytes == 2) {
            return bytes.isWhole ? spreadWords<dstBytes>(route, bytes, dst, src, pixels) : 0;
        } else {
            bool isAligned = true;
            for (int const from : bytes.from) {
                isAligned = isAligned && from % 8 == 0 && from >= 0;
            }
            return bytes.isWhole && isAligned
                       ? permuteBytes<dstBytes, srcBytes>(route, bytes, dst, src, pixels)
                       : 0;
        }
    }
}

#endif

template <unsigned int terms, unsigned int dstBytes, unsigned int srcBytes>
void convertBy(PixelRoute const &route, unsigned char *dst, unsigned char const *src, std::size_t pixels)
{
    PixelRoute const fixed = route; // in registers: what is written might be it, for all the compiler knows
    Lanes keep[terms];
    for (unsigned int i = 0; i < terms; ++i) {
        keep[i] = all(fixed.keep[i]);
    }
    Lanes const always = all(fixed.always);
    auto const apply = [&](Lanes from) {
        Lanes result = always;
        for (unsigned int i = 0; i < terms; ++i) {
            result |= rotated(from, fixed.rotate[i]) & keep[i];
        }
        return result;
    };
    auto const one = [&](std::size_t at) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, src + at * srcBytes, srcBytes);
        pixel = fixed.apply(pixel);
        std::memcpy(dst + at * dstBytes, &pixel, dstBytes);
    };
    std::size_t done = 0;
    // Stores that cross a line of the cache cost twice.
    if (dstBytes != 3 && pixels > 16 * lanes) {
        constexpr std::uintptr_t vector = lanes * dstBytes;
        for (; done < lanes && reinterpret_cast<std::uintptr_t>(dst + done * dstBytes) % vector != 0;
             ++done) {
            one(done);
        }
    }
#if defined(__AVX512VBMI__)
    done += convertByBytes<dstBytes, srcBytes>(fixed, dst + done * dstBytes, src + done * srcBytes,
                                               pixels - done);
#endif
    // Reading three bytes a pixel may touch the next two pixels.
    constexpr std::size_t slack = srcBytes == 3 ? 2 : 0;
    for (; done + group * lanes + slack <= pixels; done += group * lanes) {
        Lanes vectors[group];
        loadGroup<srcBytes>(vectors, src + done * srcBytes);
        for (Lanes &vector : vectors) {
            vector = apply(vector);
        }
        storeGroup<dstBytes>(dst + done * dstBytes, vectors);
    }
    for (; done + lanes + slack <= pixels; done += lanes) {
        storePixels<dstBytes>(dst + done * dstBytes, apply(loadPixels<srcBytes>(src + done * srcBytes)));
    }
    for (; done < pixels; ++done) {
        one(done);
    }
}

template <unsigned int dstBytes, unsigned int srcBytes>
void convertTerms(PixelRoute const &route, unsigned char *dst, unsigned char const *src, std::size_t pixels)
{
    switch (route.terms) {
    case 0: // keeps nothing by its first one
    case 1:
        return convertBy<1, dstBytes, srcBytes>(route, dst, src, pixels);
    case 2:
        return convertBy<2, dstBytes, srcBytes>(route, dst, src, pixels);
    case 3:
        return convertBy<3, dstBytes, srcBytes>(route, dst, src, pixels);
    default:
        return convertBy<4, dstBytes, srcBytes>(route, dst, src, pixels);
    }
}

template <unsigned int dstBytes>
void convertTo(PixelRoute const &route, unsigned char *dst, unsigned char const *src, unsigned int srcBytes,
               std::size_t pixels)
{
    switch (srcBytes) {
    case 2:
        return convertTerms<dstBytes, 2>(route, dst, src, pixels);
    case 3:
        return convertTerms<dstBytes, 3>(route, dst, src, pixels);
    default:
        return convertTerms<dstBytes, 4>(route, dst, src, pixels);
    }
}

void convertPixels(PixelRoute const &route, unsigned char *dst, unsigned int dstBytes,
                   unsigned char const *src, unsigned int srcBytes, std::size_t pixels)
{
    switch (dstBytes) {
    case 2:
        return convertTo<2>(route, dst, src, srcBytes, pixels);
    case 3:
        return convertTo<3>(route, dst, src, srcBytes, pixels);
    default:
        return convertTo<4>(route, dst, src, srcBytes, pixels);
    }
}

} // namespace

} // namespace Qel
