#include "System/Graphics/image/pixelFormat.h"
#include "Tests/Graphics/image/plainImage.h"
#include "Tests/math/atEveryLevel.h"

#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

namespace Qel {
namespace {

TEST(PixelFormat, PacksByDroppingLowBitsAndUnpacksByZeros)
{
    struct {
        char const *what;
        cPixelFormat format;
        unsigned r, g, b, a;
        unsigned pixel;
        std::array<unsigned, 4> back; // red, green, blue, alpha
    } const rows[] = {
        {"5 and 6 bits", R5G6B5, 255, 255, 255, 0, 0xFFFF, {248, 252, 248, 255}},
        {"order of channels", B5G6R5, 248, 4, 16, 255, 0x103F, {248, 4, 16, 255}},
        {"one bit of alpha", A1R5G5B5, 8, 16, 24, 127, 0x0443, {8, 16, 24, 0}},
        {"spare bits stay 0", A1R4G4B4, 255, 255, 255, 128, 0xFBDE, {240, 240, 240, 128}},
        {"spare bits, other order", A1B4G4R4, 16, 32, 48, 255, 0x9882, {16, 32, 48, 128}},
        {"24 bits with alpha outside", A8R8G8B8P24, 1, 2, 3, 4, 0x04010203, {1, 2, 3, 4}},
        {"no channels", PAL8, 1, 2, 3, 4, 0, {0, 0, 0, 255}},
        // 8 - 10 is 30 modulo 32: packing drops all, unpacking keeps the two lowest bits at the top.
        {"10 bits", cPixelFormat(32, 0x3FF, 0, 0, 0), 255, 0, 0, 0, 0, {0, 0, 0, 255}},
        // The run of set bits ends at the gap: 2 bits, while the mask takes a third.
        {"a mask with a gap", cPixelFormat(16, 0x0B, 0, 0, 0), 255, 0, 0, 0, 0x03, {192, 0, 0, 255}},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        unsigned const pixel = row.format.buildPixel(row.r, row.g, row.b, row.a);
        EXPECT_EQ(pixel, row.pixel);
        EXPECT_EQ((std::array{row.format.getRedBits(pixel), row.format.getGreenBits(pixel),
                              row.format.getBlueBits(pixel), row.format.getAlphaBits(pixel)}),
                  row.back);
    }
    EXPECT_EQ(cPixelFormat(32, 0x3FF, 0, 0, 0).getRedBits(0x3FF), 0xC0000000u);
}

TEST(PixelFormat, FloatsAreSharesOfTheWholeMask)
{
    cPixelFormat const format(A8R8G8B8);
    EXPECT_EQ(format.buildPixel(1.0f, 1.0f, 1.0f, 1.0f), 0xFFFFFFFFu);
    // 0xFF0000 / 2 = 0x7F8000, cut to the mask.
    EXPECT_EQ(format.buildPixel(0.5f, 0.0f, 0.0f, 0.0f), 0x7F0000u);
    EXPECT_EQ(format.buildPixel(NAN, INFINITY, -INFINITY, 0.0f), 0u);
    // Numbers of several kinds: all whole ones are channels, one float makes all shares.
    unsigned const value = 8;
    EXPECT_EQ(format.buildPixel(value, value, value, 255), 0xFF080808);
    EXPECT_EQ(format.buildPixel(8, 8, 8, 255), 0xFF080808);
    EXPECT_EQ(format.buildPixel(1.0f, 0, 0, 1), 0xFFFF0000);
    EXPECT_EQ(format.buildPixel(0.0, 1.0, 0.0, 0.0), 0x0000FF00u);
}

TEST(PixelFormat, IsEqualByMasksAndTakesOnlyKnownNames)
{
    cPixelFormat byMasks(32, 0xFF0000, 0xFF00, 0xFF, 0);
    EXPECT_TRUE(byMasks == cPixelFormat(X8R8G8B8) && byMasks != cPixelFormat(A8R8G8B8));
    EXPECT_EQ(byMasks.getFormat(), A8R8G8B8) << "masks do not change the name";
    EXPECT_EQ(byMasks.getAlphaShift(), 32u);
    EXPECT_FALSE(byMasks.setFormat(static_cast<ePixelFormat>(16)));
    EXPECT_EQ(byMasks.getAlphaMask(), 0u);
}

TEST(PixelFormat, ConvertsUntilOneSideIsFull)
{
    unsigned char const red565[] = {0x00, 0xF8, 0xE0, 0x07, 0x12}; // red, green, half a pixel
    unsigned char wide[11];
    std::memset(wide, 0xEE, sizeof wide);
    EXPECT_EQ(cPixelFormat::convertStream(A8R8G8B8, wide, 11, R5G6B5, const_cast<unsigned char *>(red565), 5),
              3u);
    unsigned char const expected[] = {0, 0, 248, 255, 0, 252, 0, 255, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(std::memcmp(wide, expected, sizeof wide), 0);
    EXPECT_EQ(cPixelFormat::convertStream(A8R8G8B8, wide, 3, R5G6B5, red565, 4), 3u) << "no room for one";
    EXPECT_EQ(cPixelFormat::convertStream(A8R8G8B8, wide, 0, R5G6B5, red565, 4), 0u);
}

// The vector forms of all pairs, against the rule as it is written down: every 16-bit pixel, any others.
TEST(PixelFormat, EveryPairGivesTheSameAtEveryLevel)
{
    std::mt19937 random(7);
    std::vector<unsigned char> source(65536 * 4);
    // All with masks, one with wide channels, and one whose red lies beyond the pixel.
    constexpr unsigned numFormats = PAL8 + 2;
    auto const formatOf = [](unsigned i) {
        return i == PAL8       ? cPixelFormat(32, 0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000)
               : i == PAL8 + 1 ? cPixelFormat(16, 0xFF0000, 0x07E0, 0x1F, 0)
                               : cPixelFormat(static_cast<ePixelFormat>(i));
    };
    for (unsigned from = 0; from < numFormats; ++from) {
        cPixelFormat const fromFormat = formatOf(from);
        std::size_t const pixels = fromFormat.getBPP() == 16 ? 65536 : 4099;
        for (std::size_t i = 0; i < pixels; ++i) {
            unsigned const pixel =
                fromFormat.getBPP() == 16 ? static_cast<unsigned>(i) : static_cast<unsigned>(random());
            std::memcpy(&source[1 + i * fromFormat.getBytePerPixel()], &pixel, 4);
        }
        for (unsigned to = 0; to < numFormats; ++to) {
            cPixelFormat const toFormat = formatOf(to);
            std::vector<unsigned char> expected(pixels * toFormat.getBytePerPixel());
            plain::convert(toFormat, expected.data(), fromFormat, &source[1], pixels);
            auto const expectConverted = [&](unsigned char *dst, unsigned char const *src,
                                             std::size_t count) {
                std::size_t const bytes = count * toFormat.getBytePerPixel();
                EXPECT_EQ(
                    cPixelFormat::convertStream(toFormat, dst, static_cast<unsigned>(bytes), fromFormat, src,
                                                static_cast<unsigned>(count * fromFormat.getBytePerPixel())),
                    0u);
                ASSERT_EQ(std::memcmp(dst, expected.data(), bytes), 0)
                    << from << " to " << to << ", " << count << (dst == src ? " in place" : "");
            };
            atEveryLevel([&] {
                // Whole, and at lengths that end inside a vector; what lies behind stays.
                for (std::size_t const count : {pixels, std::size_t{random() % 300}}) {
                    std::vector<unsigned char> got(count * toFormat.getBytePerPixel() + 1, 0xEE);
                    expectConverted(got.data(), &source[1], count);
                    ASSERT_EQ(got.back(), 0xEE);
                }
                if (toFormat.getBPP() <= fromFormat.getBPP()) { // in place, where pixels get no wider
                    std::vector<unsigned char> both = source;
                    expectConverted(&both[1], &both[1], pixels);
                }
            });
        }
    }
}

TEST(PixelFormat, ConvertsChannelsAsNumbersWhereAsked)
{
    struct {
        ePixelFormat to, from;
        unsigned source, expected;
    } const rows[] = {
        {A8R8G8B8, R5G6B5, 0xFFFF, 0xFF1F3F1F}, // 31, 63, 31; alpha that is missing is whole
        {A1R5G5B5, X1R5G5B5, 0x7FFF, 0xFFFF},
        {R5G6B5, X8R8G8B8, 0x010203, 0x0843}, // 1, 2, 3 as they are
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.to);
        unsigned result = 0;
        auto const *const source = reinterpret_cast<unsigned char const *>(&row.source);
        EXPECT_EQ(cPixelFormat::convertStreamFS(row.to, reinterpret_cast<unsigned char *>(&result), row.from,
                                                source, 1, 1),
                  1u);
        EXPECT_EQ(result, row.expected);
    }
}

} // namespace
} // namespace Qel
