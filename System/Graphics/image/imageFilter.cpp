#include "System/Graphics/image/image.h"

#include "System/Graphics/image/kernels/imageKernels.h"
#include "System/math/math.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace Qel {

namespace {

using Kernel = short[5][5];

constexpr Kernel kernels[] = {
    {{0, 1, 2, 1, 0}, {1, 3, 10, 3, 1}, {2, 10, 90, 10, 2}, {1, 3, 10, 3, 1}, {0, 1, 2, 1, 0}},
    {{0, 0, 0, 0, 0}, {0, 1, 3, 1, 0}, {0, 3, 9, 3, 0}, {0, 1, 3, 1, 0}, {0, 0, 0, 0, 0}},
    {{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}},
    {{0, 0, 0, 0, 0}, {0, -1, -3, -1, 0}, {0, -3, 41, -3, 0}, {0, -1, -3, -1, 0}, {0, 0, 0, 0, 0}},
    {{-1, -1, -1, -1, -1},
     {-1, -1, -1, -1, -1},
     {-1, -1, 49, -1, -1},
     {-1, -1, -1, -1, -1},
     {-1, -1, -1, -1, -1}},
    {{0, 0, 0, 0, 0}, {0, 1, -2, 1, 0}, {0, -2, 5, -2, 0}, {0, 1, -2, 1, 0}, {0, 0, 0, 0, 0}},
    {{1, 0, 0, 0, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 0, 0, 0, 1}},
    {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {1, 2, 3, 2, 1}, {0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}},
    {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {0, 0, 1, 0, 0}, {0, 1, 1, 1, 0}, {0, 0, 0, 0, 0}},
};

constexpr unsigned int imageContext = 0x228FC766; // "Default resource data"

bool isByte(unsigned int mask, unsigned int shift, unsigned int numBits)
{
    return mask == 0 || (numBits <= 8 && mask >> shift == (1u << numBits) - 1);
}

// Do all channels come out as bytes, so that A8R8G8B8 can stand for the format? Masks of one's own may be
// wider, or have gaps.
bool hasByteChannels(cPixelFormat const &format)
{
    return isByte(format.getRedMask(), format.getRedShift(), format.getRedNumBits()) &&
           isByte(format.getGreenMask(), format.getGreenShift(), format.getGreenNumBits()) &&
           isByte(format.getBlueMask(), format.getBlueShift(), format.getBlueNumBits()) &&
           isByte(format.getAlphaMask(), format.getAlphaShift(), format.getAlphaNumBits());
}

constexpr unsigned int wideBytes = 4; // of a pixel in A8R8G8B8

// Whole pixels of one row, to A8R8G8B8 and back.
void widen(cPixelFormat const &format, unsigned char const *row, void *wide, unsigned int pixels)
{
    cPixelFormat::convertStream(A8R8G8B8, static_cast<unsigned char *>(wide), wideBytes * pixels, format, row,
                                format.getBytePerPixel() * pixels);
}

void narrow(cPixelFormat const &format, void const *wide, unsigned char *row, unsigned int pixels)
{
    cPixelFormat::convertStream(format, row, format.getBytePerPixel() * pixels, A8R8G8B8,
                                static_cast<unsigned char const *>(wide), wideBytes * pixels);
}

// By the root that the program has set: its result counts, not the true one.
void takeRoots(float *values, std::size_t count)
{
    if (cMath::sqrt == cMath::sqrt_sse) {
        imageKernels->rootSse(values, count);
    } else if (cMath::sqrt == cMath::sqrt_base && cMath::rsqrt == cMath::rsqrt_base) {
        imageKernels->rootBase(values, count);
    } else {
        std::transform(values, values + count, values, cMath::sqrt);
    }
}

// Room for arrays that begin on 64 bytes, all zero.
class Rows {
public:
    bool alloc(std::size_t rowBytes, unsigned int count)
    {
        m_stride = (rowBytes + 63) / 64 * 64;
        if (!m_block.alloc(static_cast<unsigned int>(m_stride * count), imageContext)) {
            return false;
        }
        std::memset(m_block.data(), 0, m_block.size());
        return true;
    }

