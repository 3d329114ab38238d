#include "System/Graphics/image/io_tga.h"

#include "System/Graphics/image/image.h"
#include "System/Graphics/image/imageSource.h"

#include <algorithm>
#include <cstring>

namespace Qel {

namespace {

constexpr unsigned int longestPacket = 127; // a packet could hold 128; this writer leaves one out
constexpr unsigned int shortestRun = 4;

bool writeAll(cFile &file, void const *bytes, std::uint64_t size)
{
    return size <= cImage::maxBytes && file.write(bytes, static_cast<unsigned int>(size)) == size;
}

bool writeHeader(cFile &file, sHeaderTGA header, cImage const &image)
{
    header.width = image.getWidth();
    header.height = image.getHeight();
    header.bitsPerPixel = static_cast<std::uint8_t>(image.getBitsPerPixel());
    return writeAll(file, &header, sizeof header);
}

std::uint64_t packedSize(cImage const &image)
{
    return std::uint64_t{image.getBytesPerPixel()} * image.getWidth() * image.getHeight();
}

void skipColorMap(ImageSource &source, sHeaderTGA const &header)
{
    source.skip(std::uint64_t{header.colorMapBits} / 8 * header.colorMapLength);
}

// The head, with the stream then behind the id.
bool begin(ImageSource &source, sHeaderTGA &header)
{
    if (!source.read(header)) {
        return false;
    }
    source.skip(header.idLength);
    return true;
}

// Pixels as they lie in the file, which begins with the bottom row.
void readBottomUp(ImageSource &source, cImage &image)
{
    source.read(image.getData(), packedSize(image));
    image.mirrorVertical();
}

// Makes the canvas if the stream could fill it.
bool makeCanvas(ImageSource const &source, cImage &image, ePixelFormat format, sHeaderTGA const &header,
                cPalette const *palette)
{
    cPixelFormat const pixels(format);
    return source.allows(std::uint64_t{pixels.getBytePerPixel()} * header.width * header.height) &&
           image.setCanvas(pixels, header.width, header.height, palette) != 0;
}

// Turns the image over for the time of a scope: files begin with the bottom row.
class TurnedOver {
public:
    explicit TurnedOver(cImage &image) : m_image(image) { m_image.mirrorVertical(); }
    ~TurnedOver() { m_image.mirrorVertical(); }
    TurnedOver(TurnedOver const &) = delete;
    TurnedOver &operator=(TurnedOver const &) = delete;

private:
    cImage &m_image;
};

} // namespace

bool cIO_tga::load(cFile &file, cImage &image, unsigned int)
{
    sHeaderTGA header;
    if (read_header(file, header, nullptr) == 0) {
        return false;
    }
    switch (header.imageType) {
    case 1:
        return read_type1(file, image) != 0;
    case 2:
        return read_type2(file, image) != 0;
    case 3:
        return read_type3(file, image) != 0;
    case 10:
        return read_type10(file, image) != 0;
    default:
        return false;
    }
}

bool cIO_tga::save(cFile &file, cImage &image, unsigned int flags)
{
    if (image.getBitsPerPixel() == 8) {
        return write_type1(file, image) != 0;
    }
    return (flags == 1 ? write_type10(file, image) : write_type2(file, image)) != 0;
}

char const *cIO_tga::get_type() const
{
    return "TGA";
}

int cIO_tga::read_header(cFile &file, sHeaderTGA &header, cPalette *)
{
    unsigned int const position = file.tell();
    bool const isWhole = ImageSource(file).read(header);
    file.seek(position);
    return isWhole ? 1 : 0;
}

int cIO_tga::read_type1(cFile &file, cImage &image)
{
    ImageSource source(file);
    sHeaderTGA header;
    if (!begin(source, header)) {
        return 0;
    }
    unsigned char entries[sizeof(cPalette)] = {};
    std::uint64_t const mapSize = std::uint64_t{header.colorMapBits} / 8 * header.colorMapLength;
    source.read(entries, std::min<std::uint64_t>(mapSize, sizeof entries));
    source.skip(mapSize - std::min<std::uint64_t>(mapSize, sizeof entries));
    cPalette palette(entries);
    palette.swapRedAndBlue();
    if (!makeCanvas(source, image, PAL8, header, &palette)) {
        return 0;
    }
    readBottomUp(source, image);
    return 1;
}

int cIO_tga::read_type2(cFile &file, cImage &image)
{
    ImageSource source(file);
    sHeaderTGA header;
    if (!begin(source, header)) {
        return 0;
    }
    skipColorMap(source, header);
    ePixelFormat format;
    switch (header.bitsPerPixel) {
    case 16:
        format = B5G6R5;
        break;
    case 24:
        format = B8G8R8;
        break;
    case 32:
        format = A8B8G8R8;
        break;
    default:
        image.mirrorVertical(); // the image as it was is turned over all the same
        return 0;
    }
    cPalette const noColors;
    if (!makeCanvas(source, image, format, header, &noColors)) {
        return 0;
    }
    readBottomUp(source, image);
    return 1;
}

int cIO_tga::read_type3(cFile &file, cImage &image)
{
    ImageSource source(file);
    sHeaderTGA header;
    if (!begin(source, header)) {
        return 0;
    }
    skipColorMap(source, header);
    if (!makeCanvas(source, image, A8B8G8R8, header, nullptr)) {
        return 0;
    }
    // Both fields once more: a file that has them loses pixels.
    source.skip(header.idLength);
    skipColorMap(source, header);
    source.read(image.getData(), packedSize(image));
    return 1;
}

int cIO_tga::read_type10(cFile &file, cImage &image)
{
    ImageSource source(file);
    sHeaderTGA header;
    if (!begin(source, header)) {
        return 0;
    }
    skipColorMap(source, header);
    if ((header.bitsPerPixel != 24 && header.bitsPerPixel != 32) ||
        !makeCanvas(source, image, header.bitsPerPixel == 24 ? B8G8R8 : X8B8G8R8, header, nullptr)) {
        return 0;
    }
    // Packets run across the ends of rows, as write_type10() makes them; what is left over at the end of the
    // image goes nowhere.
    unsigned int const size = image.getBytesPerPixel();
    std::size_t const rowSize = std::size_t{size} * image.getWidth();
    ImageBytes bytes(file);
    unsigned char *to = image.getData() + rowSize * (image.getHeight() - 1u);
    unsigned char *rowEnd = to + rowSize;
    std::uint64_t left = std::uint64_t{image.getWidth()} * image.getHeight();
    unsigned char head;
    while (left != 0 && bytes.next(head)) {
        unsigned char pixel[4];
        unsigned int const count = (head & 127u) + 1;
        for (unsigned int i = 0; i < count && left != 0; ++i, --left) {
            bool const isNew = head < 128 || i == 0;
            if (isNew && !bytes.next(pixel, size)) {
                return 1;
            }
            std::memcpy(to, pixel, size);
            to += size;
            if (to == rowEnd && left > 1) {
                to -= 2 * rowSize;
                rowEnd -= rowSize;
            }
        }
    }
    return 1;
}

int cIO_tga::write_type1(cFile &file, cImage &image)
{
    sHeaderTGA header{};
    header.colorMapType = 1;
    header.imageType = 1;
    header.colorMapLength = cPalette::numEntries;
    header.colorMapBits = 24;
    cPalette palette = image.getPalette();
    palette.swapRedAndBlue();
    unsigned char entries[sizeof(cPalette)];
    palette.getPalette(entries);
    std::uint64_t const size = packedSize(image);
    if (!writeHeader(file, header, image) || !writeAll(file, entries, sizeof entries)) {
        return 0;
    }
    TurnedOver const turned(image);
    return size == 0 || (image.getData() != nullptr && writeAll(file, image.getData(), size)) ? 1 : 0;
}

int cIO_tga::write_type2(cFile &file, cImage &image)
{
    sHeaderTGA header{};
    header.imageType = 2;
    std::uint64_t const size = packedSize(image);
    if (!writeHeader(file, header, image) || (size != 0 && image.getData() == nullptr)) {
        return 0;
    }
    TurnedOver const turned(image);
    switch (image.getBitsPerPixel()) {
    case 16: {
        ePixelFormat const format = image.getPixelFormat().getFormat();
        if (format != R5G6B5 && format != B5G6R5) {
            return writeAll(file, image.getData(), size) ? 1 : 0;
        }
        cImage fiveBits;
        return size == 0 ||
                       (fiveBits.setImage(X1B5G5R5, image) != 0 && writeAll(file, fiveBits.getData(), size))
                   ? 1
                   : 0;
    }
    case 24:
    case 32: {
        std::size_t const rowSize = std::size_t{image.getBytesPerPixel()} * image.getWidth();
        std::size_t const stride = std::size_t{image.getBytesPerPixel()} * image.getPitch();
        for (unsigned int y = 0; y < image.getHeight(); ++y) {
            if (!writeAll(file, image.getData() + y * stride, rowSize)) {
                return 0;
            }
        }
        return 1;
    }
    default:
        return 0;
    }
}

int cIO_tga::write_type10(cFile &file, cImage &image)
{
    sHeaderTGA header{};
    header.imageType = 10;
    std::uint64_t const size = packedSize(image);
    unsigned int const pixelSize = image.getBytesPerPixel();
    if (!writeHeader(file, header, image) || (size != 0 && image.getData() == nullptr)) {
        return 0;
    }
    TurnedOver const turned(image);
    unsigned char const *p = image.getData();
    unsigned char const *const end = p + size;
    while (p != end) {
        unsigned int const run = getRLECount(p, end, pixelSize);
        unsigned int const count = run >= shortestRun ? run : getRawPixelCount(p, end, pixelSize);
        if (count == 0) {
            break;
        }
        auto const head = static_cast<unsigned char>((count - 1) | (run >= shortestRun ? 128 : 0));
        if (!writeAll(file, &head, 1) ||
            !writeAll(file, p, run >= shortestRun ? pixelSize : count * pixelSize)) {
            return 0;
        }
        p += std::size_t{count} * pixelSize;
    }
    return 1;
}

unsigned int cIO_tga::getRLECount(unsigned char const *p, unsigned char const *end, unsigned int size) const
{
    auto const pixels = size == 0 ? 0 : static_cast<std::size_t>(end - p) / size;
    auto const limit = static_cast<unsigned int>(std::min<std::size_t>(pixels, longestPacket));
    unsigned int count = limit == 0 ? 0 : 1;
    while (count < limit && std::memcmp(p, p + std::size_t{count} * size, size) == 0) {
        ++count;
    }
    return count;
}

unsigned int cIO_tga::getRawPixelCount(unsigned char const *p, unsigned char const *end,
                                       unsigned int size) const
{
    auto const pixels = size == 0 ? 0 : static_cast<std::size_t>(end - p) / size;
    auto const limit = static_cast<unsigned int>(std::min<std::size_t>(pixels, longestPacket));
    unsigned int equal = 1; // pixels up to the one looked at that are alike
    for (unsigned int i = 1; i < pixels && i < limit + shortestRun; ++i) {
        bool const isAlike = std::memcmp(p + std::size_t{i - 1} * size, p + std::size_t{i} * size, size) == 0;
        equal = isAlike ? equal + 1 : 1;
        if (equal == shortestRun) {
            return std::min(limit, i + 1 - shortestRun); // the run begins there
        }
    }
    return limit;
}

} // namespace Qel
