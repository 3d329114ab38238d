#include "System/Graphics/image/image.h"
#include "System/math/math.h"
#include "Tests/Graphics/image/plainImage.h"
#include "Tests/math/atEveryLevel.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <random>
#include <vector>

namespace Qel {
namespace {

// An 8-bit image whose pixels count up from 0.
cImage numbered(unsigned short width, unsigned short height, unsigned short pitch)
{
    cImage image;
    image.setCanvas(PAL8, width, height, pitch, nullptr);
    for (unsigned i = 0; i < unsigned{width} * height; ++i) {
        image.setPixelPal(i % width, i / width, static_cast<int>(i));
    }
    return image;
}

std::vector<unsigned> pixelsOf(cImage const &image)
{
    std::vector<unsigned> pixels;
    unsigned const width = image.getWidth();
    for (unsigned i = 0; i < width * image.getHeight(); ++i) {
        pixels.push_back(image.getPixel(i % width, i / width));
    }
    return pixels;
}

cImage noise(ePixelFormat format, unsigned short width, unsigned short height, unsigned short pitch,
             unsigned seed)
{
    cImage image;
    image.setCanvas(format, width, height, pitch, nullptr);
    std::mt19937 random(seed);
    for (unsigned i = 0; i < unsigned{width} * height; ++i) {
        image.setPixel(i % width, i / width, Color(static_cast<std::uint32_t>(random())));
    }
    return image;
}

TEST(Image, CanvasesHaveLimitsAndBeginAsZero)
{
    struct {
        char const *what;
        cPixelFormat format;
        unsigned short width, height, pitch;
        unsigned bytes;
        bool isMade;
    } const rows[] = {
        {"pitch beyond the width", R8G8B8, 300, 2, 512, 3072, true},
        {"pitch below the width", R8G8B8, 300, 2, 299, 0, false},
        {"more than 32 bits", A8R8G8B8, 65535, 65535, 65535, 0, false},
        {"more than 1 GiB", A8R8G8B8, 32768, 8193, 32768, 0, false},
        {"no pixels", R8G8B8, 0, 5, 0, 0, true},
        {"pixels of no byte", cPixelFormat(1, 1, 0, 0, 0), 8, 8, 8, 0, true},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        cImage image;
        ASSERT_EQ(image.setCanvas(A8R8G8B8, 1, 1, nullptr), 4u);
        EXPECT_EQ(image.setCanvas(row.format, row.width, row.height, row.pitch, nullptr), row.bytes);
        EXPECT_EQ(image.getData() != nullptr, row.isMade);
        EXPECT_EQ(image.getWidth(), row.isMade ? row.width : 1);
        EXPECT_EQ(image.getHeight(), row.isMade ? row.height : 1);
        EXPECT_EQ(std::count(image.getData(), image.getData() + row.bytes, 0), row.bytes);
    }
}

// Nothing has a pixel to work on: after a canvas that could not be made, with sizes left over, and in one of
// no size.
TEST(Image, OperationsWithoutPixelsDoNothing)
{
    cImage failed;
    failed.setCanvas(A8R8G8B8, 3, 3, nullptr);
    failed.setCanvas(A8R8G8B8, 3, 3, 1, nullptr);
    cImage empty;
    empty.setCanvas(A8R8G8B8, 0, 3, nullptr);
    cImage flat;
    flat.setCanvas(A8R8G8B8, 3, 0, nullptr);
    for (cImage *const image : {&failed, &empty, &flat}) {
        bool const hasData = image->getData() != nullptr;
        cImage target;
        int x, y, w, h;
        image->setPixel(0, 0, Color(1));
        image->clrCanvas();
        EXPECT_EQ(image->getPixel(0, 0), 0u);
        EXPECT_EQ(image->mirrorVertical(), hasData);
        EXPECT_EQ(image->mirrorHorizontal(), hasData);
        EXPECT_EQ(image->applyAction(IMAGECOMMAND_GRAYSCALE), hasData);
        EXPECT_EQ(image->applyFilter(IMAGEFILTER_BLUR), hasData);
        EXPECT_FALSE(image->crop(0, 0, 1, 1) || image->bumpmap(target, 0) || image->hasAlpha());
        EXPECT_FALSE(image->cropAlphaBox(x, y, w, h));
        EXPECT_EQ(target.setImage(R8G8B8, *image), 0u);
        EXPECT_EQ(cImage(*image).getWidth(), image->getWidth());
    }
}

TEST(Image, CropsWhatLiesInside)
{
    struct {
        char const *what;
        int x, y, w, h;
        std::vector<unsigned> expected; // none: refused
    } const rows[] = {
        {"inside", 1, 1, 2, 2, {5, 6, 9, 10}},
        {"negative sizes", 3, 3, -2, -2, {5, 6, 9, 10}},
        {"a column", 3, 0, 1, 3, {3, 7, 11}},
        {"beyond the right", 3, 0, 2, 1, {}},
        {"above", 0, -1, 1, 1, {}},
        {"no size", 0, 0, 0, 2, {}},
        {"too large", 0, 0, 5, 1, {}},
        {"the ends of int", INT_MIN, INT_MAX, INT_MIN, INT_MIN, {}},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        cImage image = numbered(4, 3, 6);
        std::vector<unsigned> const before = pixelsOf(image);
        EXPECT_EQ(image.crop(row.x, row.y, row.w, row.h), !row.expected.empty());
        EXPECT_EQ(pixelsOf(image), row.expected.empty() ? before : row.expected);
        EXPECT_EQ(image.getPitch(), row.expected.empty() ? 6 : image.getWidth());
    }
}

TEST(Image, CopiesPartsCutToBothImages)
{
    struct {
        char const *what;
        unsigned short srcX, srcY, w, h, dstX, dstY;
        std::vector<unsigned> expected; // 3 x 2, zero before; none: refused
    } const rows[] = {
        {"inside", 1, 1, 2, 1, 0, 0, {5, 6, 0, 0, 0, 0}},
        {"cut by the target", 0, 0, 9, 9, 1, 1, {0, 0, 0, 0, 0, 1}},
        {"cut by the source", 3, 2, 9, 9, 0, 0, {11, 0, 0, 0, 0, 0}},
        {"nothing to copy", 0, 0, 1, 0, 0, 0, {0, 0, 0, 0, 0, 0}},
        {"corner on the edge of the target", 0, 0, 1, 1, 0, 2, {0, 0, 0, 0, 0, 0}},
        {"corner outside the source", 5, 0, 1, 1, 0, 0, {}},
        {"corner outside the target", 0, 0, 1, 1, 0, 3, {}},
    };
    cImage source = numbered(4, 3, 5);
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        cImage target;
        target.setCanvas(PAL8, 3, 2, 4, nullptr);
        EXPECT_EQ(target.copyPart(source, row.srcX, row.srcY, row.w, row.h, row.dstX, row.dstY),
                  !row.expected.empty());
        EXPECT_EQ(pixelsOf(target), row.expected.empty() ? std::vector<unsigned>(6) : row.expected);
    }
    EXPECT_TRUE(source.copyPart(source, 0, 0, 3, 2, 1, 1)) << "onto itself";
    EXPECT_EQ(pixelsOf(source), (std::vector<unsigned>{0, 1, 2, 3, 4, 0, 1, 2, 8, 4, 5, 6}));
    cImage other;
    other.setCanvas(R5G6B5, 4, 3, nullptr);
    EXPECT_FALSE(other.copyPart(source, 0, 0, 1, 1, 0, 0));
}

TEST(Image, ReportsTheBoxOfItsAlpha)
{
    cImage image;
    image.setCanvas(A8R8G8B8, 6, 5, nullptr);
    auto const box = [&] {
        std::array<int, 4> b{};
        EXPECT_TRUE(image.cropAlphaBox(b[0], b[1], b[2], b[3]));
        return b;
    };
    EXPECT_FALSE(image.hasAlpha());
    EXPECT_EQ(box(), (std::array{0, 0, 5, 4})) << "no alpha anywhere: all of it";
    image.setPixel(2, 1, Color(0x01000000));
    EXPECT_TRUE(image.hasAlpha());
    EXPECT_EQ(box(), (std::array{2, 1, 0, 0}));
    image.setPixel(4, 3, Color(0xFF000000));
    EXPECT_EQ(box(), (std::array{2, 1, 2, 2}));
    image.setCanvas(R5G6B5, 1, 1, nullptr);
    int x, y, w, h;
    EXPECT_FALSE(image.cropAlphaBox(x, y, w, h));
}

TEST(Image, ConvertsToOtherFormatsWithThePaletteAndItsKey)
{
    cImage image = numbered(3, 1, 4);
    cPalette palette;
    palette.setEntry(0, 30, 20, 10); // red 10, green 20, blue 30
    palette.setEntry(1, 0, 255, 0);  // the key
    image.setPalette(palette);
    unsigned pixels[3];
    EXPECT_EQ(image.getImage(A8R8G8B8, nullptr), 12u);
    EXPECT_EQ(image.getImage(A8R8G8B8, reinterpret_cast<unsigned char *>(pixels)), 12u);
    EXPECT_TRUE(pixels[0] == 0xFF0A141E && pixels[1] == 0x0000FF00 && pixels[2] == 0xFF000000);

    cImage wide = noise(A8R8G8B8, 3, 2, 5, 1);
    wide.setPixel(1, 1, Color(0x80FF8040));
    cImage narrow;
    EXPECT_EQ(narrow.setImage(R5G6B5, wide), 6u);
    EXPECT_EQ(narrow.getPixel(1, 1), 0xFC08u);
    EXPECT_EQ(narrow.setImage(A1R5G5B5, narrow), 6u) << "onto itself";
    EXPECT_EQ(narrow.getPixel(1, 1), 0xFE08u);
    unsigned short packed[6];
    wide.getImage(R5G6B5, reinterpret_cast<unsigned char *>(packed));
    EXPECT_EQ(packed[4], 0xFC08) << "rows without their gaps";

    cPixelFormat const vast(0x7FFFFFFF, 0, 0, 0, 0); // 256 MiB a pixel
    EXPECT_EQ(numbered(17, 1, 17).getImage(vast, nullptr), 0u) << "4 GiB do not fit the count";
}

TEST(Image, FiltersTakeChannelsOfAnyMask)
{
    cImage image;
    ASSERT_NE(image.setCanvas(cPixelFormat(32, 0x3FF, 0, 0, 0), 8, 8, nullptr), 0u);
    for (unsigned i = 0; i < 64; ++i) {
        image.setPixel(i % 8, i / 8, 2); // reads as 2 << 30
    }
    short const minusOne[5][5] = {{}, {}, {0, 0, -1, 0, 0}, {}, {}};
    EXPECT_TRUE(image.applyFilter(minusOne)) << "the sum is the smallest number that there is";
    // A mask with a gap goes the same way.
    image.setCanvas(cPixelFormat(8, 0x0B, 0, 0, 0), 9, 9, nullptr);
    for (unsigned i = 0; i < 81; ++i) {
        image.setPixel(i % 9, i / 9, Color(i));
    }
    cImage expected = image;
    short const corners[5][5] = {{1, 0, 0, 0, 2}, {}, {}, {}, {3, 0, 0, 0, 1}};
    plain::filter(expected, corners);
    EXPECT_TRUE(image.applyFilter(corners) && pixelsOf(image) == pixelsOf(expected));
}

// A slope of 255 from the left: nx = -4 * 255 / 255, so l = 1 / sqrt(17).
TEST(Image, BumpMapsPointAlongTheSlope)
{
    float (*const before)(float) = cMath::sqrt;
    cMath::sqrt = cMath::sqrt_sse;
    cImage image;
    image.setCanvas(A8R8G8B8, 4, 4, nullptr);
    for (unsigned y = 0; y < 4; ++y) {
        image.setPixel(2, y, Color(0xFFFF0000));
    }
    cImage map;
    ASSERT_TRUE(image.bumpmap(map, 0));
    // (1 - 4 / sqrt(17)) 127.5 = 3.81; 127.5; (1 + 1 / sqrt(17)) 127.5 = 158.4
    EXPECT_EQ(map.getPixel(1, 1), 0x9E7F03u);
    EXPECT_EQ(map.getPixel(2, 1), 0xFF7F7Fu) << "flat on the ridge";
    ASSERT_TRUE(image.bumpmap(map, 1));
    EXPECT_EQ(map.getPixel(1, 1), 0x000085u); // -123.2 as a signed byte
    EXPECT_FALSE(image.bumpmap(map, 2) || image.bumpmap(image, 0));
    cMath::sqrt = before;
}

// The fast forms against the rules as they are written down, at every level, in every format and at sizes
// that end inside a vector.
TEST(Image, EditsGiveTheSameAtEveryLevel)
{
    struct {
        unsigned short width, height, pitch;
    } const sizes[] = {{1, 1, 1}, {1, 7, 3}, {2, 2, 2}, {5, 1, 5}, {3, 4, 3}, {67, 9, 70}, {131, 6, 131}};
    short const odd[5][5] = {
        {32767, 0, -5, 0, 0}, {0, -9, 0, 0, 0}, {0, 0, 2, 0, 0}, {0, 0, 0, 1, 0}, {0, 0, 0, 0, -32768}};
    float (*const before)(float) = cMath::sqrt;
    for (unsigned format = 0; format < PAL8; ++format) {
        for (auto const &size : sizes) {
            cImage const image =
                noise(static_cast<ePixelFormat>(format), size.width, size.height, size.pitch, format);
            cImage got = image;
            cImage expected = image;
            auto const check = [&](char const *what, bool isDone) {
                ASSERT_TRUE(isDone) << what;
                ASSERT_EQ(pixelsOf(got), pixelsOf(expected))
                    << what << ", format " << format << ", width " << size.width;
                got = expected = image;
            };
            atEveryLevel([&] {
                plain::grayscale(expected);
                check("gray", got.applyAction(IMAGECOMMAND_GRAYSCALE));
                plain::mirrorHorizontal(expected);
                check("horizontal", got.mirrorHorizontal());
                plain::mirrorVertical(expected);
                check("vertical", got.mirrorVertical());
                plain::filter(expected, odd);
                check("odd kernel", got.applyFilter(odd));
                for (auto const root : {before, cMath::sqrt_sse, +[](float x) { return x * 1.25f; }}) {
                    cMath::sqrt = root;
                    for (int const mode : {0, 1}) {
                        plain::bumpmap(image, expected, mode);
                        check("bumps", image.bumpmap(got, mode));
                    }
                }
                cMath::sqrt = before;
            });
        }
    }
}

// All nine, from their published rows.
TEST(Image, ReadyFiltersAreTheirKernelsAndOthersAreRefused)
{
    short const kernels[9][5][5] = {
        {{0, 1, 2, 1, 0}, {1, 3, 10, 3, 1}, {2, 10, 90, 10, 2}, {1, 3, 10, 3, 1}, {0, 1, 2, 1, 0}},
        {{}, {0, 1, 3, 1, 0}, {0, 3, 9, 3, 0}, {0, 1, 3, 1, 0}, {}},
        {{1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}, {1, 1, 1, 1, 1}},
        {{}, {0, -1, -3, -1, 0}, {0, -3, 41, -3, 0}, {0, -1, -3, -1, 0}, {}},
        {{-1, -1, -1, -1, -1},
         {-1, -1, -1, -1, -1},
         {-1, -1, 49, -1, -1},
         {-1, -1, -1, -1, -1},
         {-1, -1, -1, -1, -1}},
        {{}, {0, 1, -2, 1, 0}, {0, -2, 5, -2, 0}, {0, 1, -2, 1, 0}, {}},
        {{1, 0, 0, 0, 1}, {}, {}, {}, {1, 0, 0, 0, 1}},
        {{}, {}, {1, 2, 3, 2, 1}, {}, {}},
        {{}, {}, {0, 0, 1, 0, 0}, {0, 1, 1, 1, 0}, {}},
    };
    for (unsigned i = 0; i < 9; ++i) {
        cImage image = noise(A8R8G8B8, 37, 11, 37, i);
        cImage expected = image;
        plain::filter(expected, kernels[i]);
        ASSERT_TRUE(image.applyFilter(static_cast<eImageFilter>(i + 1)));
        EXPECT_EQ(pixelsOf(image), pixelsOf(expected)) << i + 1;
    }
    short const noSum[5][5] = {{1, -1}};
    cImage image = noise(A8R8G8B8, 3, 3, 3, 9);
    cImage indexed = numbered(3, 3, 3);
    EXPECT_FALSE(image.applyFilter(noSum) || image.applyFilter(static_cast<eImageFilter>(10)) ||
                 image.applyFilter(static_cast<eImageFilter>(0)) || indexed.applyFilter(IMAGEFILTER_BLUR));
}

} // namespace
} // namespace Qel
