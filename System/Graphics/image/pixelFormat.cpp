#include "System/Graphics/image/pixelFormat.h"

#include "System/Graphics/image/kernels/imageKernels.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <iterator>

namespace Qel {

namespace {

struct Layout {
    std::int32_t bits;
    std::uint32_t red, green, blue, alpha;
};

constexpr Layout layouts[] = {
    {16, 0x7C00, 0x03E0, 0x001F, 0},                 // X1R5G5B5
    {16, 0xF800, 0x07E0, 0x001F, 0},                 // R5G6B5
    {24, 0xFF0000, 0x00FF00, 0x0000FF, 0},           // R8G8B8
    {32, 0xFF0000, 0x00FF00, 0x0000FF, 0},           // X8R8G8B8
    {16, 0x7C00, 0x03E0, 0x001F, 0x8000},            // A1R5G5B5
    {16, 0x7800, 0x03C0, 0x001E, 0x8000},            // A1R4G4B4
    {24, 0xFF0000, 0x00FF00, 0x0000FF, 0xFF000000u}, // A8R8G8B8P24
    {32, 0xFF0000, 0x00FF00, 0x0000FF, 0xFF000000u}, // A8R8G8B8
    {16, 0x001F, 0x03E0, 0x7C00, 0},                 // X1B5G5R5
    {16, 0x001F, 0x07E0, 0xF800, 0},                 // B5G6R5
    {24, 0x0000FF, 0x00FF00, 0xFF0000, 0},           // B8G8R8
    {32, 0x0000FF, 0x00FF00, 0xFF0000, 0},           // X8B8G8R8
    {32, 0x0000FF, 0x00FF00, 0xFF0000, 0xFF000000u}, // A8B8G8R8
    {16, 0x001E, 0x03C0, 0x7800, 0x8000},            // A1B4G4R4
    {8, 0, 0, 0, 0},                                 // PAL8
    {24, 0, 0, 0, 0},                                // FLOAT
};

std::uint32_t lowestBit(std::uint32_t mask)
{
    return static_cast<std::uint32_t>(std::countr_zero(mask));
}

std::uint32_t runLength(std::uint32_t mask)
{
    return mask == 0 ? 0 : static_cast<std::uint32_t>(std::countr_one(mask >> lowestBit(mask)));
}

// Shift counts are taken modulo 32 throughout, as the processor does.
struct Channel {
    std::uint32_t mask, shift, numBits;

