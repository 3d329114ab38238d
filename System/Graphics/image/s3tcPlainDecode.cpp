#include "System/Graphics/image/s3tcPlain.h"

namespace Qel::s3tcPlain {

namespace {

std::uint64_t loadBlock(unsigned char const *from)
{
    std::uint64_t block;
    std::memcpy(&block, from, sizeof block);
    return block;
}

unsigned int expand(std::uint64_t color)
{
    unsigned int const red = color >> 11 & 31;
    unsigned int const green = color >> 5 & 63;
    unsigned int const blue = color & 31;
    return red * 255 / 31 << 16 | green * 255 / 63 << 8 | blue * 255 / 31;
}

// Each colour channel of two expanded colours through a function.
template <class Mix>
unsigned int mix(unsigned int c0, unsigned int c1, Mix channel)
{
    unsigned int result = 0;
    for (unsigned int shift = 0; shift < 24; shift += 8) {
        result |= channel(c0 >> shift & 255, c1 >> shift & 255) << shift;
    }
    return result;
}

// The four colours of a block.
std::array<unsigned int, 4> colorsOf(std::uint64_t block, unsigned int opaque, unsigned int fourth)
{
    unsigned int const c0 = expand(block);
    unsigned int const c1 = expand(block >> 16);
    if (c0 > c1) {
        return {c0 | opaque, c1 | opaque,
                mix(c0, c1, [](unsigned int a, unsigned int b) { return (2 * a + b) / 3; }) | opaque,
                mix(c0, c1, [](unsigned int a, unsigned int b) { return (a + 2 * b) / 3; }) | opaque};
    }
    return {c0 | opaque, c1 | opaque,
            mix(c0, c1, [](unsigned int a, unsigned int b) { return (a + b) >> 1; }) | opaque, fourth};
}

template <class AlphaOf>
void decodeBlock(unsigned int *dest, std::size_t width, unsigned char const *src, unsigned int opaque,
                 unsigned int fourth, AlphaOf alphaOf)
{
    std::uint64_t const block = loadBlock(src);
    auto const colors = colorsOf(block, opaque, fourth);
    for (unsigned int i = 0; i < blockPixels; ++i) {
        dest[i / blockSide * width + i % blockSide] = colors[block >> (32 + 2 * i) & 3] | alphaOf(i);
    }
}

// Where the alpha comes from elsewhere, the fourth colour of a block is not black.
constexpr unsigned int fourthWithAlpha = 0x0000FFFF;

} // namespace

void decode1(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks)
{
    for (; blocks != 0; --blocks, dest += blockSide, src += 8) {
        decodeBlock(dest, width, src, 0xFF000000, 0, [](unsigned int) { return 0u; });
    }
}

void decode2or3(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks)
{
    for (; blocks != 0; --blocks, dest += blockSide, src += 16) {
        std::uint64_t const alpha = loadBlock(src);
        decodeBlock(dest, width, src + 8, 0, fourthWithAlpha, [alpha](unsigned int i) {
            return static_cast<unsigned int>(alpha >> 4 * i & 15) * 255 / 15 << 24;
        });
    }
}

void decode4or5(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks)
{
    for (; blocks != 0; --blocks, dest += blockSide, src += 16) {
        std::uint64_t const alpha = loadBlock(src);
        auto const points = alphaPoints(alpha & 255, alpha >> 8 & 255);
        decodeBlock(dest, width, src + 8, 0, fourthWithAlpha,
                    [&](unsigned int i) { return points[alpha >> (16 + 3 * i) & 7] << 24; });
    }
}

} // namespace Qel::s3tcPlain
