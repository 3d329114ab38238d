#include "System/Graphics/image/palette.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Qel {
namespace {

TEST(Palette, SetsAndGetsEntriesInTwoOrders)
{
    cPalette palette;
    unsigned char a = 9, b = 9, c = 9;
    palette.setEntry(1, 10, 20, 30);
    palette.setEntry(256, 1, 1, 1);
    palette.getEntry(1, a, b, c);
    EXPECT_TRUE(a == 30 && b == 20 && c == 10);
    palette.swapRedAndBlue();
    palette.getEntry(1, a, b, c);
    EXPECT_TRUE(a == 10 && b == 20 && c == 30);
    unsigned short index = 7;
    EXPECT_FALSE(palette.findColor(30, 20, 10, index));
    EXPECT_EQ(index, 7);
    EXPECT_TRUE(palette.findColor(10, 20, 30, index));
    EXPECT_EQ(index, 1);
}

TEST(Palette, FindsTheNearestEntry)
{
    cPalette palette;
    palette.setDefaultGrayscale();
    palette.setEntry(200, 0, 250, 0);
    struct {
        char const *what;
        unsigned a, b, c;
        unsigned expected;
    } const rows[] = {
        {"equal", 17, 17, 17, 17},
        {"the first of two as near", 10, 10, 11, 10},
        {"the last entry is not looked at", 255, 255, 255, 254},
        {"the key counts only where it is equal", 0, 255, 0, 0},
        {"beside the key", 0, 255, 1, 200},
        {"beyond a byte, and further than 32 bits count", 100000, 100000, 100000, 254},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(palette.findNearestColor(row.a, row.b, row.c), row.expected);
    }
    palette.setEntry(40, 0, 255, 0);
    EXPECT_EQ(palette.findNearestColor(0, 255, 0), 40);
}

TEST(Palette, FilesAreWrittenByteForByteAndReadBack)
{
    test::TempFolder const folder;
    cPalette palette;
    palette.setEntry(0, 1, 2, 3); // bytes 3, 2, 1
    palette.setEntry(255, 255, 0, 128);

    ASSERT_TRUE(palette.saveJascPal("jasc.pal"));
    std::string text = "JASC-PAL\r\n0100\r\n256\r\n3 2 1\r\n";
    for (int i = 1; i < 255; ++i) {
        text += "0 0 0\r\n";
    }
    EXPECT_EQ(test::readFile("jasc.pal"), text + "128 0 255\r\n");
    EXPECT_FALSE(palette.loadJascPal("jasc.pal"));

    ASSERT_TRUE(palette.saveMsPal("riff.pal"));
    // form, length less 8, kind, chunk, its length, version 0x300, 256 entries, the first one
    std::string bytes("RIFF\x14\x04\0\0PAL data\x08\x04\0\0\0\x03\0\x01\x01\x02\x03\0", 28);
    bytes.append(254 * 4, '\0').append("\xFF\0\x80\0", 4).append(4, '\0');
    EXPECT_EQ(test::readFile("riff.pal"), bytes);
    cPalette back;
    ASSERT_TRUE(back.loadMsPal("riff.pal"));
    EXPECT_EQ(std::memcmp(&back, &palette, sizeof back), 0);
    EXPECT_FALSE(palette.saveMsPal("no/such/folder.pal") || palette.loadMsPal("none.pal"));

    struct {
        char const *what;
        std::size_t at;
        char value;
        std::size_t length;
        bool isRead;
        bool hasFirst;
    } const rows[] = {
        {"lengths and chunk are not looked at", 16, 'x', 1052, true, true},
        {"not RIFF", 0, 'x', 1052, false, false},
        {"not PAL", 11, 'x', 1052, false, false},
        {"another version", 21, 4, 1052, false, false},
        {"255 entries", 23, 0, 1052, false, false},
        {"head cut", 0, 'R', 23, false, false},
        {"second entry cut", 0, 'R', 30, true, true},
        {"first entry cut", 0, 'R', 27, true, false},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        std::string changed = bytes.substr(0, row.length);
        changed[row.at] = row.value;
        test::writeFile("changed.pal", changed);
        cPalette read;
        read.setDefaultGrayscale();
        EXPECT_EQ(read.loadMsPal("changed.pal"), row.isRead);
        unsigned char entry[256][3];
        read.getPalette(entry[0]);
        EXPECT_EQ(entry[0][0], row.hasFirst ? 3 : 0);
        EXPECT_EQ(entry[1][0], row.isRead && row.length == 1052 ? 0 : 1) << "what did not arrive stays";
    }
}

} // namespace
} // namespace Qel
