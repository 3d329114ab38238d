#include "System/Graphics/image/s3tc.h"

#include "Support/OS/processorLevel.h"
#include "System/Graphics/image/s3tcKernels.h"

#include <iterator>

namespace Qel {

namespace {

constexpr unsigned int blockSide = 4;
constexpr std::size_t colorBytes = 8;       // a block of colours, or of alpha
constexpr std::size_t colorAlphaBytes = 16; // alpha first, then colours

S3tcColorKernels const &colorKernels()
{
#if defined(__x86_64__)
    switch (os::processorLevel()) {
    case os::PROCESSOR_AVX512:
        return s3tcColorsAvx512;
    case os::PROCESSOR_AVX2:
        return s3tcColorsAvx2;
    case os::PROCESSOR_SSE42:
        return s3tcColorsSse42;
    default:
        break;
    }
#endif
    return s3tcColorsPlain;
}

S3tcKernels const &kernels()
{
#if defined(__x86_64__)
    if (os::processorLevel() >= os::PROCESSOR_AVX2) {
        return s3tcKernelsAvx2;
    }
    if (os::processorLevel() >= os::PROCESSOR_SSE42) {
        return s3tcKernelsSse42;
    }
#endif
    return s3tcKernelsPlain;
}

/// The blocks that fit into an image as a whole; none if a pointer is null.
struct Blocks {
    std::size_t columns = 0;
    std::size_t rows = 0;

    Blocks(void const *dest, void const *src, unsigned int width, unsigned int height)
    {
        if (dest != nullptr && src != nullptr) {
            columns = width / blockSide;
            rows = height / blockSide;
        }
    }
    bool isEmpty() const { return columns == 0 || rows == 0; }
};

/// Codes the whole image by one part of the coder.
/// @param dest  where that part of the first block goes
std::uint32_t encode(S3tcEncode coder, void *dest, std::size_t stride, void const *src, std::size_t pitch,
                     Blocks const &blocks)
{
    std::uint32_t error = 0;
    if (blocks.isEmpty()) {
        return error;
    }
    auto *to = static_cast<unsigned char *>(dest);
    auto const *from = static_cast<unsigned char const *>(src);
    for (std::size_t y = 0; y < blocks.rows; ++y) {
        error += coder(to + y * blocks.columns * stride, stride, from + y * blockSide * pitch, pitch,
                       blocks.columns);
    }
    return error;
}

void *colorsOf(void *dest)
{
    return static_cast<unsigned char *>(dest) + colorBytes;
}

void decode(S3tcDecode decoder, unsigned int *dest, unsigned short const *src, std::size_t stride,
            unsigned int width, unsigned int height)
{
    Blocks const blocks(dest, src, width, height);
    if (blocks.isEmpty()) {
        return;
    }
    auto const *from = reinterpret_cast<unsigned char const *>(src);
    for (std::size_t y = 0; y < blocks.rows; ++y) {
        decoder(dest + y * blockSide * width, width, from + y * blocks.columns * stride, blocks.columns);
    }
}

bool isWholeBlocks(unsigned int pitch, unsigned int width, unsigned int height)
{
    return (pitch | width | height) % blockSide == 0;
}

} // namespace

cS3TC::cS3TC() = default;

char const *cS3TC::getS3TC_name(eS3TC format) const
{
    static constexpr char const *names[] = {"S3TC RGB555 (DXT1)", "S3TC RGBA5551 (DXT1 with alpha)",
                                            "S3TC RGBA8888, mapped alpha (DXT2/3)",
                                            "S3TC RGBA8888, interpolated alpha (DXT4/5)"};
    return format < std::size(names) ? names[format] : "cS3TC::getS3TC_name() Unknown S3TC-format";
}

unsigned int cS3TC::to_S3TC1(void *dest, void const *src, unsigned int pitch, unsigned int width,
                             unsigned int height)
{
    if (!isWholeBlocks(pitch, width, height)) {
        return 0;
    }
    return encode(colorKernels().colors, dest, colorBytes, src, pitch, Blocks(dest, src, width, height));
}

unsigned int cS3TC::to_S3TC1a(void *dest, void const *src, unsigned int pitch, unsigned int width,
                              unsigned int height)
{
    if (!isWholeBlocks(pitch, width, height)) {
        return 0;
    }
    return encode(colorKernels().colorsWithHoles, dest, colorBytes, src, pitch,
                  Blocks(dest, src, width, height));
}

unsigned int cS3TC::to_S3TC2or3(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                unsigned int height)
{
    Blocks const blocks(dest, src, width, height);
    if (blocks.isEmpty()) {
        return 0;
    }
    std::uint32_t const alpha = encode(kernels().mappedAlpha, dest, colorAlphaBytes, src, pitch, blocks);
    return alpha + encode(colorKernels().colors, colorsOf(dest), colorAlphaBytes, src, pitch, blocks);
}

unsigned int cS3TC::to_S3TC4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                unsigned int height)
{
    Blocks const blocks(dest, src, width, height);
    if (blocks.isEmpty()) {
        return 0;
    }
    std::uint32_t const alpha =
        encode(kernels().interpolatedAlpha, dest, colorAlphaBytes, src, pitch, blocks);
    return alpha + encode(colorKernels().colors, colorsOf(dest), colorAlphaBytes, src, pitch, blocks);
}

unsigned int cS3TC::to_S3TC2or3vs4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                      unsigned int height, unsigned int *format)
{
    Blocks const blocks(dest, src, width, height);
    if (blocks.isEmpty() || format == nullptr) {
        return 0;
    }
    std::uint32_t const colors =
        encode(colorKernels().colors, colorsOf(dest), colorAlphaBytes, src, pitch, blocks);
    std::uint32_t const mapped = encode(kernels().mappedAlpha, dest, colorAlphaBytes, src, pitch, blocks);
    *format = 2;
    if (mapped == 0) {
        return colors;
    }
    std::uint32_t const interpolated =
        encode(kernels().interpolatedAlpha, dest, colorAlphaBytes, src, pitch, blocks);
    if (interpolated > mapped) {
        return encode(kernels().mappedAlpha, dest, colorAlphaBytes, src, pitch, blocks) + colors;
    }
    *format = 4;
    return interpolated + colors;
}

void cS3TC::from_S3TC1(unsigned int *dest, unsigned short const *src, unsigned int width, unsigned int height)
{
    decode(kernels().decode1, dest, src, colorBytes, width, height);
}

void cS3TC::from_S3TC2or3(unsigned int *dest, unsigned short const *src, unsigned int width,
                          unsigned int height)
{
    decode(kernels().decode2or3, dest, src, colorAlphaBytes, width, height);
}

void cS3TC::from_S3TC4or5(unsigned int *dest, unsigned short const *src, unsigned int width,
                          unsigned int height)
{
    decode(kernels().decode4or5, dest, src, colorAlphaBytes, width, height);
}

} // namespace Qel
