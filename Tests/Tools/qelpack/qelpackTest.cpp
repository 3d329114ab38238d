#include "Tests/Codec/testData.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include <sys/wait.h>
#include <tuple>

namespace {

/// Runs the program in the working folder. What it says is in "said".
int run(std::string const &arguments)
{
    int const status = std::system((QELPACK " " + arguments + " >said 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

class Qelpack : public testing::Test {
protected:
    test::TempFolder folder;
};

TEST_F(Qelpack, FilesComeBackThroughEachCodecAndThroughChains)
{
    test::writeFile("in", test::makeData("text", 200'000, 1));
    test::writeFile("empty", "");
    for (char const *const codecs : {"huffman", "CODEC_LZ77", "lzw", "mtf", "zip", "zip --level 9",
                                     "zip --extended", "lz77,huffman", "zip,mtf,lzw", "lzw,zip"}) {
        SCOPED_TRACE(codecs);
        for (char const *const name : {"in", "empty"}) {
            std::string const files = std::string(" ") + name + " packed";
            std::string const decoding = std::string(codecs).substr(0, std::string(codecs).find(" --level"));
            EXPECT_EQ(run(std::string("encode ") + codecs + files), 0) << test::readFile("said");
            EXPECT_EQ(run("decode " + decoding + " packed back"), 0) << test::readFile("said");
            EXPECT_TRUE(test::readFile("back") == test::readFile(name));
        }
    }
    EXPECT_FALSE(std::filesystem::exists("packed.part"));
    EXPECT_EQ(run("-q encode mtf in in"), 0) << "in place";
    EXPECT_EQ(test::readFile("said"), "");
    EXPECT_TRUE(test::readFile("in") != test::makeData("text", 200'000, 1));
}

TEST_F(Qelpack, MistakesHaveTheirExitCodes)
{
    test::writeFile("in", "some text, some text, some text");
    test::writeFile("bad", "no codec wrote this");
    std::tuple<char const *, int, char const *> const rows[] = {
        {"--help", 0, "Exit codes"},
        {"", 2, "required"},
        {"pack zip in out", 2, "pack"},
        {"encode rar in out", 2, "there is no codec \"CODEC_RAR\""},
        {"encode '' in out", 2, "no codec is named"},
        {"encode lzw,zip in out --level 3", 2, "for zip alone"},
        {"encode zip in out --level 10", 2, "10"},
        {"encode zip missing out", 3, "missing: cannot be read"},
        {"encode zip in no/such/folder", 3, "cannot be written"},
        {"decode zip bad out", 1, "bad: damaged"},
        {"decode zip bad out --extended", 1, "bad: damaged"},
        {"decode lzw bad out", 1, "bad: damaged"},
        {"encode mtf,lzw in out", 1, "would not come back"},
    };
    for (auto const &[arguments, code, says] : rows) {
        SCOPED_TRACE(arguments);
        EXPECT_EQ(run(arguments), code);
        std::string const said = test::readFile("said");
        EXPECT_NE(said.find(says), std::string::npos) << said;
        EXPECT_FALSE(std::filesystem::exists("out"));
    }
    EXPECT_EQ(run("encode mtf,lzw in out --no-verify"), 0);

    // 5 MiB of one byte in 6 bytes.
    test::writeFile("bomb", std::string("\0\0\x50\0\0a", 6));
    EXPECT_EQ(run("decode huffman bomb back"), 0);
    EXPECT_EQ(std::filesystem::file_size("back"), 5u << 20);
    EXPECT_EQ(run("decode huffman bomb less --limit 1"), 1);
    EXPECT_EQ(std::filesystem::file_size("less.part"), 1u << 20);
    EXPECT_FALSE(std::filesystem::exists("less"));
}

} // namespace
