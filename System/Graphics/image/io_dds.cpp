#include "System/Graphics/image/io_dds.h"

#include "System/Graphics/image/image.h"
#include "System/Graphics/image/imageSource.h"
#include "System/Graphics/image/s3tc.h"

#include "Support/PoolHeap/poolBlk.h"

#include <algorithm>

namespace Qel {

namespace {

constexpr std::uint32_t magic = 0x20534444; // "DDS "
constexpr std::uint32_t hasLinearSize = 0x80000;
constexpr std::uint32_t dxt1 = 0x31545844; // "DXT1"; the digit is the highest byte
constexpr std::uint32_t plainPixels = 0;
constexpr std::uint32_t unknownFormat = 6;
constexpr unsigned int imageContext = 0x228FC766; // "Default resource data"

struct Header {
    std::uint32_t size;
    std::uint32_t flags;
    std::uint32_t height;
    std::uint32_t width;
    std::uint32_t linearSize;
    std::uint32_t depth;
    std::uint32_t mipLevels;
    std::uint32_t reserved[13];
    std::uint32_t fourCC;
    std::uint32_t bitsPerPixel;
    std::uint32_t rest[9];
};
static_assert(sizeof(Header) == 124);

std::uint64_t blockBytes(cIO_ddsInfo const &info)
{
    return std::uint64_t{(info.width + 3) / 4} * ((info.height + 3) / 4) * (info.format == 1 ? 8 : 16);
}

// The blocks as the file has them, in room for all that width and height ask for.
bool readBlocks(ImageSource &source, Header const &header, cIO_ddsInfo &info, PoolBlk &blocks)
{
    std::uint64_t const wanted = std::max(blockBytes(info), std::uint64_t{info.width} * info.height);
    if (wanted > cImage::maxBytes || !blocks.alloc(static_cast<unsigned int>(wanted), imageContext)) {
        return false;
    }
    info.data = static_cast<unsigned char *>(blocks.data());
    std::fill_n(info.data, wanted, static_cast<unsigned char>(0));
    if ((header.flags & hasLinearSize) != 0) {
        source.read(info.data, std::min<std::uint64_t>(header.linearSize, wanted));
        return true;
    }
    std::uint64_t const rowSize = std::uint64_t{header.bitsPerPixel} * info.width / 8;
    std::uint64_t const taken = std::min<std::uint64_t>(rowSize, info.width);
    for (std::uint32_t y = 0; y < info.height && taken != 0 && source.left() != 0; ++y) {
        source.read(info.data + std::size_t{info.width} * y, taken);
        source.skip(rowSize - taken);
    }
    return true;
}

} // namespace

bool cIO_dds::load(cFile &file, cImage &image, unsigned int)
{
    ImageSource source(file);
    std::uint32_t word;
    Header header;
    if (!source.read(word) || word != magic || !source.read(header)) {
        return false;
    }
    cIO_ddsInfo info;
    info.height = header.height;
    info.width = header.width;
    info.hasMipLevels = header.mipLevels > 0;
    decodePixelFormat(header.fourCC, info.format);
    constexpr unsigned int bytesPerPixel = 4;
    if (info.format == unknownFormat || info.width > 0xFFFF || info.height > 0xFFFF ||
        !source.allows(std::uint64_t{bytesPerPixel} * info.width * info.height)) {
        return false;
    }
    if (info.format != plainPixels) {
        PoolBlk blocks;
        return readBlocks(source, header, info, blocks) && decompress(info, image);
    }
    std::uint64_t const size = image.setCanvas(A8R8G8B8, static_cast<unsigned short>(info.width),
                                               static_cast<unsigned short>(info.height), nullptr);
    if (size == 0) {
        return false;
    }
    source.read(image.getData(), (header.flags & hasLinearSize) != 0
                                     ? std::min<std::uint64_t>(header.linearSize, size)
                                     : size);
    return true;
}

bool cIO_dds::save(cFile &, cImage &, unsigned int)
{
    return false;
}

char const *cIO_dds::get_type() const
{
    return "DDS";
}

void cIO_dds::decodePixelFormat(unsigned int fourCC, unsigned int &format)
{
    constexpr unsigned int digitBits = 24;
    unsigned int const number = (fourCC - dxt1) >> digitBits;
    if (fourCC == 0) {
        format = plainPixels;
    } else if (((fourCC - dxt1) & ((1u << digitBits) - 1)) == 0 && number < 5) {
        format = number + 1;
    } else {
        format = unknownFormat;
    }
}

bool cIO_dds::decompress(cIO_ddsInfo const &info, cImage &image)
{
    if (info.data == nullptr || image.setCanvas(A8R8G8B8, static_cast<unsigned short>(info.width),
                                                static_cast<unsigned short>(info.height), nullptr) == 0) {
        return false;
    }
    auto *const to = reinterpret_cast<unsigned int *>(image.getData());
    auto *const from = reinterpret_cast<unsigned short *>(info.data);
    cS3TC coder;
    switch (info.format) {
    case 1:
        coder.from_S3TC1(to, from, info.width, info.height);
        return true;
    case 2:
    case 3:
        coder.from_S3TC2or3(to, from, info.width, info.height);
        return true;
    case 4:
    case 5:
        coder.from_S3TC4or5(to, from, info.width, info.height);
        return true;
    default:
        return false;
    }
}

} // namespace Qel
