#include "System/Codec/codecs/codec_multi.h"

#include "System/Codec/codecManager.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"
#include "System/File/fileDisk.h"
#include "System/System/exception.h"
#include "Tests/Codec/plainDecoders.h"
#include "Tests/Codec/testData.h"
#include "Tests/Tools/logLines.h"
#include "Tests/Tools/tempFolder.h"

#include <gtest/gtest.h>

#include <memory>

namespace Qel {
namespace {

using Names = std::vector<String>;

cCodecMulti chainOf(Names const &codecs)
{
    cCodecMulti chain;
    for (String const &name : codecs) {
        chain.addCodec(name);
    }
    return chain;
}

std::string run(Names const &codecs, bool (cCodecMulti::*method)(cFile &, cFile &, ...),
                std::string const &data)
{
    cCodecMulti chain = chainOf(codecs);
    cFileMem in;
    cFileMem out;
    test::fill(in, data);
    EXPECT_TRUE((chain.*method)(in, out));
    return test::content(out);
}

std::string encoded(Names const &codecs, std::string const &data)
{
    return run(codecs, &cCodecMulti::encode, data);
}

std::string decoded(Names const &codecs, std::string const &stream)
{
    return run(codecs, &cCodecMulti::decode, stream);
}

TEST(CodecMulti, ChainsOfTwoAndThreeInEveryOrderThatDecodes)
{
    CodecManager const manager;
    String const names[] = {"CODEC_HUFFMAN", "CODEC_LZ77", "CODEC_LZW", "CODEC_ZIP", "CODEC_MTF"};
    std::string const inputs[] = {"", "a", test::makeData("text", 20'000, 2),
                                  test::makeData("random", 9'000, 3)};
    for (std::size_t order = 0; order < 5 * 5 * 6; ++order) {
        Names codecs = {names[order % 5], names[order / 5 % 5]};
        if (order / 25 < 5) {
            codecs.push_back(names[order / 25]);
        }
        if (order % 5 == 4) {
            continue; // what decodes last must know its own end
        }
        SCOPED_TRACE(codecs[0] + " " + codecs[1] + " " + codecs.back());
        for (std::string const &data : inputs) {
            EXPECT_TRUE(decoded(codecs, encoded(codecs, data)) == data) << data.size();
        }
    }
}

std::string lzw(std::string const &data)
{
    return test::encoded(*std::make_unique<cCodecLZW>(), data);
}

std::string mtf(std::string const &data)
{
    return test::encoded(*std::make_unique<cCodecMTF>(), data);
}

TEST(CodecMulti, WhatACodecDoesNotWriteIsZerosAndFailuresGoUnnoticed)
{
    test::TempFolder const folder;
    CodecManager const manager;
    std::string const data(10'000, 'x');
    std::string between = lzw(data);
    between.resize(200, '\0'); // 200 more than the size of nothing
    EXPECT_TRUE(encoded({"CODEC_LZW", "CODEC_MTF"}, data) == mtf(between));
    std::string second = mtf(between);
    second.resize(400, '\0'); // and 200 more than that
    EXPECT_TRUE(encoded({"CODEC_LZW", "CODEC_MTF", "CODEC_LZW"}, data) == lzw(second));

    EXPECT_EQ(decoded({"CODEC_LZW", "CODEC_ZIP"}, "nothing that zlib knows"),
              plain::decodeLzw(std::string(200, '\0')));
    test::writeFile("disk", "some data");
    cFileDisk disk("disk", OPEN_READ);
    cFileMem out;
    EXPECT_THROW(chainOf({"CODEC_LZW", "CODEC_ZIP"}).decode(disk, out), Exception);
}

TEST(CodecMulti, NoneOneAndUnknownOnes)
{
    test::LogLines const lines;
    EXPECT_EQ(encoded({"CODEC_LZW"}, "some data"), "") << "no manager";
    CodecManager const manager;
    EXPECT_EQ(encoded({}, "some data"), "");
    EXPECT_EQ(encoded({"CODEC_MTF"}, "some data"), mtf("some data")) << "no room left behind";
    EXPECT_EQ(decoded({"CODEC_MTF"}, mtf("some data")), "some data");
    EXPECT_EQ(encoded({"CODEC_LZW", "CODEC_NONE"}, "some data"), "") << "the last stage writes the output";
    EXPECT_EQ(encoded({"CODEC_NONE", "CODEC_LZW"}, "some data"), lzw(""))
        << "the first stage reads the input";
    cCodecMulti chain = chainOf({"CODEC_MTF"});
    chain.reset();
    cFileMem in;
    test::fill(in, "some data");
    EXPECT_TRUE(chain.encode(in, in));
    EXPECT_EQ(test::content(in), "some data");
    std::string const log = lines.take();
    EXPECT_NE(log.find("Codec type 'CODEC_NONE' Unknown!\ncCodecMulti::Code(CODEC_LZW) 0"), std::string::npos)
        << log;
}

} // namespace
} // namespace Qel
