#include "System/Graphics/image/s3tc.h"

#include "Tests/math/atEveryLevel.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

namespace Qel {
namespace {

struct Coded {
    std::uint64_t digest;
    unsigned int error;
};

#include "Tests/Graphics/image/s3tcGolden.inc"

using Bytes = std::vector<unsigned char>;
using Pixels = std::vector<unsigned int>;

constexpr unsigned int columns = 32; // blocks in a row
constexpr unsigned int families = std::size(coded);

class Random {
public:
    explicit Random(unsigned int seed) : m_state(seed) {}

    int below(int limit)
    {
        m_state = m_state * 1664525u + 1013904223u;
        return static_cast<int>(m_state >> 16) % limit;
    }

private:
    unsigned int m_state;
};

// As block_pixels() of s3tcReference.py.
std::array<std::array<int, 4>, 16> blockPixels(unsigned int family, Random &random)
{
    using Pixel = std::array<int, 4>;
    auto const clamp = [](int value) { return std::clamp(value, 0, 255); };
    auto const draw = [&](int limit) {
        Pixel pixel;
        for (int &value : pixel) {
            value = random.below(limit);
        }
        return pixel;
    };
    Pixel const base = draw(256);
    int step[4][2];
    for (auto &both : step) {
        both[0] = random.below(33) - 16;
        both[1] = random.below(33) - 16;
    }
    Pixel const palette[4] = {draw(256), draw(256), draw(256), draw(256)};
    int const size = 1 + random.below(4);
    int const fixed = random.below(8);
    std::array<Pixel, 16> pixels;
    for (int i = 0; i < 16; ++i) {
        Pixel const noise = draw(256);
        auto const valueOf = [&](std::size_t c) {
            bool const isAlpha = c == 3;
            switch (family) {
            case 1:
                return palette[noise[0] % size][c];
            case 2:
                return clamp(base[c] + i % 4 * step[c][0] + i / 4 * step[c][1]);
            case 3:
                return clamp(base[c] + noise[c] % (2 << size));
            case 4:
                return isAlpha ? 255 - noise[c] % (2 + fixed) : 224 + noise[c] % 32;
            case 5:
                return isAlpha ? noise[c] % (2 + fixed) : noise[c] % 32;
            case 6:
                return isAlpha ? 255 : (fixed >> c & 1) != 0 ? base[c] : noise[c];
            case 7: {
                int const ends[] = {0, 255, clamp(base[3] + noise[3] % (2 << size))};
                return isAlpha ? ends[noise[0] % 3] : noise[c];
            }
            case 8:
                return clamp(isAlpha  ? base[c] / 32 * 36 + noise[c] % 3
                             : c == 1 ? base[c] / 64 * 81 + 4 * (noise[c] % 3)
                                      : base[c] / 64 * 72 + 8 * (noise[c] % 3));
            case 9:
                return isAlpha ? 128 * (noise[c] % (1 + fixed) != 0) + noise[c] % 128
                               : clamp(base[c] + noise[c] % (4 << size));
            default:
                return noise[c];
            }
        };
        pixels[static_cast<std::size_t>(i)] = {valueOf(0), valueOf(1), valueOf(2), valueOf(3)};
    }
    return pixels;
}

// A row of blocks of a family; behind each row of pixels there are @p gap more, which nobody may use.
Pixels makeImage(unsigned int family, unsigned int seed, unsigned int gap)
{
    Random random(seed);
    std::size_t const pitch = columns * 4 + gap;
    Pixels image(pitch * 4, 0x12345678);
    for (std::size_t block = 0; block < columns; ++block) {
        auto const pixels = blockPixels(family, random);
        for (std::size_t i = 0; i < 16; ++i) {
            unsigned int word = 0;
            for (unsigned int c = 0; c < 4; ++c) {
                word |= static_cast<unsigned int>(pixels[i][c]) << 8 * c;
            }
            image[i / 4 * pitch + block * 4 + i % 4] = word;
        }
    }
    return image;
}

// FNV-1a, 64 bits, of @p used bytes at every @p stride.
std::uint64_t digest(Bytes const &bytes, std::size_t offset = 0, std::size_t used = 1, std::size_t stride = 1)
{
    std::uint64_t state = 0xCBF29CE484222325u;
    for (std::size_t at = offset; at < bytes.size(); at += stride) {
        for (std::size_t i = 0; i < used; ++i) {
            state = (state ^ bytes[at + i]) * 0x100000001B3u;
        }
    }
    return state;
}

cS3TC coder;

using Coder = unsigned int (cS3TC::*)(void *, void const *, unsigned int, unsigned int, unsigned int);
std::pair<Coder, std::size_t> const coders[] = {
    {&cS3TC::to_S3TC1, 8}, {&cS3TC::to_S3TC1a, 8}, {&cS3TC::to_S3TC2or3, 16}, {&cS3TC::to_S3TC4or5, 16}};
using Decoder = void (cS3TC::*)(unsigned int *, unsigned short const *, unsigned int, unsigned int);
std::pair<Decoder, std::size_t> const decoders[] = {
    {&cS3TC::from_S3TC1, 8}, {&cS3TC::from_S3TC2or3, 16}, {&cS3TC::from_S3TC4or5, 16}};

TEST(S3tc, BlocksAndErrorsAreThoseOfTheReferenceAtEveryLevel)
{
    atEveryLevel([&] {
        for (unsigned int family = 0; family < families; ++family) {
            SCOPED_TRACE(family);
            unsigned int const gap = family % 3;
            Pixels const image = makeImage(family, family + 1, gap);
            unsigned int const width = columns * 4;
            unsigned int const pitch = (width + gap) * 4;
            auto const &[colors, holes, mapped, interpolated] = coded[family];

            Bytes small(columns * 8);
            EXPECT_EQ(coder.to_S3TC1(small.data(), image.data(), pitch, width, 4), colors.error);
            EXPECT_EQ(digest(small), colors.digest);
            EXPECT_EQ(coder.to_S3TC1a(small.data(), image.data(), pitch, width, 4), holes.error);
            EXPECT_EQ(digest(small), holes.digest);

            Bytes large(columns * 16);
            auto const expectLarge = [&large, &colorBlocks = colors](unsigned int error, Coded const &alpha) {
                EXPECT_EQ(error, alpha.error + colorBlocks.error);
                EXPECT_EQ(digest(large, 0, 8, 16), alpha.digest);
                EXPECT_EQ(digest(large, 8, 8, 16), colorBlocks.digest);
                large.assign(large.size(), 0xEE);
            };
            expectLarge(coder.to_S3TC2or3(large.data(), image.data(), pitch, width, 4), mapped);
            expectLarge(coder.to_S3TC4or5(large.data(), image.data(), pitch, width, 4), interpolated);
            bool const isMapped = mapped.error == 0 || mapped.error < interpolated.error;
            unsigned int format = 77;
            expectLarge(coder.to_S3TC2or3vs4or5(large.data(), image.data(), pitch, width, 4, &format),
                        isMapped ? mapped : interpolated);
            EXPECT_EQ(format, isMapped ? 2u : 4u);
        }

        Random random(99);
        Bytes noise(256 * 16);
        for (unsigned char &byte : noise) {
            byte = static_cast<unsigned char>(random.below(256));
        }
        // 256 blocks one above the other: so pixels lie block by block.
        Pixels pixels(256 * 16);
        Bytes bytes(pixels.size() * 4);
        auto const *const src = reinterpret_cast<unsigned short const *>(noise.data());
        for (std::size_t i = 0; i < std::size(decoders); ++i) {
            (coder.*decoders[i].first)(pixels.data(), src, 4, 4 * 256);
            std::memcpy(bytes.data(), pixels.data(), bytes.size());
            EXPECT_EQ(digest(bytes), decoded[i]) << i;
        }
    });
}

// The golden blocks are few; what only one in thousands shows is found against the plain level. Widths leave
// every number of blocks behind the last full register, and blocks of every kind share one.
TEST(S3tc, AllLevelsGiveTheBytesOfThePlainOne)
{
    for (unsigned int seed = 100; seed < 400; ++seed) {
        SCOPED_TRACE(seed);
        Pixels image = makeImage(seed % families, seed, 0);
        Pixels const other = makeImage(seed / families % families, seed + 1000, 0);
        for (std::size_t i = 0; i < image.size(); ++i) {
            image[i] = (i / 4 * seed / 7) % 3 == 0 ? other[i] : image[i];
        }
        unsigned int const width = 4 * (1 + seed % columns);
        std::vector<std::vector<Pixels>> results;
        atEveryLevel([&] {
            std::vector<Pixels> &result = results.emplace_back();
            for (auto const &[encode, blockBytes] : coders) {
                Pixels &blocks = result.emplace_back(width / 4 * blockBytes / 4 + 1);
                blocks.back() = (coder.*encode)(blocks.data(), image.data(), columns * 16, width, 4);
            }
            for (auto const &[decode, blockBytes] : decoders) {
                // The pixels make blocks, too, as many as are read; three more in a row stay as they are.
                std::vector<unsigned short> blocks(width / 4 * blockBytes / 2);
                std::memcpy(blocks.data(), image.data(), blocks.size() * 2);
                Pixels &pixels = result.emplace_back((width + 3) * 4, 0xABABABABu);
                (coder.*decode)(pixels.data(), blocks.data(), width + 3, 4);
                EXPECT_EQ(pixels[width], 0xABABABABu);
            }
        });
        for (std::size_t level = 1; level < results.size(); ++level) {
            ASSERT_EQ(results[level], results[0]) << level;
        }
    }
}

TEST(S3tc, SpecialBlocksAreAsTheFormatsNeedThem)
{
    struct {
        char const *what;
        bool hasHoles;
        unsigned int first, others; // pixel 0, and the other 15
        unsigned int error;
        std::array<unsigned char, 8> block;
    } const rows[] = {
        {"black", false, 0, 0, 0, {0xFF, 0xFF, 0, 0, 0x55, 0x55, 0x55, 0x55}},
        {"one colour once quantised", false, 0x00FF8708, 0x00F8840F, 0, {0x21, 0xFC}},
        {"two colours", false, 0x00F88408, 0x00F88008, 0, {0x21, 0xFC, 0x01, 0xFC, 0x54, 0x55, 0x55, 0x55}},
        {"white", true, 0xFFFFFFFF, 0xFFFFFFFF, 0, {0xFF, 0xFF, 0, 0, 0, 0, 0, 0}},
        {"all transparent", true, 0x7FFFFFFF, 0, 0, {0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
        {"black with a hole", true, 0, 0x80000000, 15 * 127, {0, 0, 0xFF, 0xFF, 0x03, 0, 0, 0}},
        {"blue with a hole", true, 0, 0xFF0000FF, 15 * 127, {0, 0, 0x1F, 0, 0x57, 0x55, 0x55, 0x55}},
    };
    atEveryLevel([&] {
        for (auto const &row : rows) {
            SCOPED_TRACE(row.what);
            Pixels pixels(16, row.others);
            pixels[0] = row.first;
            std::array<unsigned char, 8> block;
            EXPECT_EQ(row.hasHoles ? coder.to_S3TC1a(block.data(), pixels.data(), 16, 4, 4)
                                   : coder.to_S3TC1(block.data(), pixels.data(), 16, 4, 4),
                      row.error);
            EXPECT_EQ(block, row.block);
        }
    });
}

TEST(S3tc, SizesThatAreRefusedWriteNothingAndPartialBlocksAreLeftOut)
{
    Pixels const image(16 * 16, 0xFF336699);
    struct {
        char const *what;
        unsigned int pitch, width, height;
        std::size_t bytes1; // written by DXT1
        std::size_t bytes5; // and by the forms with alpha
    } const rows[] = {
        {"width 6", 64, 6, 8, 0, 32}, {"height 6", 64, 8, 6, 0, 32}, {"pitch 62", 62, 8, 8, 0, 64},
        {"height 3", 64, 8, 3, 0, 0}, {"height 0", 64, 8, 0, 0, 0},  {"width 0", 64, 0, 8, 0, 0},
        {"width 3", 64, 3, 8, 0, 0},  {"whole", 64, 12, 8, 48, 96},
    };
    atEveryLevel([&] {
        for (auto const &row : rows) {
            SCOPED_TRACE(row.what);
            unsigned int format = 77;
            auto const written = [](Bytes const &dest) {
                std::size_t size = dest.size();
                while (size != 0 && dest[size - 1] == 0xEE) {
                    --size;
                }
                return size;
            };
            Bytes dest(256, 0xEE);
            coder.to_S3TC1(dest.data(), image.data(), row.pitch, row.width, row.height);
            EXPECT_EQ(written(dest), row.bytes1);
            dest.assign(256, 0xEE);
            coder.to_S3TC2or3vs4or5(dest.data(), image.data(), row.pitch, row.width, row.height, &format);
            EXPECT_EQ(written(dest), row.bytes5);
            EXPECT_EQ(format, row.bytes5 == 0 ? 77u : 2u);
        }
        Pixels pixels(7 * 7, 1);
        Bytes const blocks(64, 0xFF);
        auto const *const src = reinterpret_cast<unsigned short const *>(blocks.data());
        coder.from_S3TC4or5(pixels.data(), src, 7, 3);
        coder.from_S3TC4or5(pixels.data(), src, 3, 7);
        coder.from_S3TC4or5(nullptr, src, 7, 7);
        coder.from_S3TC4or5(pixels.data(), nullptr, 7, 7);
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 1u), 49);
        coder.from_S3TC4or5(pixels.data(), src, 7, 7);
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), 1u), 49 - 16);
        EXPECT_EQ(coder.to_S3TC4or5(nullptr, image.data(), 64, 16, 16), 0u);
        EXPECT_EQ(coder.to_S3TC4or5(pixels.data(), nullptr, 64, 16, 16), 0u);
    });
    EXPECT_STREQ(coder.getS3TC_name(static_cast<eS3TC>(4)), "cS3TC::getS3TC_name() Unknown S3TC-format");
}

} // namespace
} // namespace Qel
