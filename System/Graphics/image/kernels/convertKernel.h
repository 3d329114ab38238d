#pragma once

#include "System/Graphics/image/kernels/pixelLanes.h"

namespace Qel {

namespace {

template <unsigned int terms, unsigned int dstBytes, unsigned int srcBytes>
void convertBy(PixelRoute const &route, unsigned char *dst, unsigned char const *src, std::size_t pixels)
{
    PixelRoute const fixed = route; // in registers: what is written might be it, for all the compiler knows
    Lanes keep[terms];
    for (unsigned int i = 0; i < terms; ++i) {
        keep[i] = all(fixed.keep[i]);
    }
    Lanes const always = all(fixed.always);
    std::size_t done = 0;
    // Reading three bytes a pixel may touch the next two pixels.
    for (std::size_t const slack = srcBytes == 3 ? 2 : 0; done + lanes + slack <= pixels; done += lanes) {
        Lanes const from = loadPixels<srcBytes>(src + done * srcBytes);
        Lanes result = always;
        for (unsigned int i = 0; i < terms; ++i) {
            result |= rotated(from, fixed.rotate[i]) & keep[i];
        }
        storePixels<dstBytes>(dst + done * dstBytes, result);
    }
    for (; done < pixels; ++done) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, src + done * srcBytes, srcBytes);
        pixel = fixed.apply(pixel);
        std::memcpy(dst + done * dstBytes, &pixel, dstBytes);
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
