#include "System/Graphics/image/io_bmp.h"

#include "System/Graphics/image/image.h"
#include "System/Graphics/image/imageSource.h"

#include <algorithm>
#include <memory>

namespace Qel {

namespace {

constexpr std::uint16_t bitmapType = 0x4D42; // "BM"
constexpr unsigned int entrySize = 4;        // of a palette, in the file

enum : std::uint32_t { PLAIN = 0, RUNS_OF_8_BITS = 1, BIT_FIELDS = 3 };

struct Heads {
    sHeaderBMPCore core;
    sHeaderBMPInfo info;
};

bool readHeads(ImageSource &source, Heads &heads)
{
    return source.read(heads.core) && source.read(heads.info);
}

// A height of 0 has no length of rows, and one below 0 is read by nobody here.
bool hasRows(sHeaderBMPInfo const &info)
{
    return info.height > 0;
}

// A canvas counts its sides in 16 bits.
bool hasSize(sHeaderBMPInfo const &info)
{
    return info.width > 0 && info.width <= 0xFFFF && info.height <= 0xFFFF;
}

std::uint32_t fileRowSize(sHeaderBMPInfo const &info)
{
    return info.sizeImage / static_cast<std::uint32_t>(info.height);
}

enum class Canvas { MADE, REFUSED, NO_MEMORY };

Canvas makeCanvas(ImageSource const &source, cImage &image, ePixelFormat format, sHeaderBMPInfo const &info,
                  cPalette const *palette)
{
    if (!hasSize(info)) {
        return Canvas::REFUSED;
    }
    auto const width = static_cast<unsigned short>(info.width);
    auto const height = static_cast<unsigned short>(info.height);
    cPixelFormat const pixels(format);
    if (!source.allows(std::uint64_t{pixels.getBytePerPixel()} * width * height)) {
        return Canvas::REFUSED;
    }
    return image.setCanvas(pixels, width, height, palette) != 0 ? Canvas::MADE : Canvas::NO_MEMORY;
}

// Reads rows from the last one of the image to the first. What a file's row has beyond the image's stays out.
void readRows(ImageSource &source, cImage &image, sHeaderBMPCore const &core, sHeaderBMPInfo const &info)
{
    std::uint32_t const inFile = fileRowSize(info);
    std::uint32_t const inImage = image.getBytesPerPixel() * image.getWidth();
    std::uint32_t const taken = std::min(inFile, inImage);
    source.seek(core.offBits);
    for (unsigned int y = image.getHeight(); y-- != 0 && taken != 0 && source.left() != 0;) {
        source.read(image.getData() + std::size_t{inImage} * y, taken);
        source.skip(inFile - taken);
    }
}

} // namespace

bool cIO_bmp::load(cFile &file, cImage &image, unsigned int)
{
    sHeaderBMPCore core;
    sHeaderBMPInfo info;
    if (file.size() == 0 || read_header(file, core, info) == 0 || core.type != bitmapType) {
        return false;
    }
    switch (info.compression) {
    case PLAIN:
        return read_type_rgb(file, image);
    case RUNS_OF_8_BITS:
        return read_type_rle8(file, image);
    case BIT_FIELDS:
        return read_type_bf(file, image);
    default:
        return false;
    }
}

bool cIO_bmp::save(cFile &file, cImage &image, unsigned int)
{
    return save_type_rgb(file, image);
}

char const *cIO_bmp::get_type() const
{
    return "BMP";
}

int cIO_bmp::read_header(cFile &file, sHeaderBMPCore &core, sHeaderBMPInfo &info)
{
    unsigned int const position = file.tell();
    ImageSource source(file);
    bool const isWhole = source.read(core) && source.read(info);
    file.seek(position);
    return isWhole ? 1 : 0;
}

bool cIO_bmp::read_type_rgb(cFile &file, cImage &image)
{
    ImageSource source(file);
    Heads heads;
    if (!readHeads(source, heads) || !hasRows(heads.info)) {
        return false;
    }
    Canvas canvas;
    switch (heads.info.bitCount) {
    case 1:
        return read_type_bw(file, image, heads.core, heads.info);
    case 8: {
        unsigned char entries[cPalette::numEntries][entrySize] = {};
        source.read(entries, sizeof entries);
        unsigned char bytes[cPalette::numEntries][3];
        for (unsigned int i = 0; i < cPalette::numEntries; ++i) {
            std::reverse_copy(entries[i], entries[i] + 3, bytes[i]);
        }
        cPalette const palette(bytes);
        canvas = makeCanvas(source, image, PAL8, heads.info, &palette);
        break;
    }
    case 16:
        canvas = makeCanvas(source, image, X1R5G5B5, heads.info, nullptr);
        break;
    case 24:
        canvas = makeCanvas(source, image, R8G8B8, heads.info, nullptr);
        break;
    case 32:
        canvas = makeCanvas(source, image, A8R8G8B8, heads.info, nullptr);
        break;
    default:
        return true; // the image stays as it is
    }
    if (canvas == Canvas::MADE) {
        readRows(source, image, heads.core, heads.info);
    }
    return canvas != Canvas::REFUSED;
}

bool cIO_bmp::read_type_bw(cFile &file, cImage &image, sHeaderBMPCore const &core, sHeaderBMPInfo const &info)
{
    ImageSource source(file);
    cPalette palette;
    palette.setEntry(0, 255, 255, 255);
    Canvas const canvas = makeCanvas(source, image, PAL8, info, &palette);
    if (canvas != Canvas::MADE) {
        return canvas != Canvas::REFUSED;
    }
    // The last byte of a row gives no pixels.
    std::uint32_t const inFile = fileRowSize(info);
    unsigned int const width = image.getWidth();
    std::uint32_t const taken = std::min(inFile == 0 ? 0 : inFile - 1, (width + 7) / 8);
    unsigned char bits[(0xFFFF + 7) / 8];
    source.seek(core.offBits);
    for (unsigned int y = image.getHeight(); y-- != 0 && taken != 0 && source.left() != 0;) {
        std::uint32_t const got = source.read(bits, taken);
        source.skip(inFile - taken);
        unsigned char *const row = image.getData() + std::size_t{width} * y;
        for (unsigned int x = 0; x < std::min(width, got * 8); ++x) {
            row[x] = (bits[x / 8] >> (7 - x % 8)) & 1;
        }
    }
    return true;
}

bool cIO_bmp::read_type_bf(cFile &file, cImage &image)
{
    ImageSource source(file);
    Heads heads;
    std::uint32_t masks[3];
    if (!readHeads(source, heads) || !hasRows(heads.info)) {
        return false;
    }
    source.read(masks);
    if (heads.info.bitCount != 16 && heads.info.bitCount != 32) {
        return true; // the image stays as it is
    }
    Canvas const canvas =
        makeCanvas(source, image, heads.info.bitCount == 16 ? B5G6R5 : A8R8G8B8, heads.info, nullptr);
    if (canvas == Canvas::MADE) {
        readRows(source, image, heads.core, heads.info);
    }
    return canvas != Canvas::REFUSED;
}

bool cIO_bmp::read_type_rle8(cFile &, cImage &)
{
    return false;
}

bool cIO_bmp::save_type_rgb(cFile &file, cImage &image)
{
    if (image.getWidth() == 0 || image.getHeight() == 0) {
        return false;
    }
    unsigned int const bits = static_cast<unsigned int>(image.getBitsPerPixel());
    std::uint32_t const rowSize = image.getBytesPerPixel() * image.getWidth();
    Heads heads{};
    heads.core.type = bitmapType;
    heads.core.size = sizeof(sHeaderBMPCore) + sizeof(sHeaderBMPInfo); // whatever the image's size
    heads.core.offBits = heads.core.size + (bits == 8 ? cPalette::numEntries * entrySize : 0);
    heads.info.size = sizeof(sHeaderBMPInfo);
    heads.info.width = image.getWidth();
    heads.info.height = image.getHeight();
    heads.info.planes = 1;
    heads.info.bitCount = static_cast<std::uint16_t>(bits);
    heads.info.sizeImage = rowSize * image.getHeight();
    if (file.write(&heads.core, sizeof heads.core) != sizeof heads.core ||
        file.write(&heads.info, sizeof heads.info) != sizeof heads.info) {
        return false;
    }
    if (bits == 1) {
        return true;
    }
    if (bits == 8) {
        unsigned char bytes[cPalette::numEntries][3];
        image.getPalette().getPalette(bytes[0]);
        unsigned char entries[cPalette::numEntries][entrySize] = {};
        for (unsigned int i = 0; i < cPalette::numEntries; ++i) {
            std::reverse_copy(bytes[i], bytes[i] + 3, entries[i]);
        }
        if (file.write(entries, sizeof entries) != sizeof entries) {
            return false;
        }
    }
    if (image.getData() == nullptr) {
        return true;
    }
    std::size_t const stride = std::size_t{image.getBytesPerPixel()} * image.getPitch();
    for (unsigned int y = image.getHeight(); y-- != 0;) {
        if (file.write(image.getData() + stride * y, rowSize) != rowSize) {
            return false;
        }
    }
    return true;
}

bool cIO_bmp::save_type_bw(cFile &, cImage &)
{
    return false;
}

bool cIO_bmp::save_type_rle8(cFile &, cImage &)
{
    return false;
}

} // namespace Qel