    template <class Value>
    Value *row(unsigned int i)
    {
        return reinterpret_cast<Value *>(static_cast<unsigned char *>(m_block.data()) + m_stride * i);
    }

private:
    PoolBlk m_block;
    std::size_t m_stride = 0;
};

} // namespace

bool cImage::bumpmap(cImage &target, int mode) const
{
    if (m_format.getFormat() == PAL8 || mode < 0 || mode > 1 || data == nullptr || &target == this ||
        target.setCanvas(R8G8B8, width, height, nullptr) == 0) {
        return false;
    }
    enum { WIDE, ABOVE, MIDDLE, BELOW, NX, NY, LENGTH, numRows };
    Rows rows;
    if (!rows.alloc(wideBytes * (width + 2u), numRows)) {
        return false;
    }
    BumpRow const work = {rows.row<std::int32_t>(NX), rows.row<std::int32_t>(NY), rows.row<float>(LENGTH)};
    std::int16_t *heights[] = {rows.row<std::int16_t>(ABOVE), rows.row<std::int16_t>(MIDDLE),
                               rows.row<std::int16_t>(BELOW)};
    bool const isWide = hasByteChannels(m_format);
    // A row's heights, with the last one before the first and the first one behind the last.
    auto const read = [&](std::int16_t *to, unsigned int y) {
        if (isWide) {
            std::uint32_t *const wide = rows.row<std::uint32_t>(WIDE);
            widen(m_format, pixelAt(0, y), wide, width);
            for (unsigned int x = 0; x < width; ++x) {
                to[x + 1] = static_cast<std::int16_t>(wide[x] >> 16 & 255);
            }
        } else {
            for (unsigned int x = 0; x < width; ++x) {
                to[x + 1] = static_cast<std::int16_t>(m_format.getRedBits(getPixel(x, y)) & 255);
            }
        }
        to[0] = to[width];
        to[width + 1] = to[1];
    };
    read(heights[0], height - 1u);
    read(heights[1], 0);
    for (unsigned int y = 0; y < height; ++y) {
        read(heights[2], (y + 1) % height);
        imageKernels->slopes(work, heights[0], heights[1], heights[2], width);
        takeRoots(work.length, width);
        imageKernels->normals(target.pixelAt(0, y), work, mode, width);
        std::rotate(heights, heights + 1, heights + 3);
    }
    return true;
}

bool cImage::applyFilter(eImageFilter filter)
{
    return filter >= 1 && filter <= std::size(kernels) && applyFilter(kernels[filter - 1]);
}

bool cImage::applyFilter(short const kernel[5][5])
{
    int divisor = 0;
    for (int i = 0; i < 25; ++i) {
        divisor += kernel[i / 5][i % 5];
    }
    if (!hasMasks() || divisor == 0) {
        return false;
    }
    return hasByteChannels(m_format) ? filterBytes(kernel, divisor) : filterPixels(kernel, divisor);
}

