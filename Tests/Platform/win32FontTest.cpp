#include "System/Platform/win32Font.h"

#include "Tests/Tools/tempFolder.h"

#include "System/System/logManager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace Qel {
namespace {

// In the package that scripts/setup.sh installs.
constexpr char const *face = "DejaVu Sans";
constexpr int height = 24;

using Pixel = std::array<unsigned char, 4>; // blue, green, red, alpha

constexpr Pixel nothing{0, 0, 0, 0};
constexpr Pixel black{0, 0, 0, 255};

struct Sheet {
    int width;
    int height;
    std::vector<unsigned char> bytes;

    Sheet(int w, int h) : width(w), height(h), bytes(static_cast<std::size_t>(4 * w * h), 0) {}

    Pixel at(int x, int y) const
    {
        Pixel pixel{};
        if (x >= 0 && y >= 0 && x < width && y < height) {
            std::copy_n(bytes.begin() + 4 * (y * width + x), 4, pixel.begin());
        }
        return pixel;
    }
};

Sheet drawn(int character, int blur, int scanlines, int flags, int x = 4, int y = 4)
{
    Sheet sheet(48, 40);
    Win32Font font;
    EXPECT_TRUE(font.create(face, height, 400, blur, scanlines, flags));
    font.getCharRGBA(character, x, y, sheet.width, sheet.height, sheet.bytes.data());
    return sheet;
}

TEST(Win32Font, OpensAFaceByItsNameOrNotAtAll)
{
    test::TempFolder const folder;
    LogManager log;
    log.createLog("font.log", true, false, true);
    Win32Font font;
    EXPECT_FALSE(font.create("No Such Face", height, 400, 0, 0, 0));
    EXPECT_FALSE(font.isValid());
    EXPECT_NE(test::readFile("font.log").find("Couldn't find windows font 'No Such Face' to load\n"),
              std::string::npos);

    ASSERT_TRUE(font.create("dejavu sans", height, 400, 1, 3, Win32Font::ANTIALIASED));
    EXPECT_STREQ(font.getName(), "dejavu sans");
    EXPECT_TRUE(font.isEqualTo("DejaVu SANS", height, 400, 1, 99, Win32Font::ANTIALIASED));
    EXPECT_FALSE(font.isEqualTo(face, height, 400, 2, 3, Win32Font::ANTIALIASED));
    EXPECT_FALSE(font.isEqualTo(face, height + 1, 400, 1, 3, Win32Font::ANTIALIASED));
    EXPECT_FALSE(font.isEqualTo(face, height, 400, 1, 3, 0));
    os::FontContext context;
    font.setAsActiveFont(&context);
    EXPECT_NE(context.font, nullptr);
    EXPECT_FALSE(Win32Font().create(nullptr, height, 400, 0, 0, 0));
    EXPECT_FALSE(Win32Font().create(face, height, 400, -1, 0, 0));
}

TEST(Win32Font, EffectsMakeCellsLarger)
{
    Win32Font plain;
    ASSERT_TRUE(plain.create(face, height, 400, 0, 0, Win32Font::ANTIALIASED));
    EXPECT_EQ(plain.getHeight(), height) << "a height above 0 is that of the line";
    int a;
    int b;
    int c;
    plain.getCharABCWidths('M', a, b, c);
    struct {
        int blur;
        int flags;
        int taller;
        int before;
        int wider;
        int behind;
    } const rows[] = {{0, 2, 1, 0, 1, -1},
                      {0, 4, 2, -1, 2, -1},
                      {0, 6, 3, -1, 3, -2},
                      {1, 0, 0, -1, 2, -1},
                      {3, 6, 3, -4, 9, -5}};
    for (auto const &row : rows) {
        SCOPED_TRACE(row.flags + 100 * row.blur);
        Win32Font font;
        ASSERT_TRUE(font.create(face, height, 400, row.blur, 0, row.flags | Win32Font::ANTIALIASED));
        int fa;
        int fb;
        int fc;
        font.getCharABCWidths('M', fa, fb, fc);
        EXPECT_EQ(font.getHeight(), height + row.taller);
        EXPECT_EQ(fa - a, row.before);
        EXPECT_EQ(fb - b, row.wider);
        EXPECT_EQ(fc - c, row.behind);
        EXPECT_EQ(font.getCharWidth('M'), fb);
    }
    // Widths below 256 are signed bytes, those above are not.
    Win32Font large;
    ASSERT_TRUE(large.create(face, 400, 400, 0, 0, Win32Font::ANTIALIASED));
    EXPECT_LT(large.getCharWidth('M'), 0);
    EXPECT_GT(large.getCharWidth(0x416), 127);
}

TEST(Win32Font, AntialiasedGlyphsAreWhiteWith65Levels)
{
    Sheet const sheet = drawn('S', 0, 0, Win32Font::ANTIALIASED);
    int inked = 0;
    int between = 0;
    for (int y = 0; y < sheet.height; ++y) {
        for (int x = 0; x < sheet.width; ++x) {
            Pixel const pixel = sheet.at(x, y);
            if (pixel == nothing) {
                continue;
            }
            ++inked;
            between += pixel[3] < 255;
            EXPECT_EQ((Pixel{255, 255, 255, pixel[3]}), pixel);
            int const level = (pixel[3] * 64 + 254) / 255;
            EXPECT_EQ(level * 255 / 64, pixel[3]);
        }
    }
    EXPECT_GT(inked, 40);
    EXPECT_GT(between, 10);
    EXPECT_EQ(drawn(' ', 0, 0, Win32Font::ANTIALIASED).bytes, Sheet(48, 40).bytes);

    // Without it there are two levels, and a glyph at the same place.
    Sheet const hard = drawn('S', 0, 0, 0);
    int apart = 0;
    for (int y = 0; y < hard.height; ++y) {
        for (int x = 0; x < hard.width; ++x) {
            Pixel const pixel = hard.at(x, y);
            EXPECT_TRUE(pixel == nothing || (pixel[0] == 255 && pixel[3] >= 254));
            apart += (pixel[3] != 0) != (sheet.at(x, y)[3] >= 128);
        }
    }
    EXPECT_LT(apart, inked / 3);
}

TEST(Win32Font, ShadowAndOutlineGoAroundTheGlyph)
{
    Sheet const plain = drawn('g', 0, 0, Win32Font::ANTIALIASED);
    Sheet const shadow = drawn('g', 0, 0, Win32Font::ANTIALIASED | Win32Font::DROP_SHADOW);
    Sheet const outline = drawn('g', 0, 0, Win32Font::ANTIALIASED | Win32Font::OUTLINE);
    int outlined = 0;
    for (int y = 1; y < plain.height - 1; ++y) {
        for (int x = 1; x < plain.width - 1; ++x) {
            Pixel const own = plain.at(x, y);
            Pixel const upLeft = plain.at(x - 1, y - 1);
            EXPECT_EQ(shadow.at(x, y), own[3] != 0 ? own : (Pixel{0, 0, 0, upLeft[3]}));
            // An outlined glyph stands one pixel further to the right.
            Pixel const moved = plain.at(x - 1, y);
            if (moved[3] != 0) {
                EXPECT_EQ(outline.at(x, y), moved);
                continue;
            }
            bool touches = false;
            for (int i = 0; i < 9; ++i) {
                touches |= plain.at(x - 1 + i % 3 - 1, y + i / 3 - 1)[3] != 0;
            }
            outlined += touches && outline.at(x, y) == black;
            EXPECT_TRUE(outline.at(x, y) == black || outline.at(x, y) == nothing);
            EXPECT_TRUE(touches || outline.at(x, y) == nothing);
        }
    }
    EXPECT_GT(outlined, 40);
}

TEST(Win32Font, BlurGoesByItsKernelOverTheWholeBuffer)
{
    constexpr int radius = 3;
    Sheet const plain = drawn('o', 0, 0, Win32Font::ANTIALIASED, 4 + radius);
    Sheet const blurred = drawn('o', radius, 0, Win32Font::ANTIALIASED);
    double const s = radius * 0.683;
    auto const weight = [&](int i) { return std::pow(2.7, -i * i / (2 * s * s)) / std::sqrt(s * s * 6.28); };
    for (int y = 0; y < plain.height; ++y) {
        for (int x = 0; x < plain.width; ++x) {
            double sum = 0;
            for (int j = -radius; j <= radius; ++j) {
                for (int i = -radius; i <= radius; ++i) {
                    sum += weight(i) * weight(j) * plain.at(x + i, y + j)[0];
                }
            }
            Pixel const pixel = blurred.at(x, y);
            EXPECT_NEAR(pixel[0], std::min(sum, 255.0), 1.0);
            EXPECT_EQ((Pixel{pixel[0], pixel[0], pixel[0], 255}), pixel);
        }
    }
    // A radius of 1 makes room and no blur; a glow without a blur of the font's own is the plain glyph.
    EXPECT_EQ(drawn('o', 1, 0, Win32Font::ANTIALIASED, 3).bytes,
              drawn('o', 0, 0, Win32Font::ANTIALIASED).bytes);
    Win32Font font;
    ASSERT_TRUE(font.create(face, height, 400, 0, 0, Win32Font::ANTIALIASED));
    Sheet glow(48, 40);
    font.getGlowRGBA(' ', 4, 4, glow.width, glow.height, glow.bytes.data());
    EXPECT_EQ(glow.bytes, Sheet(48, 40).bytes);
}

TEST(Win32Font, ScanLinesAndTheRotaryLineAreRows)
{
    Sheet const plain = drawn('W', 0, 0, Win32Font::ANTIALIASED, 0, 4);
    Sheet const lines = drawn('W', 0, 3, Win32Font::ANTIALIASED, 0, 4);
    Sheet const rotary = drawn('W', 0, 0, Win32Font::ANTIALIASED | Win32Font::ROTARY, 0, 4);
    for (int y = 0; y < plain.height; ++y) {
        for (int x = 0; x < plain.width; ++x) {
            Pixel wanted = plain.at(x, y);
            if (y >= 4 && (y - 4) % 3 != 0) {
                wanted[0] = wanted[1] = wanted[2] = static_cast<unsigned char>(wanted[0] * 0.7f);
            }
            EXPECT_EQ(lines.at(x, y), wanted);
            EXPECT_EQ(rotary.at(x, y), y == 4 + 20 ? (Pixel{127, 127, 127, 255}) : plain.at(x, y));
        }
    }
}

TEST(Win32Font, WritesInsideTheBufferOnly)
{
    for (int const flags : {0, 1, 1 | 2 | 4 | 8, 2 | 4 | 8 | 64 | 128 | 256, 32}) {
        for (int const blur : {0, 2}) {
            Win32Font font;
            ASSERT_TRUE(font.create(face, height, 700, blur, 2, flags));
            for (auto const &[width, rows] : {std::pair{1, 1}, {5, 30}, {30, 5}}) {
                for (int const at : {-1'000'000, -20, 0, 3, 1'000'000}) {
                    for (int const character :
                         {-1, 0, 9, int{' '}, int{'g'}, 255, 0x416, 0x10FFFF, 0x7FFFFFFF}) {
                        std::vector<unsigned char> bytes(static_cast<std::size_t>(4 * width * rows + 64),
                                                         0xA5);
                        font.getCharRGBA(character, at, -at / 2, width, rows, bytes.data() + 32);
                        EXPECT_EQ(std::count(bytes.begin(), bytes.begin() + 32, 0xA5), 32);
                        EXPECT_EQ(std::count(bytes.end() - 32, bytes.end(), 0xA5), 32);
                    }
                }
            }
            font.getCharRGBA('g', 0, 0, 0, 10, nullptr);
        }
    }
    Win32Font().getCharRGBA('g', 0, 0, 10, 10, nullptr);
}

} // namespace
} // namespace Qel
