#pragma once

#include <cstddef>
#include <cstdint>

namespace Qel {

/// A conversion between two layouts of up to 32 bits.
///
/// Packing and unpacking move each bit of a channel by one and the same number of places, or drop it. So a
/// pixel is the OR of its own rotations, each cut to the bits that arrive by it, and of what is always set.
struct PixelRoute {
    unsigned int terms = 0; ///< rotations in use, 0 to 4
    std::uint32_t rotate[4] = {};
    std::uint32_t keep[4] = {};
    std::uint32_t always = 0; ///< alpha that the source does not have

    // One copy in each level's source, never one for all.
    [[gnu::always_inline]] std::uint32_t apply(std::uint32_t pixel) const
    {
        std::uint32_t result = always;
        for (unsigned int i = 0; i < terms; ++i) {
            result |= (pixel << rotate[i] | pixel >> (-rotate[i] & 31)) & keep[i];
        }
        return result;
    }
};

/// One neighbour in a filter: where its row begins for the pixel in the first column, and what it counts.
struct FilterTap {
    unsigned char const *row;
    std::int32_t weight;
};

/// Rows of a bump map's work: the slopes of a pixel, in and out.
struct BumpRow {
    std::int32_t *nx;
    std::int32_t *ny;
    float *length; ///< in: 1 + nx nx + ny ny as it stands; out of the caller's root: its root
};

/// The loops over pixels, in one form for each processor level; see Support/OS/processorLevel.h.
struct ImageKernels {
    /// Converts pixels of 2, 3 or 4 bytes. The two may be the same where pixels get no wider.
    void (*convert)(PixelRoute const &route, unsigned char *dst, unsigned int dstBytes,
                    unsigned char const *src, unsigned int srcBytes, std::size_t pixels);

    /// Turns a row of pixels of 1 to 4 bytes around.
    void (*mirror)(unsigned char *row, unsigned int bytes, std::size_t pixels);

    /// A8R8G8B8: the mean of the three colours in place of each.
    void (*gray)(std::uint32_t *pixels, std::size_t count);

    /// The weighted sums of bytes, divided and cut to 0 .. 255. Reads and writes whole groups of filterGroup.
    void (*filter)(unsigned char *out, FilterTap const *taps, unsigned int numTaps, std::int32_t divisor,
                   std::size_t bytes);

    /// Slopes from three rows of heights, which have one more at each end.
    void (*slopes)(BumpRow const &to, std::int16_t const *above, std::int16_t const *row,
                   std::int16_t const *below, std::size_t count);

    /// The roots that cMath's own functions give.
    void (*rootBase)(float *values, std::size_t count);
    void (*rootSse)(float *values, std::size_t count);

    /// Normals as bytes, three a pixel.
    void (*normals)(unsigned char *to, BumpRow const &from, int mode, std::size_t count);
};

constexpr std::size_t filterGroup = 256; ///< bytes; more than any level takes at a time

extern ImageKernels const imageKernelsPlain;
extern ImageKernels const imageKernelsSse42;
extern ImageKernels const imageKernelsAvx2;
extern ImageKernels const imageKernelsAvx512;
extern ImageKernels const *imageKernels; ///< those in use

} // namespace Qel
