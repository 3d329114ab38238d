#pragma once

#include <cstddef>
#include <cstdint>

namespace Qel {

/// Codes the first four pixel rows at @p src, of @p blocks whole blocks.
/// @param dest    the first block; from block to block it is @p stride bytes, of which 8 are written
/// @param pitch   bytes from row to row of the image
/// @return the sum of the blocks' errors
using S3tcEncode = std::uint32_t (*)(unsigned char *dest, std::size_t stride, unsigned char const *src,
                                     std::size_t pitch, std::size_t blocks);

/// Decodes @p blocks blocks to four rows of pixels, @p width pixels apart.
using S3tcDecode = void (*)(unsigned int *dest, std::size_t width, unsigned char const *src,
                            std::size_t blocks);

// The coder of block compression on one processor level. Every level gives the same bytes and errors.

struct S3tcColorKernels {
    S3tcEncode colors;          ///< four colours
    S3tcEncode colorsWithHoles; ///< three colours and transparent black where a block is not opaque
};

struct S3tcKernels {
    S3tcEncode mappedAlpha;       ///< four bits of alpha a pixel
    S3tcEncode interpolatedAlpha; ///< alpha between two values
    S3tcDecode decode1;
    S3tcDecode decode2or3;
    S3tcDecode decode4or5;
};

extern S3tcColorKernels const s3tcColorsPlain;
extern S3tcKernels const s3tcKernelsPlain;
#if defined(__x86_64__)
extern S3tcColorKernels const s3tcColorsSse42;
extern S3tcKernels const s3tcKernelsSse42;
extern S3tcColorKernels const s3tcColorsAvx2;
extern S3tcKernels const s3tcKernelsAvx2;
extern S3tcColorKernels const s3tcColorsAvx512;
#endif

} // namespace Qel
