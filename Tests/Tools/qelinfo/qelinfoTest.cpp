#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>
#include <png.h>

#include <cstdlib>
#include <tuple>
#include <vector>

#include <sys/wait.h>

namespace {

/// Runs the program in the working folder. What it says is in "said".
int run(std::string const &arguments)
{
    int const status = std::system((QELINFO " " + arguments + " >said 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string const images = QEL_TEST_IMAGES;

TEST(Qelinfo, SaysWhatAFileIsAndWhyItIsNotRead)
{
    test::TempFolder const folder;
    test::writeFile("text", "no picture, but long enough to be one");
    test::writeFile("png", "\x89PNG\r\n\x1A\n");
    test::writeFile("short.tga", test::readFile(images + "tga/pil24.tga").substr(0, 18));
    std::tuple<std::string, int, std::string> const rows[] = {
        {images + "tga/pil24.tga", 0, "read as  13 x 7, B8G8R8, 24 bits"},
        {images + "tga/pil24top.tga", 0, "stand on its head"},
        {images + "tga/imPaletteRuns.tga", 1, "none: type 9"},
        {images + "bmp/im8.bmp", 0, "91 of 256 entries"},
        {images + "bmp/im8runs.bmp", 1, "none: runs"},
        {images + "bmp/im4.bmp", 1, "none: 4 bits"},
        {images + "bmp/imOs2.bmp", 1, "12 bytes"},
        {images + "pcx/pil24.pcx", 0, "cIO_pcx"},
        {images + "pcx/pil1.pcx", 1, "none: only version 5"},
        {images + "ico/pilPng.ico", 1, "none: a PNG"},
        {images + "ico/imTwo.ico --index 2", 1, "no such picture"},
        {images + "dds/imDxt1.dds", 0, "DXT1"},
        {"png", 1, "PNG files have no reader"},
        {"text", 1, "no picture"},
        {"short.tga", 0, "13 x 7"},
        {"nothing.tga", 3, "cannot be read"},
        {images + "bmp/im8.bmp --convert out.gif", 2, ".png"},
        {images + "bmp/im8.bmp --convert no/out.png", 3, "cannot be written"},
    };
    for (auto const &[arguments, exitCode, said] : rows) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(run(arguments), exitCode);
        EXPECT_NE(test::readFile("said").find(said), std::string::npos) << test::readFile("said");
    }
}

TEST(Qelinfo, ShowsModelsAndTheirFaults)
{
    test::TempFolder const folder;
    test::writeFile("bad.md5mesh",
                    "MD5Version 8 commandline \"\" numbones 2\n"
                    "bone 0 { name \"hip\" bindpos 0 0 0 bindmat 1 0 0 0 1 0 0 0 1 parent \"neck\" }\n"
                    "bone 1 { name \"neck\" bindpos 0 0 0 bindmat 1 0 0 0 1 0 0 0 1 parent \"head\" }\n"
                    "mesh 0 { shader \"s\" numverts 1 verts 0 0 0 0 2 numtris 1 tri 0 0 0 7\n"
                    "numweights 2 weight 0 0 0.5 0 0 0 weight 1 9 0.25 0 0 0 }\n");
    test::writeFile("bad.md5anim",
                    "MD5Version 8 commandline \"\" numchannels 1 channel 0 { joint \"tail\" attribute "
                    "\"yaw\" starttime 1 endtime 0 framerate 24 strings 0 range 0 0 keys 0 }");
    EXPECT_EQ(run("bad.md5mesh --animation bad.md5anim"), 1);
    std::string const said = test::readFile("said");
    for (char const *const line :
         {"bad.md5mesh: model", "bones    2", "bone 0 'hip': its parent 'neck' stands behind it",
          "bone 1 'neck': its parent 'head' is not there", "vertex 0: its weights add up to 0.75",
          "weight 1: there is no bone 9", "triangle 0: there is no vertex 7",
          "channel 0 of 'tail' has no keys", "channel 0 of 'tail' ends before it starts",
          "channel 0: there is no bone 'tail'"}) {
        EXPECT_NE(said.find(line), std::string::npos) << line << "\n" << said;
    }
    std::string const figure = QEL_TEST_FIGURE;
    EXPECT_EQ(run(figure + "/Figure.md5mesh --animation " + figure + "/Walk.md5anim"), 0)
        << test::readFile("said");
    EXPECT_EQ(run(figure + "/Wave.md5anim"), 0);
    EXPECT_EQ(run(figure + "/Figure.md5mesh --animation absent"), 3);
    EXPECT_EQ(run(figure + "/Wave.md5anim --convert out.png"), 2);
}

// Through each of the formats into a PNG, read by its own library: the picture of makeImages.sh in its
// colours.
TEST(Qelinfo, ConvertsInTheColoursThatWereMeant)
{
    test::TempFolder const folder;
    for (char const *const source : {"tga/pil24.tga", "tga/pil32runs.tga", "bmp/pil32.bmp", "bmp/im8.bmp",
                                     "pcx/im24.pcx", "pcx/pil8.pcx"}) {
        for (char const *const between : {"", "out.tga", "out.bmp", "out.pcx"}) {
            SCOPED_TRACE(std::string(source) + " " + between);
            std::string file = images + source;
            if (*between != 0) {
                ASSERT_EQ(run(file + " --convert " + between), 0) << test::readFile("said");
                file = between;
            }
            ASSERT_EQ(run(file + " --convert out.png"), 0) << test::readFile("said");
            png_image png{};
            png.version = PNG_IMAGE_VERSION;
            ASSERT_NE(png_image_begin_read_from_file(&png, "out.png"), 0);
            png.format = PNG_FORMAT_RGBA;
            std::vector<unsigned char> pixels(PNG_IMAGE_SIZE(png));
            ASSERT_NE(png_image_finish_read(&png, nullptr, pixels.data(), 0, nullptr), 0);
            ASSERT_TRUE(png.width == 13 && png.height == 7);
            unsigned char const *const pixel = &pixels[4 * (13 * 5 + 4)]; // 4, 5
            EXPECT_TRUE(pixel[0] == 80 && pixel[1] == 180 && pixel[2] == 60)
                << int{pixel[0]} << ' ' << int{pixel[1]} << ' ' << int{pixel[2]};
        }
    }
}

} // namespace
