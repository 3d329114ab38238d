#include "Tools/picture/fileKind.h"

#include "System/Graphics/image/io_bmp.h"
#include "System/Graphics/image/io_dds.h"
#include "System/Graphics/image/io_ico.h"
#include "System/Graphics/image/io_pcx.h"
#include "System/Graphics/image/io_tga.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

using namespace std::literals;

template <class Number>
Number numberAt(std::string_view bytes, std::size_t at)
{
    Number number = 0;
    if (at < bytes.size()) {
        std::memcpy(&number, bytes.data() + at, std::min(sizeof number, bytes.size() - at));
    }
    return number;
}

std::string sizeText(long long width, long long height)
{
    return std::to_string(width) + " x " + std::to_string(height);
}

void refuse(FileKind &kind, std::string const &why)
{
    kind.isReadable = false;
    kind.trouble = why;
}

FileKind tgaKind(std::string_view bytes)
{
    FileKind kind{.name = "TGA"};
    auto const type = numberAt<std::uint8_t>(bytes, 2);
    auto const bits = numberAt<std::uint8_t>(bytes, 16);
    kind.size = sizeText(numberAt<std::uint16_t>(bytes, 12), numberAt<std::uint16_t>(bytes, 14));
    bool const isTopFirst = (numberAt<std::uint8_t>(bytes, 17) & 0x20) != 0;
    kind.details = "type " + std::to_string(type) + ", " + std::to_string(bits) + " bits a pixel, " +
                   (isTopFirst ? "top" : "bottom") + " row first";
    if (type != 1 && type != 2 && type != 3 && type != 10) {
        refuse(kind, "type " + std::to_string(type) + " has no reader (1, 2, 3 and 10 have)");
    } else if (type == 2 && bits != 16 && bits != 24 && bits != 32) {
        refuse(kind, "true colour of " + std::to_string(bits) + " bits has no reader (16, 24 and 32 have)");
    } else if (type == 10 && bits != 24 && bits != 32) {
        refuse(kind, "runs of " + std::to_string(bits) + " bits have no reader (24 and 32 have)");
    } else if (type == 3 && bits != 32) {
        kind.trouble = "gray is read as 32 bits a pixel: most of it will be missing";
    } else if (isTopFirst) {
        kind.trouble = "is read as if its bottom row came first: it will stand on its head";
    }
    return kind;
}

FileKind bmpKind(std::string_view bytes)
{
    FileKind kind{.name = "BMP"};
    auto const headSize = numberAt<std::uint32_t>(bytes, 14);
    if (headSize < 40) {
        refuse(kind, "its second head has " + std::to_string(headSize) + " bytes, not 40 or more");
        return kind;
    }
    auto const height = numberAt<std::int32_t>(bytes, 22);
    auto const bits = numberAt<std::uint16_t>(bytes, 28);
    auto const compression = numberAt<std::uint32_t>(bytes, 30);
    auto const sizeImage = numberAt<std::uint32_t>(bytes, 34);
    kind.size = sizeText(numberAt<std::int32_t>(bytes, 18), height);
    kind.details = std::to_string(bits) + " bits a pixel, compression " + std::to_string(compression);
    bool const isKnown = bits == 1 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
    if (compression == 1 || compression == 2) {
        refuse(kind, "runs have no reader");
    } else if (compression != 0 && compression != 3) {
        refuse(kind, "compression " + std::to_string(compression) + " has no reader (0 and 3 have)");
    } else if (height <= 0) {
        refuse(kind, "a height of " + std::to_string(height) + " is refused");
    } else if (!isKnown || (compression == 3 && bits != 16 && bits != 32)) {
        refuse(kind, std::to_string(bits) + " bits have no reader");
    } else if (sizeImage == 0) {
        kind.trouble = "gives no size of its pixels: all rows will be empty";
    }
    return kind;
}

FileKind pcxKind(std::string_view bytes)
{
    FileKind kind{.name = "PCX"};
    auto const version = numberAt<std::uint8_t>(bytes, 1);
    auto const bits = numberAt<std::uint8_t>(bytes, 3);
    auto const planes = numberAt<std::uint8_t>(bytes, 65);
    int const width = numberAt<std::int16_t>(bytes, 8) - numberAt<std::int16_t>(bytes, 4) + 1;
    int const height = numberAt<std::int16_t>(bytes, 10) - numberAt<std::int16_t>(bytes, 6) + 1;
    kind.size = sizeText(width, height);
    kind.details = "version " + std::to_string(version) + ", " + std::to_string(planes) + " planes of " +
                   std::to_string(bits) + " bits";
    if (version != 5 || bits != 8 || (planes != 1 && planes != 3)) {
        refuse(kind, "only version 5 with 1 or 3 planes of 8 bits has a reader");
    } else if (planes == 3 && numberAt<std::int16_t>(bytes, 66) != width) {
        kind.trouble = "pads its planes, which the reader does not expect: it will lean over";
    }
    return kind;
}

