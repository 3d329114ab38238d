#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lz77.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"
#include "System/Codec/codecs/codec_zip.h"
#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"
#include "Tests/Codec/plainCodecs.h"
#include "Tests/Codec/testData.h"
#include "Tests/Tools/vectorFile.h"

#include "Support/OS/processorLevel.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <memory>
#include <random>
#include <thread>

namespace Qel {
namespace {

struct Coder {
    char const *name;
    std::unique_ptr<iCodec> codec;
    std::string (*plainEncode)(std::string const &);
    bool encodeResult;
    bool decodeResult;
};

class CodecStream : public testing::Test {
protected:
    CodecStream()
    {
        coders.push_back({"HUFFMAN", std::make_unique<cCodecHuffman>(), plain::encodeHuffman, true, true});
        coders.push_back({"MTF", std::make_unique<cCodecMTF>(), plain::encodeMtf, true, true});
        coders.push_back({"LZ77", std::make_unique<cCodecLZ77>(), plain::encodeLz77, false, false});
        coders.push_back({"LZW", std::make_unique<cCodecLZW>(), plain::encodeLzw, false, true});
    }

    std::vector<Coder> coders;
};

std::uint32_t crc(std::string const &bytes)
{
    return static_cast<std::uint32_t>(
        crc32(0, reinterpret_cast<Bytef const *>(bytes.data()), static_cast<uInt>(bytes.size())));
}

TEST_F(CodecStream, SmallOnesAreRightToTheBit)
{
    struct Row {
        std::size_t coder;
        char const *data;
        char const *stream;
    };
    Row const rows[] = {
        {0, "", "00000000 00 00"},                  // a lone leaf: bit 0, then the symbol in a whole byte
        {0, "00", "01000000 00 00"},                // the same tree, no code bits
        {0, "01", "01000000 01 01 00 00 00"},       // 1; 0, symbol 1; 0, symbol 0; the code 0
        {0, "00 01 01", "03000000 01 01 00 00 01"}, // the codes 1, 0, 0
        {1, "", ""},
        {1, "05 05 05 00", "05 00 00 01"},
        {2, "", "00 00"},                                 // 13 zeros
        {2, "FF", "FF 01 00"},                            // 1 11111111, the end
        {2, "41 41", "05 0B 02 00"},                      // 1 01000001 twice: one byte is no match
        {2, "41 41 41", "05 01 20 00 00"},                // 1 01000001, 0 000000000001 0000, the end
        {3, "", "01 02 00"},                              // 256 twice: 100000000 100000000
        {3, "41", "04 03 00"},                            // 65, 256: 001000001 100000000
        {3, "41 42", "04 09 05 00"},                      // 65, 66, 256
        {3, "41 42 41 42 41 42 41", "04 09 05 0E 1A 00"}, // 65, 66, 259, 261, which is not made yet, 256
    };
    for (Row const &row : rows) {
        Coder &coder = coders[row.coder];
        SCOPED_TRACE(std::string(coder.name) + " " + row.data);
        std::string const data = test::fromHex(row.data);
        std::string const stream = test::encoded(*coder.codec, data);
        EXPECT_EQ(stream, test::fromHex(row.stream));
        EXPECT_EQ(test::decoded(*coder.codec, stream), data);
    }
}

TEST_F(CodecStream, LargerOnesAreThoseOfTheIndependentScript)
{
    struct Golden {
        char const *kind;
        std::size_t size;
        std::uint32_t seed;
        struct {
            std::size_t size;
            std::uint32_t crc;
        } streams[4];
    };
    Golden const rows[] = {
#include "Tests/Codec/golden.inc"
    };
    for (Golden const &row : rows) {
        std::string const data = test::makeData(row.kind, row.size, row.seed);
        for (std::size_t i = 0; i < coders.size(); ++i) {
            SCOPED_TRACE(std::string(coders[i].name) + " " + row.kind + " " + std::to_string(row.size));
            std::string const part = i == 2 ? data.substr(0, 60'000) : data;
            std::string const stream = test::encoded(*coders[i].codec, part);
            EXPECT_EQ(stream.size(), row.streams[i].size);
            EXPECT_EQ(crc(stream), row.streams[i].crc);
            bool result = false;
            EXPECT_TRUE(test::decoded(*coders[i].codec, stream, &result) == part);
            EXPECT_EQ(result, coders[i].decodeResult);
        }
    }
}

// One object for all: nothing of one call may show in the next.
TEST_F(CodecStream, AThousandInputsOnOneObject)
{
    std::mt19937 random(77);
    char const *const kinds[] = {"random", "text", "runs", "ramp", "zeros"};
    for (int i = 0; i < 1'000; ++i) {
        std::size_t const size = random() % (i % 50 == 0 ? 20'000 : 900);
        std::string const data = test::makeData(kinds[i % 5], size, static_cast<std::uint32_t>(random()));
        for (Coder &coder : coders) {
            SCOPED_TRACE(std::string(coder.name) + " " + kinds[i % 5] + " " + std::to_string(size));
            std::string const stream = test::encoded(*coder.codec, data);
            ASSERT_TRUE(stream == coder.plainEncode(data));
            ASSERT_TRUE(test::decoded(*coder.codec, stream) == data);
        }
    }
}

// New strings are made with almost every byte, so each length in turn ends the stream close to a change.
TEST_F(CodecStream, LzwAroundEachChangeOfWidthAndTheFlush)
{
    std::string const data = test::makeData("random", 41'000, 3);
    cCodecLZW codec;
    for (std::size_t const codes : {512u, 1'024u, 2'048u, 4'096u, 8'192u, 16'384u, 32'768u, 33'030u}) {
        std::size_t size = 0;
        // Where the plain encoder has made that many codes: its stream then has a longer tail.
        for (std::size_t low = 1, high = data.size(); low < high; size = low) {
            std::size_t const middle = (low + high) / 2;
            std::size_t const bits = 8 * plain::encodeLzw(data.substr(0, middle)).size();
            std::size_t wanted = 0;
            for (std::size_t code = 259, width = 9; code < codes; ++code) {
                wanted += width;
                width += code >= (std::size_t{1} << width) ? 1 : 0;
            }
            bits < wanted ? low = middle + 1 : high = middle;
        }
        for (std::size_t at = size - 6; at < size + 6; ++at) {
            SCOPED_TRACE(at);
            std::string const part = data.substr(0, at);
            std::string const stream = test::encoded(codec, part);
            ASSERT_TRUE(stream == plain::encodeLzw(part));
            ASSERT_TRUE(test::decoded(codec, stream) == part);
        }
    }
}

TEST_F(CodecStream, LzwStringsAreAsLongAsADictionaryLets)
{
    std::string const data = test::makeData("zeros", 5'000'000, 0);
    cCodecLZW codec;
    EXPECT_TRUE(test::decoded(codec, test::encoded(codec, data)) == data);
}

TEST_F(CodecStream, ReadsFromAndWritesToAnyStreamAtItsPosition)
{
    std::string const data = test::makeData("text", 150'000, 1);
    for (Coder &coder : coders) {
        SCOPED_TRACE(coder.name);
        std::string const expected = coder.plainEncode(data.substr(2));
        test::VectorFile in(data);
        test::VectorFile out("abc");
        in.position = 2;
        in.maxRead = 1'000;
        out.position = 1;
        EXPECT_EQ(coder.codec->encode(in, out), coder.encodeResult);
        EXPECT_TRUE(in.eof());
        EXPECT_TRUE(out.content() == "a" + expected);

        out.position = 1;
        test::VectorFile back;
        EXPECT_EQ(coder.codec->decode(out, back), coder.decodeResult);
        EXPECT_TRUE(out.eof());
        EXPECT_TRUE(back.content() == data.substr(2));

        cFileMem shared;
        std::string block = data;
        shared.openShared(static_cast<unsigned int>(block.size()),
                          reinterpret_cast<unsigned char *>(block.data()));
        shared.seek(2);
        cFileMem packed;
        coder.codec->encode(shared, packed);
        EXPECT_TRUE(shared.eof());
        EXPECT_TRUE(test::content(packed) == expected);

        cFileMem both;
        test::fill(both, data.substr(2, 5'000));
        coder.codec->encode(both, both);
        EXPECT_TRUE(test::content(both) == data.substr(2, 5'000) + coder.plainEncode(data.substr(2, 5'000)))
            << "the same stream for both";
    }
}

TEST_F(CodecStream, BitStreamsEndWhereTheirBitsDo)
{
    for (Coder &coder : coders) {
        SCOPED_TRACE(coder.name);
        cFileBit bits;
        bits.write("some text for all", 17);
        bits.seek(8 * 5);
        cFileMem out;
        coder.codec->encode(bits, out);
        EXPECT_TRUE(bits.eof());
        EXPECT_EQ(test::content(out), coder.plainEncode("text for all"));

        cFileBitOld aligned;
        aligned.write("some text for all", 17);
        aligned.seek(8 * 5);
        cFileMem second;
        coder.codec->encode(aligned, second);
        EXPECT_EQ(test::content(second), coder.plainEncode("text for all"));
    }
}

TEST_F(CodecStream, AnOutputThatTakesNoMoreIsTold)
{
    std::string const data = test::makeData("random", 200'000, 2);
    for (Coder &coder : coders) {
        SCOPED_TRACE(coder.name);
        cFileMem in;
        test::fill(in, data);
        test::VectorFile out;
        out.writeLimit = 90'000;
        EXPECT_FALSE(coder.codec->encode(in, out));
        test::fill(in, coder.plainEncode(data));
        test::VectorFile back;
        back.writeLimit = 90'000;
        EXPECT_FALSE(coder.codec->decode(in, back));
        EXPECT_TRUE(data.compare(0, back.bytes.size(), back.content()) == 0);
    }
}

TEST_F(CodecStream, ThreadsWorkAtTheSameTimeWithObjectsOfTheirOwn)
{
    std::string const data = test::makeData("text", 30'000, 6);
    auto const work = [&data] {
        cCodecHuffman huffman;
        cCodecLZ77 lz77;
        cCodecLZW lzw;
        cCodecMTF mtf;
        cCodecZIP zip;
        for (iCodec *const codec : std::initializer_list<iCodec *>{&huffman, &lz77, &lzw, &mtf, &zip}) {
            EXPECT_TRUE(test::decoded(*codec, test::encoded(*codec, data)) == data);
        }
    };
    std::thread second(work);
    work();
    second.join();
}

TEST(CodecMtf, EveryLevelOfTheProcessorGivesTheSameBytes)
{
    std::string data;
    for (char const *const kind : {"random", "text", "runs", "ramp"}) {
        data += test::makeData(kind, 70'000, 8);
    }
    std::string const stream = plain::encodeMtf(data);
    cCodecMTF codec;
    for (std::uint32_t level = 0; level <= os::processorLevelMax(); ++level) {
        SCOPED_TRACE(level);
        ASSERT_TRUE(os::setProcessorLevel(static_cast<os::eProcessorLevel>(level)));
        EXPECT_TRUE(test::encoded(codec, data) == stream);
        EXPECT_TRUE(test::decoded(codec, stream) == data);
    }
}

TEST(CodecMtf, DecodesABufferInPlace)
{
    std::string data = test::makeData("text", 3'000, 5);
    std::string stream = plain::encodeMtf(data);
    EXPECT_TRUE(cCodecMTF::decode(stream.data(), stream.data(), static_cast<unsigned int>(stream.size())));
    EXPECT_TRUE(stream == data);
    EXPECT_TRUE(cCodecMTF::decode(stream.data(), stream.data(), 0));
    EXPECT_FALSE(cCodecMTF::decode(nullptr, stream.data(), 1));
    EXPECT_FALSE(cCodecMTF::decode(stream.data(), nullptr, 1));
}

} // namespace
} // namespace Qel
