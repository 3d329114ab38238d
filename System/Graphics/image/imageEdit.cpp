#include "System/Graphics/image/image.h"
#include "System/Graphics/image/kernels/imageKernels.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace Qel {

bool cImage::mirrorVertical()
{
    if (data == nullptr) {
        return false;
    }
    std::size_t const rowSize = std::size_t{getBytesPerPixel()} * width;
    unsigned char part[4096];
    for (unsigned int top = 0, bottom = height; top + 1 < bottom; ++top) {
        --bottom;
        for (std::size_t at = 0; at < rowSize; at += sizeof part) {
            std::size_t const bytes = std::min(sizeof part, rowSize - at);
            std::memcpy(part, pixelAt(0, top) + at, bytes);
            std::memcpy(pixelAt(0, top) + at, pixelAt(0, bottom) + at, bytes);
            std::memcpy(pixelAt(0, bottom) + at, part, bytes);
        }
    }
    return true;
}

bool cImage::mirrorHorizontal()
{
    unsigned int const bytes = getBytesPerPixel();
    if (data == nullptr || bytes == 0 || bytes > 4) {
        return false;
    }
    for (unsigned int y = 0; y < height; ++y) {
        imageKernels->mirror(pixelAt(0, y), bytes, width);
    }
    return true;
}

bool cImage::crop(int x, int y, int w, int h)
{
    // 64 bits: a corner and its size may lie anywhere in theirs.
    std::int64_t const left = std::min(std::int64_t{x}, std::int64_t{x} + w);
    std::int64_t const top = std::min(std::int64_t{y}, std::int64_t{y} + h);
    std::int64_t const newWidth = std::max(std::int64_t{w}, -std::int64_t{w});
    std::int64_t const newHeight = std::max(std::int64_t{h}, -std::int64_t{h});
    if (data == nullptr || newWidth == 0 || newHeight == 0 || left < 0 || top < 0 ||
        left + newWidth > width || top + newHeight > height) {
        return false;
    }
    std::size_t const rowSize = static_cast<std::size_t>(newWidth) * getBytesPerPixel();
    auto *const cut =
        static_cast<unsigned char *>(poolheap_malloc(rowSize * static_cast<std::size_t>(newHeight)));
    if (cut == nullptr) {
        return false;
    }
    for (std::int64_t row = 0; row < newHeight; ++row) {
        std::memcpy(cut + static_cast<std::size_t>(row) * rowSize,
                    pixelAt(static_cast<unsigned int>(left), static_cast<unsigned int>(top + row)), rowSize);
    }
    poolheap_free(data);
    data = cut;
    width = pitch = static_cast<unsigned short>(newWidth);
    height = static_cast<unsigned short>(newHeight);
    return true;
}

bool cImage::cropAlphaBox(int &x, int &y, int &w, int &h) const
{
    x = y = w = h = 0;
    if (m_format.getAlphaNumBits() == 0 || data == nullptr || width == 0 || height == 0) {
        return false;
    }
    int left = width - 1;
    int top = height - 1;
    int right = 0;
    int bottom = 0;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            if ((getPixel(static_cast<unsigned int>(column), static_cast<unsigned int>(row)) &
                 m_format.getAlphaMask()) != 0) {
                left = std::min(left, column);
                right = std::max(right, column);
                top = std::min(top, row);
                bottom = std::max(bottom, row);
            }
        }
    }
    // Without any such pixel the ends lie the other way round.
    x = std::min(left, right);
    y = std::min(top, bottom);
    w = std::max(left, right) - x;
    h = std::max(top, bottom) - y;
    return true;
}

bool cImage::hasAlpha() const
{
    if (m_format.getAlphaNumBits() == 0) {
        return false;
    }
    for (unsigned int y = 0; y < height; ++y) {
        for (unsigned int x = 0; x < width; ++x) {
            if ((getPixel(x, y) & m_format.getAlphaMask()) != 0) {
                return true;
            }
        }
    }
    return false;
}

bool cImage::copyPart(cImage const &source, unsigned short srcX, unsigned short srcY, unsigned short w,
                      unsigned short h, unsigned short dstX, unsigned short dstY)
{
    if (width == 0 || height == 0 || m_format != source.m_format || data == nullptr ||
        source.data == nullptr || srcX > source.width || srcY > source.height || dstX > width ||
        dstY > height) {
        return false;
    }
    unsigned int const columns =
        std::min({unsigned{w}, unsigned{source.width} - srcX, unsigned{width} - dstX});
    unsigned int const rows =
        std::min({unsigned{h}, unsigned{source.height} - srcY, unsigned{height} - dstY});
    // Within one image a row may be read after another has been written over it: from the end, then.
    bool const fromBelow = this == &source && dstY > srcY;
    for (unsigned int i = 0; i < rows; ++i) {
        unsigned int const row = fromBelow ? rows - 1 - i : i;
        std::memmove(pixelAt(dstX, dstY + row), source.pixelAt(srcX, srcY + row),
                     std::size_t{columns} * getBytesPerPixel());
    }
    return true;
}

} // namespace Qel
