#include "System/Graphics/image/s3tcPlain.h"

#include "System/Graphics/image/s3tcKernels.h"

namespace Qel {

namespace {

using s3tcPlain::Block;
using s3tcPlain::blockPixels;
using s3tcPlain::blockSide;
using s3tcPlain::Pixels;

Pixels pixelsAt(unsigned char const *src, std::size_t pitch)
{
    Pixels pixels;
    for (unsigned int row = 0; row < blockSide; ++row) {
        std::memcpy(pixels.data() + std::size_t{row} * blockSide, src + pitch * row, 16);
    }
    return pixels;
}

Block interpolatedAlpha(Pixels const &pixels)
{
    std::array<unsigned char, blockPixels> alpha;
    for (unsigned int i = 0; i < blockPixels; ++i) {
        alpha[i] = static_cast<unsigned char>(pixels[i] >> 24);
    }
    return s3tcPlain::findalpha4x4(alpha);
}

template <Block (*coder)(Pixels const &)>
std::uint32_t encode(unsigned char *dest, std::size_t stride, unsigned char const *src, std::size_t pitch,
                     std::size_t blocks)
{
    std::uint32_t total = 0;
    for (; blocks != 0; --blocks, dest += stride, src += 16) {
        Block const block = coder(pixelsAt(src, pitch));
        std::memcpy(dest, &block.bits, sizeof block.bits);
        total += block.error;
    }
    return total;
}

} // namespace

S3tcColorKernels const s3tcColorsPlain = {encode<s3tcPlain::findcolor4x4>, encode<s3tcPlain::findcolor4x4a>};

S3tcKernels const s3tcKernelsPlain = {encode<s3tcPlain::mapAlpha>, encode<interpolatedAlpha>,
                                      s3tcPlain::decode1, s3tcPlain::decode2or3, s3tcPlain::decode4or5};

} // namespace Qel
