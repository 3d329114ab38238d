#include "System/Graphics/image/io_ico.h"

#include "System/Graphics/image/image.h"
#include "System/Graphics/image/imageSource.h"

#include <algorithm>

namespace Qel {

namespace {

// The first fields of a bitmap's information head are all that counts here.
struct IconHead {
    std::uint32_t size;
    std::int32_t width;
    std::int32_t height; // of picture and mask together
    std::uint16_t planes;
    std::uint16_t bitCount;
    std::uint8_t rest[24];
};
static_assert(sizeof(IconHead) == 40);

} // namespace

bool cIO_ico::load(cFile &file, cImage &image, unsigned int flags)
{
    sHeaderICO_dir directory;
    std::vector<sHeaderICO_dirEntry> entries;
    if (read_header(file, directory, entries) == 0 || flags >= entries.size()) {
        return false;
    }
    ImageSource source(file);
    IconHead head;
    source.seek(entries[flags].offset);
    if (!source.read(head) || (head.bitCount != 4 && head.bitCount != 8)) {
        return false;
    }
    std::int32_t const width = head.width;
    std::int32_t const height = head.height / 2;
    if (width <= 0 || width > 0xFFFF || height <= 0 || height > 0xFFFF) {
        return false;
    }
    unsigned int const bits = head.bitCount;
    unsigned int const rowSize = (bits * static_cast<unsigned int>(width) + 7) / 8;
    unsigned int const storedRow = (rowSize + 3) / 4 * 4;
    cPalette const noColors;
    if (!source.allows(std::uint64_t{static_cast<unsigned int>(width)} * static_cast<unsigned int>(height)) ||
        image.setCanvas(PAL8, static_cast<unsigned short>(width), static_cast<unsigned short>(height),
                        &noColors) == 0) {
        return false;
    }

    unsigned char colors[cPalette::numEntries][4] = {};
    source.read(colors, sizeof colors[0] << bits);
    unsigned char bytes[cPalette::numEntries][3];
    for (unsigned int i = 0; i < cPalette::numEntries; ++i) {
        std::reverse_copy(colors[i], colors[i] + 3, bytes[i]);
    }
    image.setPalette(cPalette(bytes));

    unsigned char packed[(0xFFFF + 1) / 2];
    for (unsigned int y = static_cast<unsigned int>(height); y-- != 0;) {
        unsigned char *const row = image.getData() + static_cast<std::size_t>(width) * y;
        if (bits == 8) {
            source.read(row, rowSize);
        } else {
            std::uint32_t const got = source.read(packed, rowSize);
            auto const pixels = std::min(static_cast<unsigned int>(width), 2 * got);
            for (unsigned int x = 0; x < pixels; ++x) {
                row[x] = x % 2 == 0 ? packed[x / 2] >> 4 : packed[x / 2] & 15;
            }
        }
        source.skip(storedRow - rowSize);
    }
    // The mask has the colours' depth and size. On a cleared canvas it changes nothing.
    source.skip(std::uint64_t{storedRow} * static_cast<unsigned int>(height));
    return true;
}

bool cIO_ico::save(cFile &, cImage &, unsigned int)
{
    return false;
}

char const *cIO_ico::get_type() const
{
    return "ICO";
}

int cIO_ico::read_header(cFile &file, sHeaderICO_dir &header, std::vector<sHeaderICO_dirEntry> &entries)
{
    if (file.size() == 0) {
        return 0;
    }
    unsigned int const position = file.tell();
    ImageSource source(file);
    bool const isDirectory =
        source.read(header) && header.reserved == 0 && (header.type == 1 || header.type == 2);
    if (isDirectory) {
        entries.assign(header.count, sHeaderICO_dirEntry{});
        source.read(entries.data(), entries.size() * sizeof(sHeaderICO_dirEntry));
    }
    file.seek(position);
    return isDirectory ? 1 : 0;
}

} // namespace Qel