FileKind icoKind(std::string_view bytes, unsigned int index)
{
    FileKind kind{.name = "ICO"};
    kind.pictures = numberAt<std::uint16_t>(bytes, 4);
    constexpr std::size_t firstOffset = 18;
    constexpr std::size_t entrySize = 16;
    auto const at = std::size_t{numberAt<std::uint32_t>(bytes, firstOffset + entrySize * index)};
    kind.details = std::to_string(kind.pictures) + " pictures; number " + std::to_string(index) + ": ";
    if (bytes.substr(std::min(at, bytes.size())).starts_with("\x89PNG")) {
        kind.details += "a PNG";
        refuse(kind, "a PNG inside an icon has no reader");
        return kind;
    }
    auto const bits = numberAt<std::uint16_t>(bytes, at + 14);
    kind.size = sizeText(numberAt<std::int32_t>(bytes, at + 4), numberAt<std::int32_t>(bytes, at + 8) / 2);
    kind.details += std::to_string(bits) + " bits a pixel";
    if (bits != 4 && bits != 8) {
        refuse(kind, std::to_string(bits) + " bits have no reader (4 and 8 have)");
    }
    return kind;
}

FileKind ddsKind(std::string_view bytes)
{
    FileKind kind{.name = "DDS"};
    kind.size = sizeText(numberAt<std::uint32_t>(bytes, 16), numberAt<std::uint32_t>(bytes, 12));
    auto const code = numberAt<std::uint32_t>(bytes, 84);
    auto const bits = numberAt<std::uint32_t>(bytes, 88);
    std::string name(code == 0 ? "plain"
                               : std::string(bytes.substr(std::min<std::size_t>(84, bytes.size()), 4)));
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    kind.details = name + ", " + std::to_string(numberAt<std::uint32_t>(bytes, 28)) + " levels";
    bool const isBlocks = name.starts_with("DXT") && name.back() >= '1' && name.back() <= '5';
    if (code != 0 && !isBlocks) {
        refuse(kind, "the code " + name + " has no reader (DXT1 to DXT5 have, and none at all)");
    } else if (code == 0 && bits != 32) {
        kind.trouble = "has " + std::to_string(bits) + " bits a pixel and is read as 32";
    } else if (isBlocks && (numberAt<std::uint32_t>(bytes, 8) & 0x80000) == 0) {
        kind.trouble =
            "gives no size of its blocks: they are read by its bits a pixel, " + std::to_string(bits);
    }
    return kind;
}

// A TGA file without id and colour map begins with the same bytes, and then has zeros.
bool looksLikeIcon(std::string_view bytes)
{
    constexpr std::size_t directory = 6;
    constexpr std::size_t entry = 16;
    auto const count = numberAt<std::uint16_t>(bytes, 4);
    auto const at = numberAt<std::uint32_t>(bytes, 18);
    return (bytes.starts_with("\0\0\1\0"sv) || bytes.starts_with("\0\0\2\0"sv)) && count != 0 &&
           at >= directory + entry * count && at < bytes.size();
}

// This format has no mark at its start: the fields have to look like one.
bool looksLikeTga(std::string_view bytes)
{
    constexpr std::string_view footer = "TRUEVISION-XFILE.\0"sv;
    constexpr std::size_t headSize = 18;
    if (bytes.size() < headSize) {
        return false;
    }
    constexpr std::string_view types = "\x01\x02\x03\x09\x0A\x0B"sv;
    constexpr std::string_view bits = "\x08\x0F\x10\x18\x20"sv;
    return bytes.ends_with(footer) ||
           (numberAt<std::uint8_t>(bytes, 1) <= 1 && types.find(bytes[2]) != types.npos &&
            bits.find(bytes[16]) != bits.npos && numberAt<std::uint16_t>(bytes, 12) != 0 &&
            numberAt<std::uint16_t>(bytes, 14) != 0);
}

} // namespace

FileKind fileKindOf(std::string_view bytes, unsigned int index)
{
    if (bytes.starts_with("BM") && bytes.size() >= 26) {
        return bmpKind(bytes);
    }
    if (bytes.starts_with("DDS ")) {
        return ddsKind(bytes);
    }
    if (bytes.starts_with("\x0A") && bytes.size() >= 128 && bytes[2] == 1) {
        return pcxKind(bytes);
    }
    if (looksLikeIcon(bytes)) {
        return icoKind(bytes, index);
    }
    struct {
        std::string_view mark;
        char const *name;
    } const others[] = {{"\x89PNG", "PNG"},
                        {"\xFF\xD8\xFF", "JPG"},
                        {"GIF8", "GIF"},
                        {"II*\0"sv, "TIFF"},
                        {"MM\0*"sv, "TIFF"}};
    for (auto const &other : others) {
        if (bytes.starts_with(other.mark)) {
            FileKind kind{.name = other.name};
            refuse(kind, kind.name + " files have no reader");
            return kind;
        }
    }
    if (looksLikeTga(bytes)) {
        return tgaKind(bytes);
    }
    FileKind kind;
    refuse(kind, "its first bytes are those of no picture");
    return kind;
}

std::unique_ptr<Qel::iImageIO> readerOf(std::string const &name)
{
    if (name == "TGA") {
        return std::make_unique<Qel::cIO_tga>();
    }
    if (name == "BMP") {
        return std::make_unique<Qel::cIO_bmp>();
    }
    if (name == "PCX") {
        return std::make_unique<Qel::cIO_pcx>();
    }
    if (name == "ICO") {
        return std::make_unique<Qel::cIO_ico>();
    }
    if (name == "DDS") {
        return std::make_unique<Qel::cIO_dds>();
    }
    return nullptr;
}
