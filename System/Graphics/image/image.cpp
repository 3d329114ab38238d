#include "System/Graphics/image/image.h"

#include "Support/PoolHeap/poolHeap.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace Qel {

cImage::~cImage()
{
    poolheap_free(data);
}

cImage::cImage(cImage const &other)
{
    *this = other;
}

cImage &cImage::operator=(cImage const &other)
{
    if (this == &other) {
        return *this;
    }
    if (other.data == nullptr) {
        poolheap_free(data);
        data = nullptr;
        m_format = other.m_format;
        palette = other.palette;
        width = other.width;
        height = other.height;
        pitch = other.pitch;
        return *this;
    }
    unsigned int const size =
        setCanvas(other.m_format, other.width, other.height, other.pitch, &other.palette);
    if (size != 0) {
        std::memcpy(data, other.data, size);
    } else {
        palette = other.palette;
    }
    return *this;
}

float *cImage::getDataFP() const
{
    return m_format.getFormat() == FLOAT ? reinterpret_cast<float *>(data) : nullptr;
}

bool cImage::allocdata(unsigned int size)
{
    poolheap_free(data);
    data = static_cast<unsigned char *>(poolheap_malloc(size));
    if (data == nullptr) {
        return false;
    }
    std::memset(data, 0, size);
    return true;
}

unsigned int cImage::setCanvas(cPixelFormat const &format, unsigned short newWidth, unsigned short newHeight,
                               cPalette const *newPalette)
{
    return setCanvas(format, newWidth, newHeight, newWidth, newPalette);
}

unsigned int cImage::setCanvas(cPixelFormat const &format, unsigned short newWidth, unsigned short newHeight,
                               unsigned short newPitch, cPalette const *newPalette)
{
    cPixelFormat const newFormat = format; // may be the image's own
    std::uint64_t const size = std::uint64_t{newFormat.getBytePerPixel()} * newPitch * newHeight;
    if (newPitch < newWidth || size > maxBytes || !allocdata(static_cast<unsigned int>(size))) {
        poolheap_free(data);
        data = nullptr;
        return 0;
    }
    if (newPalette != nullptr) {
        palette = *newPalette;
    }
    m_format = newFormat;
    width = newWidth;
    height = newHeight;
    pitch = newPitch;
    return static_cast<unsigned int>(size);
}

void cImage::clrCanvas()
{
    if (data != nullptr) {
        std::memset(data, 0, std::size_t{getBytesPerPixel()} * width * height);
    }
}

unsigned char *cImage::pixelAt(unsigned int x, unsigned int y) const
{
    return data + (std::size_t{pitch} * y + x) * getBytesPerPixel();
}

void cImage::setPixel(unsigned int x, unsigned int y, Color color)
{
    if (hasMasks() && x < width && y < height) {
        std::memcpy(pixelAt(x, y), &color.value, std::min(getBytesPerPixel(), 4u));
    }
}

void cImage::setPixelPal(unsigned int x, unsigned int y, int index)
{
    if (data != nullptr && m_format.getFormat() == PAL8 && x < width && y < height) {
        *pixelAt(x, y) = static_cast<unsigned char>(index);
    }
}

unsigned int cImage::getPixel(unsigned int x, unsigned int y) const
{
    unsigned int pixel = 0;
    if (data != nullptr && x < width && y < height) {
        std::memcpy(&pixel, pixelAt(x, y), std::min(getBytesPerPixel(), 4u));
    }
    return pixel;
}

unsigned int cImage::getImage(cPixelFormat const &format, unsigned char *buffer) const
{
    std::size_t const rowSize = std::size_t{format.getBytePerPixel()} * width;
    std::size_t const size = rowSize * height;
    if (size > std::numeric_limits<unsigned int>::max()) {
        return 0;
    }
    if (buffer == nullptr || data == nullptr || size == 0) {
        return static_cast<unsigned int>(size);
    }
    if (getBitsPerPixel() != 8) {
        for (unsigned int y = 0; y < height; ++y) {
            cPixelFormat::convertStream(format, buffer + y * rowSize, static_cast<unsigned int>(rowSize),
                                        m_format, pixelAt(0, y), getBytesPerPixel() * width);
        }
        return static_cast<unsigned int>(size);
    }
    unsigned int colors[cPalette::numEntries];
    for (unsigned short i = 0; i < cPalette::numEntries; ++i) {
        unsigned char red = 0;
        unsigned char green = 0;
        unsigned char blue = 0;
        palette.getEntry(i, red, green, blue);
        bool const isKey = red == 0 && green == 255 && blue == 0;
        colors[i] = format.buildPixel(unsigned{red}, unsigned{green}, unsigned{blue}, isKey ? 0u : 255u);
    }
    unsigned int const bytes = format.getBytePerPixel();
    for (unsigned int y = 0; y < height; ++y) {
        unsigned char const *from = pixelAt(0, y);
        for (unsigned int x = 0; x < width; ++x, buffer += bytes) {
            std::memcpy(buffer, &colors[from[x]], std::min(bytes, 4u));
            std::fill(buffer + std::min(bytes, 4u), buffer + bytes, static_cast<unsigned char>(0));
        }
    }
    return static_cast<unsigned int>(size);
}

unsigned int cImage::setImage(cPixelFormat const &format, cImage const &source)
{
    if (this == &source) {
        cImage const copy(source);
        return copy.data == nullptr ? 0 : setImage(format, copy);
    }
    cPixelFormat const to(format.getFormat());
    cPixelFormat const from(source.m_format.getFormat());
    if (setCanvas(format, source.width, source.height, nullptr) == 0 || source.data == nullptr) {
        return 0;
    }
    // Rows without gaps are one stream: where a layout of one's own is named as another, pixels are taken
    // across the ends of rows.
    unsigned int const rows = source.pitch == width ? height : 1;
    unsigned int const rowSize = getBytesPerPixel() * width;
    for (unsigned int y = 0; y < height; y += rows) {
        cPixelFormat::convertStream(to, pixelAt(0, y), rowSize * rows, from, source.pixelAt(0, y),
                                    source.getBytesPerPixel() * width * rows);
    }
    return static_cast<unsigned int>(width) * height;
}

} // namespace Qel