// Rows of bytes with two pixels of nothing at each end, the last five of them kept. The last column and row
// count as nothing too.
bool cImage::filterBytes(short const kernel[5][5], int divisor)
{
    constexpr unsigned int reach = 2;
    constexpr unsigned int kept = 2 * reach + 1;
    std::size_t const bytes = std::size_t{wideBytes} * width;
    std::size_t const groups = (bytes + filterGroup - 1) / filterGroup * filterGroup;
    Rows rows;
    if (!rows.alloc(groups + 2 * reach * wideBytes, kept + 1)) {
        return false;
    }
    unsigned char *const out = rows.row<unsigned char>(kept);
    auto const read = [&](unsigned int y) {
        if (y + 1 < height && width != 0) {
            unsigned char *const row = rows.row<unsigned char>(y % kept) + reach * wideBytes;
            widen(m_format, pixelAt(0, y), row, width);
            std::memset(row + bytes - wideBytes, 0, wideBytes);
        }
    };
    for (unsigned int y = 0; y < reach; ++y) {
        read(y);
    }
    for (int y = 0; y < height; ++y) {
        read(static_cast<unsigned int>(y) + reach);
        FilterTap taps[25];
        unsigned int numTaps = 0;
        for (int dy = std::max(-2, -y); dy <= std::min(2, height - 2 - y); ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                if (kernel[dy + 2][dx + 2] != 0) {
                    taps[numTaps++] = {rows.row<unsigned char>(static_cast<unsigned int>(y + dy) % kept) +
                                           (dx + 2) * static_cast<int>(wideBytes),
                                       kernel[dy + 2][dx + 2]};
                }
            }
        }
        imageKernels->filter(out, taps, numTaps, divisor, bytes);
        narrow(m_format, out, pixelAt(0, static_cast<unsigned int>(y)), width);
    }
    return true;
}

// Channels of one's own may be wider than a byte, before they are cut to one.
bool cImage::filterPixels(short const kernel[5][5], int divisor)
{
    cImage const source(*this);
    if (source.data == nullptr) {
        return false;
    }
    auto const channel = [divisor](std::uint32_t sum) {
        std::int64_t const mean = std::int64_t{static_cast<std::int32_t>(sum)} / divisor;
        return static_cast<unsigned int>(std::clamp<std::int64_t>(mean, 0, 255));
    };
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint32_t red = 0; // sums wrap: a channel of one's own may be as wide as 32 bits
            std::uint32_t green = 0;
            std::uint32_t blue = 0;
            std::uint32_t alpha = 0;
            for (int dy = -2; dy <= 2; ++dy) {
                for (int dx = -2; dx <= 2; ++dx) {
                    auto const weight = static_cast<std::uint32_t>(kernel[dy + 2][dx + 2]);
                    if (weight == 0 || y + dy < 0 || y + dy > height - 2 || x + dx < 0 ||
                        x + dx > width - 2) {
                        continue;
                    }
                    unsigned int const pixel =
                        source.getPixel(static_cast<unsigned int>(x + dx), static_cast<unsigned int>(y + dy));
                    red += weight * m_format.getRedBits(pixel);
                    green += weight * m_format.getGreenBits(pixel);
                    blue += weight * m_format.getBlueBits(pixel);
                    alpha += weight * m_format.getAlphaBits(pixel);
                }
            }
            setPixel(static_cast<unsigned int>(x), static_cast<unsigned int>(y),
                     m_format.buildPixel(channel(red), channel(green), channel(blue), channel(alpha)));
        }
    }
    return true;
}

bool cImage::applyAction(eImageCommand command)
{
    if (command != IMAGECOMMAND_GRAYSCALE || !hasMasks()) {
        return false;
    }
    if (hasByteChannels(m_format)) {
        constexpr unsigned int part = 1024;
        std::uint32_t wide[part];
        // Rows without gaps are one.
        unsigned int const rows = pitch == width ? height : 1;
        for (unsigned int y = 0; y < height; y += rows) {
            unsigned char *pixels = pixelAt(0, y);
            for (unsigned int left = width * rows, count = 0; left != 0; left -= count) {
                count = std::min(part, left);
                widen(m_format, pixels, wide, count);
                imageKernels->gray(wide, count);
                narrow(m_format, wide, pixels, count);
                pixels += std::size_t{count} * getBytesPerPixel();
            }
        }
        return true;
    }
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x) {
            unsigned int const pixel = getPixel(x, y);
            unsigned int const gray =
                (m_format.getRedBits(pixel) + m_format.getGreenBits(pixel) + m_format.getBlueBits(pixel)) / 3;
            setPixel(x, y, m_format.buildPixel(gray, gray, gray, m_format.getAlphaBits(pixel)));
        }
    }
    return true;
}

} // namespace Qel