    std::uint32_t pack(std::uint32_t value) const
    {
        return ((value >> ((8 - numBits) & 31)) << (shift & 31)) & mask;
    }
    std::uint32_t unpack(std::uint32_t pixel) const
    {
        return ((pixel & mask) >> (shift & 31)) << ((8 - numBits) & 31);
    }
};

unsigned int packShare(unsigned int mask, float value)
{
    double const share = static_cast<double>(mask) * value;
    // Beyond 64 bits, and for NaN, there is no number to cut.
    return std::fabs(share) < 0x1p63 ? static_cast<unsigned int>(static_cast<std::int64_t>(share)) & mask : 0;
}

// Up to four bytes of a pixel as a number, the first one lowest.
unsigned int loadPixel(unsigned char const *from, unsigned int bytes)
{
    unsigned int pixel = 0;
    std::memcpy(&pixel, from, std::min(bytes, 4u));
    return pixel;
}

void storePixel(unsigned char *to, unsigned int pixel, unsigned int bytes)
{
    std::memcpy(to, &pixel, std::min(bytes, 4u));
    if (bytes > 4) {
        std::memset(to + 4, 0, bytes - 4);
    }
}

} // namespace

cPixelFormat::cPixelFormat(ePixelFormat newFormat)
{
    if (!setFormat(newFormat)) {
        setFormat(A8R8G8B8);
    }
}

cPixelFormat::cPixelFormat(int bits, unsigned int r, unsigned int g, unsigned int b, unsigned int a)
{
    setFormat(bits, r, g, b, a);
}

bool cPixelFormat::setFormat(ePixelFormat newFormat)
{
    if (newFormat >= std::size(layouts)) {
        return false;
    }
    Layout const &layout = layouts[newFormat];
    setFormat(layout.bits, layout.red, layout.green, layout.blue, layout.alpha);
    format = newFormat;
    return true;
}

void cPixelFormat::setFormat(int bits, unsigned int r, unsigned int g, unsigned int b, unsigned int a)
{
    bitsPerPixel = bits;
    redMask = r;
    greenMask = g;
    blueMask = b;
    alphaMask = a;
    redShift = lowestBit(r);
    greenShift = lowestBit(g);
    blueShift = lowestBit(b);
    alphaShift = lowestBit(a);
    redNumBits = runLength(r);
    greenNumBits = runLength(g);
    blueNumBits = runLength(b);
    alphaNumBits = runLength(a);
}

bool cPixelFormat::operator==(cPixelFormat const &other) const
{
    return bitsPerPixel == other.bitsPerPixel && redMask == other.redMask && greenMask == other.greenMask &&
           blueMask == other.blueMask && alphaMask == other.alphaMask;
}

unsigned int cPixelFormat::buildPixel(float r, float g, float b, float a) const
{
    return packShare(redMask, r) | packShare(greenMask, g) | packShare(blueMask, b) | packShare(alphaMask, a);
}

unsigned int cPixelFormat::buildPixel(unsigned int r, unsigned int g, unsigned int b, unsigned int a) const
{
    return Channel{redMask, redShift, redNumBits}.pack(r) |
           Channel{greenMask, greenShift, greenNumBits}.pack(g) |
           Channel{blueMask, blueShift, blueNumBits}.pack(b) |
           Channel{alphaMask, alphaShift, alphaNumBits}.pack(a);
}

unsigned int cPixelFormat::convertStream(cPixelFormat const &dstFormat, unsigned char *dst,
                                         unsigned int dstSize, cPixelFormat const &srcFormat,
                                         unsigned char const *src, unsigned int srcSize)
{
    unsigned int const dstBytes = dstFormat.getBytePerPixel();
    unsigned int const srcBytes = srcFormat.getBytePerPixel();
    if (dst == nullptr || src == nullptr || dstBytes == 0 || srcBytes == 0) {
        return dstSize;
    }
    PixelRoute route;
    // Bits of a mask that lie beyond the pixel read as 0.
    std::uint32_t const pixelBits = srcBytes >= 4 ? 0xFFFFFFFF : (1u << 8 * srcBytes) - 1;
    auto const add = [&](Channel const &to, Channel const &from) {
        std::uint32_t const keep = to.pack(from.unpack(pixelBits));
        std::uint32_t const rotate = (to.shift - from.shift + to.numBits - from.numBits) & 31;
        unsigned int i = 0;
        while (i < route.terms && route.rotate[i] != rotate) {
            ++i;
        }
        if (keep != 0) {
            route.rotate[i] = rotate;
            route.keep[i] |= keep;
            route.terms = std::max(route.terms, i + 1);
        }
    };
    Channel const alpha{dstFormat.alphaMask, dstFormat.alphaShift, dstFormat.alphaNumBits};
    add({dstFormat.redMask, dstFormat.redShift, dstFormat.redNumBits},
        {srcFormat.redMask, srcFormat.redShift, srcFormat.redNumBits});
    add({dstFormat.greenMask, dstFormat.greenShift, dstFormat.greenNumBits},
        {srcFormat.greenMask, srcFormat.greenShift, srcFormat.greenNumBits});
    add({dstFormat.blueMask, dstFormat.blueShift, dstFormat.blueNumBits},
        {srcFormat.blueMask, srcFormat.blueShift, srcFormat.blueNumBits});
    if (srcFormat.alphaMask != 0) {
        add(alpha, {srcFormat.alphaMask, srcFormat.alphaShift, srcFormat.alphaNumBits});
    } else {
        route.always = alpha.pack(255);
    }
    unsigned int const pixels = std::min(dstSize / dstBytes, srcSize / srcBytes);
    if (dstBytes >= 2 && dstBytes <= 4 && srcBytes >= 2 && srcBytes <= 4) {
        imageKernels->convert(route, dst, dstBytes, src, srcBytes, pixels);
    } else {
        for (std::size_t i = 0; i < pixels; ++i) {
            storePixel(dst + i * dstBytes, route.apply(loadPixel(src + i * srcBytes, srcBytes)), dstBytes);
        }
    }
    return dstSize - pixels * dstBytes;
}

unsigned int cPixelFormat::convertStreamFS(cPixelFormat const &dstFormat, unsigned char *dst,
                                           cPixelFormat const &srcFormat, unsigned char const *src,
                                           unsigned int width, unsigned int height)
{
    unsigned int const dstBytes = dstFormat.getBytePerPixel();
    unsigned int const srcBytes = srcFormat.getBytePerPixel();
    if (dst == nullptr || src == nullptr || dstBytes == 0 || srcBytes == 0) {
        return 0;
    }
    auto const channel = [](unsigned int pixel, unsigned int mask, unsigned int shift, unsigned int numBits) {
        unsigned int const value = (pixel & mask) >> (shift & 31) & 0xFF;
        return std::min(value, 1u << (numBits & 31));
    };
    for (std::uint64_t left = std::uint64_t{width} * height; left != 0; --left) {
        unsigned int const pixel = loadPixel(src, srcBytes);
        unsigned int const red = channel(pixel, srcFormat.redMask, srcFormat.redShift, srcFormat.redNumBits);
        unsigned int const green =
            channel(pixel, srcFormat.greenMask, srcFormat.greenShift, srcFormat.greenNumBits);
        unsigned int const blue =
            channel(pixel, srcFormat.blueMask, srcFormat.blueShift, srcFormat.blueNumBits);
        unsigned int const alpha =
            srcFormat.alphaMask == 0
                ? 255u >> ((8 - dstFormat.alphaNumBits) & 31)
                : channel(pixel, srcFormat.alphaMask, srcFormat.alphaShift, srcFormat.alphaNumBits);
        storePixel(dst,
                   (red << (dstFormat.redShift & 31)) + (green << (dstFormat.greenShift & 31)) +
                       (blue << (dstFormat.blueShift & 31)) + (alpha << (dstFormat.alphaShift & 31)),
                   dstBytes);
        src += srcBytes;
        dst += dstBytes;
    }
    return 1;
}

} // namespace Qel
