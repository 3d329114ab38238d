#include "System/File/fileMem.h"
#include "System/Graphics/image/image.h"
#include "System/Graphics/image/io_bmp.h"
#include "System/Graphics/image/io_dds.h"
#include "System/Graphics/image/io_ico.h"
#include "System/Graphics/image/io_jpg.h"
#include "System/Graphics/image/io_pcx.h"
#include "System/Graphics/image/io_tga.h"
#include "System/System/string.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace Qel {
namespace {

cIO_tga tga;
cIO_bmp bmp;
cIO_pcx pcx;
cIO_ico ico;
cIO_dds dds;
cIO_jpg jpg;

using Bytes = std::vector<unsigned char>;

struct Loaded {
    bool isRead = false;
    cImage image;
};

Loaded load(iImageIO &format, Bytes const &bytes, unsigned flags = 0)
{
    cFileMem file(static_cast<unsigned>(bytes.size()), bytes.data());
    Loaded loaded;
    loaded.isRead = format.load(file, loaded.image, flags);
    return loaded;
}

Bytes save(iImageIO &format, cImage &image, unsigned flags = 0)
{
    cFileMem file;
    EXPECT_TRUE(format.save(file, image, flags));
    auto const *const bytes = static_cast<unsigned char const *>(file.getData());
    return Bytes(bytes, bytes + file.size());
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (Bytes const &part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes bytesOf(cImage const &image)
{
    return Bytes(image.getData(), image.getData() + std::size_t{image.getBytesPerPixel()} * image.getPitch() *
                                                        image.getHeight());
}

struct Row {
    char const *what;
    Bytes head;
    Bytes rest = {};
    Bytes pixels = {}; // rows from the top; none: refused
};

void expectLoads(iImageIO &format, std::span<Row const> rows)
{
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        Loaded const loaded = load(format, joined({row.head, row.rest}));
        ASSERT_EQ(loaded.isRead, !row.pixels.empty());
        if (loaded.isRead) {
            EXPECT_EQ(bytesOf(loaded.image), row.pixels);
        }
    }
}

// The picture that makeImages.sh draws.
struct Rgba {
    int channel[4];
};

Rgba drawn(int width, int x, int y)
{
    return width == 16 ? Rgba{{15 * x, 20 * y, x * y, 255 - 10 * x}}
                       : Rgba{{20 * x, 36 * y, 3 * x * y, 255 - 10 * x}};
}

enum Order { RGB, BGR, BGRA, INDEXED, UNSEEN };

Rgba seen(cImage &image, Order order, int x, int y)
{
    unsigned pixel = image.getPixel(static_cast<unsigned>(x), static_cast<unsigned>(y));
    if (order == INDEXED) {
        unsigned char r, g, b;
        image.getPalette().getEntry(static_cast<unsigned short>(pixel), r, g, b);
        pixel = r | unsigned{g} << 8 | unsigned{b} << 16;
    }
    int const ends[] = {static_cast<int>(pixel & 255), static_cast<int>(pixel >> 16 & 255)};
    bool const isRedLow = order == RGB || order == INDEXED;
    return {
        {ends[!isRedLow], static_cast<int>(pixel >> 8 & 255), ends[isRedLow], static_cast<int>(pixel >> 24)}};
}

TEST(ImageFile, FilesOfOtherProgramsLoadOrAreRefused)
{
    struct {
        char const *file;
        iImageIO &reader;
        bool isRead;
        ePixelFormat format;
        Order order;
        bool isTurned = false; // the file begins with the top row
        int tolerance = 0;
    } const rows[] = {
        {"tga/pil24.tga", tga, true, B8G8R8, BGR},
        {"tga/pil24top.tga", tga, true, B8G8R8, BGR, true},
        {"tga/pil32runs.tga", tga, true, X8B8G8R8, BGRA},
        {"tga/pilPalette.tga", tga, true, PAL8, INDEXED},
        {"tga/pilGray.tga", tga, true, A8B8G8R8, UNSEEN}, // its one byte a pixel is taken for four
        {"tga/im24.tga", tga, true, B8G8R8, BGR, true},
        {"tga/im24runs.tga", tga, true, B8G8R8, BGR, true},
        {"tga/im32.tga", tga, true, A8B8G8R8, BGRA, true},
        {"tga/imPalette.tga", tga, true, PAL8, INDEXED, true, 80}, // 16 colours
        {"tga/imPaletteRuns.tga", tga, false, PAL8, UNSEEN},       // type 9
        {"bmp/pil24.bmp", bmp, true, R8G8B8, BGR},
        {"bmp/pil32.bmp", bmp, true, A8R8G8B8, BGRA},
        {"bmp/pil8.bmp", bmp, true, PAL8, INDEXED},
        {"bmp/pil1.bmp", bmp, true, PAL8, UNSEEN},
        {"bmp/im24.bmp", bmp, true, R8G8B8, BGR},
        {"bmp/imFields32.bmp", bmp, true, A8R8G8B8, BGRA},
        {"bmp/im565.bmp", bmp, true, B5G6R5, UNSEEN}, // its masks are not looked at
        {"bmp/im555.bmp", bmp, true, B5G6R5, UNSEEN},
        {"bmp/im8.bmp", bmp, true, PAL8, INDEXED},
        {"bmp/im8runs.bmp", bmp, false, PAL8, UNSEEN},
        {"bmp/im1.bmp", bmp, true, PAL8, UNSEEN},
        {"bmp/imOs2.bmp", bmp, false, PAL8, UNSEEN},  // a shorter second head
        {"pcx/pil24.pcx", pcx, true, R8G8B8, UNSEEN}, // a padded plane runs over into the next
        {"pcx/pil8.pcx", pcx, true, PAL8, INDEXED},
        {"pcx/pil1.pcx", pcx, false, PAL8, UNSEEN},
        {"pcx/im24.pcx", pcx, true, R8G8B8, RGB},
        {"pcx/im8.pcx", pcx, true, PAL8, INDEXED},
        {"ico/im4.ico", ico, true, PAL8, INDEXED, false, 80},
        {"ico/im8.ico", ico, true, PAL8, INDEXED},
        {"ico/imTwo.ico", ico, true, PAL8, INDEXED},
        {"ico/pil32.ico", ico, false, PAL8, UNSEEN},
        {"ico/pilPng.ico", ico, false, PAL8, UNSEEN},
        {"dds/pil32.dds", dds, true, A8R8G8B8, BGRA},
        {"dds/im32.dds", dds, true, A8R8G8B8, BGRA},
        {"dds/imDxt1.dds", dds, true, A8R8G8B8, BGR, false, 48},
        {"dds/imDxt5.dds", dds, true, A8R8G8B8, BGRA, false, 48},
        {"dds/imOdd.dds", dds, true, A8R8G8B8, UNSEEN},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.file);
        cImage image;
        ASSERT_EQ(row.reader.loadEx(String(QEL_TEST_IMAGES) + row.file, image, 0), row.isRead);
        if (!row.isRead) {
            continue;
        }
        int const width = row.file[0] == 'i' || (row.file[0] == 'd' && row.order != UNSEEN) ? 16 : 13;
        int const height = width == 16 ? 12 : 7;
        ASSERT_EQ(image.getPixelFormat().getFormat(), row.format);
        ASSERT_TRUE(image.getWidth() == width && image.getHeight() == height);
        for (int i = 0; i < width * height && row.order != UNSEEN; ++i) {
            int const x = i % width;
            int const y = i / width;
            Rgba const expected = drawn(width, x, row.isTurned ? height - 1 - y : y);
            Rgba const got = seen(image, row.order, x, y);
            for (int c = 0; c < (row.order == BGRA ? 4 : 3); ++c) {
                ASSERT_LE(std::abs(got.channel[c] - expected.channel[c]), row.tolerance)
                    << x << ',' << y << " channel " << c;
            }
        }
    }
    String const two = String(QEL_TEST_IMAGES) + "ico/imTwo.ico";
    cImage image;
    EXPECT_FALSE(ico.loadEx(two, image, 1)) << "32 bits";
    EXPECT_FALSE(ico.loadEx(two, image, 2)) << "there are two";
    image.setCanvas(R8G8B8, 2, 1, nullptr);
    image.setPixel(1, 0, Color(77));
    EXPECT_TRUE(bmp.loadEx(String(QEL_TEST_IMAGES) + "bmp/im4.bmp", image, 0)) << "4 bits: as it was";
    EXPECT_EQ(image.getPixel(1, 0), 77u);
}

Bytes tgaHead(unsigned char type, unsigned char width, unsigned char height, unsigned char bits,
              unsigned char idLength = 0, unsigned char mapEntries = 0)
{
    return {idLength, 0, type, 0, 0, mapEntries, 0, 24, 0, 0, 0, 0, width, 0, height, 0, bits, 0};
}

TEST(ImageFile, TgaTakesWhatItsHeadSays)
{
    Bytes manyColors = tgaHead(1, 2, 1, 8, 0, 300 & 255);
    manyColors[6] = 300 >> 8;
    Row const rows[] = {
        {"id and colour map", tgaHead(2, 1, 1, 16, 2, 1), {9, 9, 8, 8, 8, 0x12, 0x34}, {0x12, 0x34}},
        {"gray skips both twice and is not turned over",
         tgaHead(3, 1, 2, 8, 1, 1),
         {9, 8, 8, 8, 9, 8, 8, 8, 1, 2, 3, 4, 5},
         {1, 2, 3, 4, 5, 0, 0, 0}},
        {"a run passes the end of its row, and that of the image",
         tgaHead(10, 2, 2, 24),
         {0x82, 1, 2, 3, 0x83, 4, 5, 6},
         {1, 2, 3, 4, 5, 6, 1, 2, 3, 1, 2, 3}},
        {"a packet is cut", tgaHead(10, 1, 2, 32), {0x01, 1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 1, 2, 3, 4}},
        {"runs of 16 bits", tgaHead(10, 1, 1, 16), {0x80, 1, 2}},
        {"15 bits", tgaHead(2, 1, 1, 15), {1, 2}},
        {"no width", tgaHead(10, 0, 9, 24), {0x80, 1, 2, 3}},
        {"head cut", Bytes(17, 2)},
        {"empty", {}},
        {"300 colours, 256 taken", manyColors, joined({Bytes(900, 7), {255, 1}}), {255, 1}},
        {"vast, of nothing", {0, 0, 10, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xFF, 0xFF, 0xFF, 24, 0}},
    };
    expectLoads(tga, rows);
}

TEST(ImageFile, TgaWritesItsThreeForms)
{
    cImage image;
    image.setCanvas(B8G8R8, 100, 2, nullptr); // 200 equal pixels, but for the last three
    for (unsigned x = 97; x < 100; ++x) {
        image.setPixel(x, 0, Color(1));
    }
    // The bottom row goes first: 100 zeros and 97 more make 127 and 70; a run of 3 is not one.
    Bytes head = tgaHead(10, 100, 2, 24);
    head[7] = 0;
    EXPECT_EQ(save(tga, image, 1),
              joined({head, {0xFE, 0, 0, 0}, {0xC5, 0, 0, 0}, {2, 1, 0, 0, 1, 0, 0, 1, 0, 0}}));
    EXPECT_EQ(image.getPixel(99, 0), 1u) << "turned back";
    head[2] = 2;
    EXPECT_EQ(save(tga, image, 2), joined({head, Bytes(591), {1, 0, 0, 1, 0, 0, 1, 0, 0}}));

    // 130 different pixels and a run of 4: raw packets of 127 and 3, then the run.
    image.setCanvas(X8R8G8B8, 134, 1, nullptr);
    for (unsigned x = 0; x < 134; ++x) {
        image.setPixel(x, 0, Color(x < 130 ? x + 1 : 200));
    }
    Bytes const packets = save(tga, image, 1);
    ASSERT_EQ(packets.size(), 18u + (1 + 127 * 4) + (1 + 3 * 4) + (1 + 4));
    EXPECT_TRUE(packets[18] == 126 && packets[18 + 509] == 2 && packets[18 + 509 + 13] == 0x83);

    // 6 bits of green become 5: 0xFC08 in R5G6B5 is 31, 32, 8, so 8 << 10 | 16 << 5 | 31.
    image.setCanvas(R5G6B5, 1, 1, nullptr);
    image.setPixel(0, 0, Color(0xFC08));
    Bytes narrow = tgaHead(2, 1, 1, 16);
    narrow[7] = 0;
    EXPECT_EQ(save(tga, image), joined({narrow, {0x1F, 0x22}}));

    cPalette palette;
    palette.setEntry(1, 3, 2, 1);
    image.setCanvas(PAL8, 1, 2, &palette);
    image.setPixelPal(0, 0, 1);
    Bytes indexed = tgaHead(1, 1, 2, 8);
    indexed[1] = 1;
    indexed[6] = 1; // 256 entries
    EXPECT_EQ(save(tga, image, 1), joined({indexed, {0, 0, 0, 3, 2, 1}, Bytes(762), {0, 1}}));

    image.setCanvas(R8G8B8, 0, 5, nullptr);
    head[12] = 0;
    head[14] = 5;
    EXPECT_EQ(save(tga, image), head);
    cFileMem file;
    image.setCanvas(cPixelFormat(48, 0xFF, 0, 0, 0), 1, 1, nullptr);
    EXPECT_FALSE(tga.save(file, image, 0));
}

Bytes number(unsigned value, unsigned bytes)
{
    Bytes all;
    for (unsigned i = 0; i < bytes; ++i) {
        all.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
    return all;
}

Bytes bmpHead(unsigned width, unsigned height, unsigned bits, unsigned sizeImage, unsigned offset = 54,
              unsigned compression = 0)
{
    Bytes const start = joined({{'B', 'M'}, number(54, 4), number(0, 4), number(offset, 4)});
    return joined({start, number(40, 4), number(width, 4), number(height, 4), number(1, 2), number(bits, 2),
                   number(compression, 4), number(sizeImage, 4), Bytes(16)});
}

TEST(ImageFile, BmpRowsAreAsLongAsItsHeadSays)
{
    Row const rows[] = {
        {"padded rows", bmpHead(1, 2, 24, 8), {1, 2, 3, 0, 4, 5, 6, 0}, {4, 5, 6, 1, 2, 3}},
        {"rows without padding", bmpHead(1, 2, 24, 6), {1, 2, 3, 4, 5, 6}, {4, 5, 6, 1, 2, 3}},
        {"rows too short", bmpHead(1, 2, 24, 4), {1, 2, 3, 4}, {3, 4, 0, 1, 2, 0}},
        {"no size: empty rows", bmpHead(1, 1, 24, 0), {1, 2, 3}, {0, 0, 0}},
        {"a row of 4 GiB", bmpHead(1, 1, 24, 0xFFFFFFFF), {1, 2, 3}, {1, 2, 3}},
        {"cut", bmpHead(1, 2, 16, 4), {1, 2, 3}, {3, 0, 1, 2}},
        {"pixels behind the end", bmpHead(1, 1, 24, 4, 0x7FFFFFFF), {1, 2, 3}, {0, 0, 0}},
        {"pixels further on", bmpHead(1, 1, 16, 2, 56), {9, 9, 1, 2}, {1, 2}},
        {"masks", bmpHead(1, 1, 32, 4, 66, 3), joined({Bytes(12, 9), {1, 2, 3, 4}}), {1, 2, 3, 4}},
        // Two bytes a row and the last gives nothing: 8 pixels of 10.
        {"1 bit", bmpHead(10, 1, 1, 2), {0xA1, 0xFF}, {1, 0, 1, 0, 0, 0, 0, 1, 0, 0}},
        {"1 bit, cut by the width", bmpHead(3, 1, 1, 4), {0x40, 0, 0, 0}, {0, 1, 0}},
        {"height 0", bmpHead(1, 0, 24, 4)},
        {"height -1", bmpHead(1, 0xFFFFFFFF, 24, 4)},
        {"width 65537", bmpHead(65537, 1, 24, 4)},
        {"more than the stream could fill", bmpHead(65535, 65535, 8, 4)},
        {"runs", bmpHead(1, 1, 8, 4, 54, 1)},
        {"head cut", Bytes(53, 'B')},
        {"not BM", Bytes(80, 0)},
    };
    expectLoads(bmp, rows);
    Loaded const bits = load(bmp, joined({bmpHead(8, 1, 1, 2), {1, 0}}));
    unsigned char r, g, b;
    bits.image.getPalette().getEntry(0, r, g, b);
    EXPECT_TRUE(r == 255 && g == 255 && b == 255) << "0 is white";
}

TEST(ImageFile, BmpWritesRowsFromTheLastWithoutPadding)
{
    cImage image;
    image.setCanvas(R8G8B8, 1, 2, 3, nullptr);
    image.setPixel(0, 0, Color(0x030201));
    image.setPixel(0, 1, Color(0x060504));
    EXPECT_EQ(save(bmp, image), joined({bmpHead(1, 2, 24, 6), {4, 5, 6, 1, 2, 3}}));

    cPalette palette;
    palette.setEntry(255, 3, 2, 1);
    image.setCanvas(PAL8, 1, 1, &palette);
    image.setPixelPal(0, 0, 7);
    EXPECT_EQ(save(bmp, image), joined({bmpHead(1, 1, 8, 1, 1078), Bytes(1020), {3, 2, 1, 0}, {7}}));

    image.setCanvas(cPixelFormat(1, 1, 0, 0, 0), 8, 1, nullptr);
    EXPECT_EQ(save(bmp, image), bmpHead(8, 1, 1, 0));
    image.setCanvas(R8G8B8, 0, 1, nullptr);
    cFileMem file;
    EXPECT_FALSE(bmp.save(file, image, 0));
}

Bytes pcxHead(unsigned char planes, unsigned short xMax, unsigned short yMax, unsigned short bytesPerLine)
{
    Bytes head = joined({{10, 5, 1, 8}, number(0, 4), number(xMax, 2), number(yMax, 2)});
    head.resize(128);
    head[65] = planes;
    head[66] = static_cast<unsigned char>(bytesPerLine);
    head[67] = static_cast<unsigned char>(bytesPerLine >> 8);
    return head;
}

TEST(ImageFile, PcxRunsAreFollowedAsTheReadersDo)
{
    Row const rows[] = {
        {"8 bits: a run goes on in the next row", pcxHead(1, 1, 1, 2), {0xC3, 7, 8}, {7, 7, 7, 8}},
        {"8 bits: more in a line than the width", pcxHead(1, 0, 1, 3), {1, 2, 3, 4, 5, 6}, {1, 4}},
        {"8 bits: less in a line than the width", pcxHead(1, 2, 0, 1), {1, 2, 3}, {1, 0, 0}},
        {"8 bits: a count of 0", pcxHead(1, 0, 0, 1), {0xC0, 9, 0xC1, 0xC5}, {0xC5}},
        {"8 bits: cut", pcxHead(1, 2, 0, 3), {1, 0xC2}, {1, 0, 0}},
        {"8 bits: a negative line", pcxHead(1, 0, 0, 0xFFFF)},
        {"24 bits: planes", pcxHead(3, 1, 0, 2), {1, 2, 3, 4, 5, 6}, {1, 3, 5, 2, 4, 6}},
        // The first plane's run of 3 reaches into the next row, and ends there: the second plane begins.
        {"24 bits: a run over its row",
         pcxHead(3, 1, 1, 2),
         {0xC3, 1, 0xC2, 2, 0xC2, 3},
         {1, 2, 3, 1, 2, 3, 1, 0, 0, 0, 0, 0}},
        {"24 bits: a run over the last row", pcxHead(3, 0, 0, 1), {0xFF, 1, 0xFF, 2, 0xFF, 3}, {1, 2, 3}},
        {"no width", pcxHead(1, 0xFFFF, 0, 1)},
        {"two planes", pcxHead(2, 0, 0, 1)},
        {"head cut", {10, 5, 1, 8}},
    };
    expectLoads(pcx, rows);
    for (std::size_t at = 0; at < 4; ++at) {
        Bytes file = joined({pcxHead(1, 0, 0, 1), {1}});
        ++file[at];
        EXPECT_FALSE(load(pcx, file).isRead) << "field " << at;
    }
}

TEST(ImageFile, PcxWritesRunsOfUpTo63ThatEndWithTheirRow)
{
    cPalette palette;
    palette.setEntry(255, 3, 2, 1);
    cImage image;
    image.setCanvas(PAL8, 64, 2, 65, &palette);
    for (unsigned x = 0; x < 64; ++x) {
        image.setPixelPal(x, 0, 7);
        image.setPixelPal(x, 1, x < 63 ? 0xC5 : 9);
    }
    EXPECT_EQ(save(pcx, image),
              joined({pcxHead(1, 63, 1, 64), {0xFF, 7, 7}, {0xFF, 0xC5, 9}, {12}, Bytes(765), {1, 2, 3}}));

    image.setCanvas(A8R8G8B8, 2, 1, nullptr);
    image.setPixel(0, 0, Color(0xFF010203));
    image.setPixel(1, 0, Color(0xFFC10203));
    EXPECT_EQ(save(pcx, image), joined({pcxHead(3, 1, 0, 2), {0xC2, 3}, {0xC2, 2}, {1, 0xC1, 0xC1}}));

    // Wider than any row on the stack.
    image.setCanvas(R8G8B8, 4000, 1, nullptr);
    image.setPixel(3999, 0, Color(0x123456));
    EXPECT_EQ(bytesOf(load(pcx, save(pcx, image)).image), bytesOf(image));

    cFileMem file;
    image.setCanvas(R8G8B8, 0, 1, nullptr);
    EXPECT_FALSE(pcx.save(file, image, 0));
}

Bytes icoHead(unsigned width, unsigned height, unsigned bits, unsigned offset = 22)
{
    // directory: icon, one entry of which only the offset counts; then the picture's head
    return joined({number(0, 2), number(1, 2), number(1, 2), Bytes(12), number(offset, 4), number(40, 4),
                   number(width, 4), number(height, 4), number(1, 2), number(bits, 2), Bytes(24)});
}

TEST(ImageFile, IcoTakesFourAndEightBits)
{
    Bytes const rest(2000);
    Row const rows[] = {
        {"4 bits",
         icoHead(3, 4, 4),
         joined({Bytes(64), {0x12, 0x3F, 0, 0, 0x45, 0x6F, 0, 0}}),
         {4, 5, 6, 1, 2, 3}},
        {"8 bits, cut", icoHead(2, 4, 8), joined({Bytes(1024), {1, 2, 0, 0, 3}}), {3, 0, 1, 2}},
        {"a height of 3 is 1", icoHead(1, 3, 8), joined({Bytes(1024), {9}}), {9}},
        {"1 bit", icoHead(8, 2, 1), rest},
        {"a height of 1 is 0", icoHead(1, 1, 8), rest},
        {"height -2", icoHead(1, 0xFFFFFFFE, 8), rest},
        {"width -1", icoHead(0xFFFFFFFF, 2, 8), rest},
        {"more than the stream could fill", icoHead(65535, 65535, 8), rest},
        {"picture behind the end", icoHead(1, 2, 8, 0xFFFFFFFF), rest},
        {"reserved", {1, 0, 1, 0, 1, 0}, rest},
        {"type 3", {0, 0, 3, 0, 1, 0}, rest},
        {"65535 entries that are not there", {0, 0, 2, 0, 255, 255}},
    };
    expectLoads(ico, rows);
}

Bytes ddsFile(unsigned flags, unsigned height, unsigned width, unsigned linearSize, char const *fourCC,
              unsigned bits, Bytes const &rest)
{
    Bytes head = {'D', 'D', 'S', ' '};
    for (unsigned const field : {124u, flags, height, width, linearSize}) {
        head = joined({head, number(field, 4)});
    }
    head.resize(128);
    std::memcpy(&head[84], fourCC, 4);
    head[88] = static_cast<unsigned char>(bits);
    return joined({head, rest});
}

TEST(ImageFile, DdsReadsNoMoreThanItsSizes)
{
    constexpr unsigned linear = 0x80000;
    char const *const none = "\0\0\0";
    // A white block: both colours 0xFFFF, all indices 0.
    Bytes const white = {0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0};
    // As steps: 0 for the first pixel, 7 for the last. As ends of 128 and 8: the first end, then the second
    // point between, (5 * 128 + 2 * 8) / 7 = 93.
    Bytes const alphaAndWhite = {0x80, 0x08, 0, 0, 0, 0, 0, 0x7A, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0};
    struct {
        char const *what;
        Bytes file;
        std::vector<unsigned> ends = {}; // the first and the last pixel; none: refused
    } const rows[] = {
        {"DXT1 by its linear size", ddsFile(linear, 4, 4, 8, "DXT1", 0, white), {0xFFFFFFFF, 0xFFFFFFFF}},
        // The block's bytes 0, 4, 8 and 12 arrive: colours of blue 8 and of 0, the first pixel 2 : 1 between.
        {"DXT1 by rows of 2 bits", ddsFile(0, 4, 4, 0, "DXT1", 2, {1, 2, 3, 4}), {0xFF000005, 0xFF000008}},
        {"DXT1 by rows of 16 bits: cut to the width",
         ddsFile(0, 4, 4, 0, "DXT1", 16, {0xFF, 0xFF, 0xFF, 0xFF, 9, 9, 9, 9, 0, 0, 0, 0, 9, 9, 9, 9}),
         {~0u, ~0u}},
        {"linear size of 4 GiB", ddsFile(linear, 4, 4, ~0u, "DXT1", 0, white), {~0u, ~0u}},
        {"plain", ddsFile(0, 1, 2, 0, none, 32, {1, 2, 3, 4, 5, 6, 7, 8}), {0x04030201, 0x08070605}},
        {"plain, larger", ddsFile(linear, 1, 1, 0xFFFF, none, 32, Bytes(300, 5)), {0x05050505, 0x05050505}},
        {"plain, smaller", ddsFile(linear, 1, 2, 5, none, 32, Bytes(8, 5)), {0x05050505, 5}},
        {"plain, cut", ddsFile(0, 1, 2, 0, none, 32, Bytes(3, 5)), {0x00050505, 0}},
        // One block of alpha, read as 16 steps a pixel or as two ends.
        {"DXT2", ddsFile(linear, 4, 4, 16, "DXT2", 0, alphaAndWhite), {0x00FFFFFF, 0x77FFFFFF}},
        {"DXT3", ddsFile(linear, 4, 4, 16, "DXT3", 0, alphaAndWhite), {0x00FFFFFF, 0x77FFFFFF}},
        {"DXT4", ddsFile(linear, 4, 4, 16, "DXT4", 0, alphaAndWhite), {0x80FFFFFF, 0x5DFFFFFF}},
        {"DXT5", ddsFile(linear, 4, 4, 16, "DXT5", 0, alphaAndWhite), {0x80FFFFFF, 0x5DFFFFFF}},
        {"DXT6", ddsFile(linear, 4, 4, 8, "DXT6", 0, white)},
        {"DXT0", ddsFile(linear, 4, 4, 8, "DXT0", 0, white)},
        {"width 65540", ddsFile(linear, 4, 65540, 8, "DXT1", 0, white)},
        {"more than the stream could fill", ddsFile(linear, 65532, 65532, 8, "DXT5", 0, white)},
        {"no width", ddsFile(linear, 4, 0, 8, "DXT1", 0, white)},
        {"head cut", {'D', 'D', 'S', ' ', 124, 0}},
        {"not DDS", Bytes(200)},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        Loaded const loaded = load(dds, row.file);
        ASSERT_EQ(loaded.isRead, !row.ends.empty());
        if (loaded.isRead) {
            cImage const &image = loaded.image;
            unsigned const last = image.getPixel(image.getWidth() - 1u, image.getHeight() - 1u);
            EXPECT_EQ((std::vector{image.getPixel(0, 0), last}), row.ends);
        }
    }
}

TEST(ImageFile, ReadersStartAtThePositionAndSomeFormatsDoNothing)
{
    cImage image;
    cFileMem file;
    Bytes const at = joined({{9, 9, 9}, tgaHead(2, 1, 1, 24), {1, 2, 3}});
    file.set(static_cast<unsigned>(at.size()), at.data());
    file.seek(3);
    ASSERT_TRUE(tga.load(file, image, 0));
    EXPECT_EQ(image.getPixel(0, 0), 0x030201u);
    file.seek(0);
    EXPECT_FALSE(jpg.load(file, image, 0) || jpg.save(file, image, 0) || ico.save(file, image, 0) ||
                 dds.save(file, image, 0));
    EXPECT_EQ(image.getPixel(0, 0), 0x030201u);
    EXPECT_STREQ(jpg.get_type(), "JPG");
}

TEST(ImageFile, SavingOverALargerFileKeepsItsTail)
{
    test::TempFolder const folder;
    test::writeFile("picture.tga", std::string(30, 'x'));
    cImage image;
    image.setCanvas(R8G8B8, 1, 1, nullptr);
    ASSERT_TRUE(tga.saveEx("picture.tga", image, 0));
    EXPECT_EQ(test::readFile("picture.tga").substr(18), std::string(3, '\0') + std::string(9, 'x'));
    EXPECT_TRUE(tga.saveEx("fresh.tga", image, 0));
    EXPECT_EQ(test::readFile("fresh.tga").size(), 21u);
    EXPECT_FALSE(tga.saveEx("no/folder.tga", image, 0) || tga.loadEx("none.tga", image, 0));
}

} // namespace
} // namespace Qel
