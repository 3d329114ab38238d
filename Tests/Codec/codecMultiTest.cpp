#include "System/Codec/codecs/codec_multi.h"

#include "System/Codec/codecManager.h"
#include "System/File/fileDisk.h"
#include "System/System/exception.h"
#include "System/System/logManager.h"
#include "Tests/Codec/plainCodecs.h"
#include "Tests/Codec/testData.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

std::string const names[] = {"CODEC_HUFFMAN", "CODEC_LZ77", "CODEC_LZW", "CODEC_ZIP", "CODEC_MTF"};

cCodecMulti chainOf(std::vector<std::string> const &codecs)
{
    cCodecMulti chain;
    for (std::string const &name : codecs) {
        chain.addCodec(name);
    }
    return chain;
}

std::string encoded(cCodecMulti &chain, std::string const &data)
{
    cFileMem in;
    cFileMem out;
    test::fill(in, data);
    EXPECT_TRUE(chain.encode(in, out));
    return test::content(out);
}

std::string decoded(cCodecMulti &chain, std::string const &stream)
{
    cFileMem in;
    cFileMem out;
    test::fill(in, stream);
    EXPECT_TRUE(chain.decode(in, out));
    return test::content(out);
}

TEST(CodecMulti, ChainsOfTwoAndThreeInEveryOrderThatDecodes)
{
    CodecManager const manager;
    std::string const inputs[] = {"", "a", test::makeData("text", 300, 1), test::makeData("text", 20'000, 2),
                                  test::makeData("random", 9'000, 3)};
    for (std::size_t order = 0; order < 5 * 5 * 6; ++order) {
        // What decodes last must know its own end.
        std::vector<std::string> codecs = {names[order % 5], names[order / 5 % 5]};
        if (order / 25 < 5) {
            codecs.push_back(names[order / 25]);
        }
        if (codecs[0] == "CODEC_MTF") {
            continue;
        }
        SCOPED_TRACE(codecs[0] + " " + codecs[1] + " " + codecs.back());
        cCodecMulti chain = chainOf(codecs);
        for (std::string const &data : inputs) {
            cCodecMulti copy = chain;
            EXPECT_TRUE(decoded(chain, encoded(copy, data)) == data) << data.size();
        }
    }
}

TEST(CodecMulti, WhatACodecDoesNotWriteIsZeros)
{
    CodecManager const manager;
    cCodecMulti chain = chainOf({"CODEC_LZW", "CODEC_MTF"});
    std::string const data(10'000, 'x');
    std::string between = plain::encodeLzw(data);
    between.resize(200, '\0');
    EXPECT_TRUE(encoded(chain, data) == plain::encodeMtf(between)) << "200 more than the size of nothing";

    cCodecMulti three = chainOf({"CODEC_LZW", "CODEC_MTF", "CODEC_LZW"});
    std::string second = plain::encodeMtf(between);
    second.resize(400, '\0');
    EXPECT_TRUE(encoded(three, data) == plain::encodeLzw(second)) << "and 200 more than that";
}

TEST(CodecMulti, OneCodecWorksOnTheStreamsThemselves)
{
    CodecManager const manager;
    cCodecMulti chain;
    EXPECT_EQ(encoded(chain, "some data"), "");
    chain.addCodec("CODEC_MTF");
    EXPECT_EQ(encoded(chain, "some data"), plain::encodeMtf("some data"));
    EXPECT_EQ(decoded(chain, plain::encodeMtf("some data")), "some data");
    chain.reset();
    EXPECT_EQ(decoded(chain, "some data"), "");
}

TEST(CodecMulti, AnUnknownCodecLeavesItsStageOut)
{
    test::TempFolder const folder;
    {
        LogManager log;
        log.createLog("multi.log", true, false, true);
        cCodecMulti chain = chainOf({"CODEC_NONE", "CODEC_LZW"});
        EXPECT_EQ(encoded(chain, "some data"), "") << "no manager";
        CodecManager const manager;
        EXPECT_EQ(encoded(chain, "some data"), plain::encodeLzw("")) << "the first stage reads the input";
        chain = chainOf({"CODEC_LZW", "CODEC_NONE"});
        EXPECT_EQ(encoded(chain, "some data"), "") << "the last stage writes the output";
    }
    std::string const log = test::readFile("multi.log");
    EXPECT_NE(log.find("Codec type 'CODEC_NONE' Unknown!\ncCodecMulti::Code(CODEC_LZW) 0"), std::string::npos)
        << log;
}

TEST(CodecMulti, AFailureInsideIsNotNoticedAndAnExceptionPasses)
{
    test::TempFolder const folder;
    CodecManager const manager;
    cCodecMulti chain = chainOf({"CODEC_LZW", "CODEC_ZIP"});
    EXPECT_EQ(decoded(chain, "nothing that zlib knows"), plain::decodeLzw(std::string(200, '\0')))
        << "zeros go on to the next stage";
    test::writeFile("disk", "some data");
    cFileDisk disk("disk", OPEN_READ);
    cFileMem out;
    EXPECT_NO_THROW(chain.encode(disk, out));
    disk.seek(0);
    EXPECT_THROW(chain.decode(disk, out), Exception);
}

} // namespace
} // namespace Qel
