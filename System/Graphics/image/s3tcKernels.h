#pragma once

#include <cstddef>
#include <cstdint>

namespace Qel {

/// The coder of block compression on one processor level. Every level gives the same bytes and errors.
struct S3tcKernels {
    /// Codes the first four pixel rows at @p src, of @p blocks whole blocks.
    /// @param dest    the first block; from block to block it is @p stride bytes, of which 8 are written
    /// @param pitch   bytes from row to row of the image
    /// @return the sum of the blocks' errors
    using Encode = std::uint32_t (*)(unsigned char *dest, std::size_t stride, unsigned char const *src,
                                     std::size_t pitch, std::size_t blocks);

    /// Decodes @p blocks blocks to four rows of pixels, @p width pixels apart.
    using Decode = void (*)(unsigned int *dest, std::size_t width, unsigned char const *src,
                            std::size_t blocks);

    Encode colors;            ///< four colours
    Encode colorsWithHoles;   ///< three colours and transparent black where a block is not opaque
    Encode mappedAlpha;       ///< four bits of alpha a pixel
    Encode interpolatedAlpha; ///< alpha between two values

    Decode decode1;
    Decode decode2or3;
    Decode decode4or5;
};

extern S3tcKernels const s3tcKernelsPlain;
#if defined(__x86_64__)
extern S3tcKernels const s3tcKernelsSse42;
extern S3tcKernels const s3tcKernelsAvx2;
extern S3tcKernels const s3tcKernelsAvx512;
#endif

} // namespace Qel
