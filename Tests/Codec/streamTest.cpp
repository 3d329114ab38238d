#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lz77.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/Codec/codecs/codec_mtf.h"
#include "System/Codec/codecs/codec_zip.h"
#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"
#include "Tests/Codec/plainDecoders.h"
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
    std::string (*plainDecode)(std::string const &);
    bool encodeResult;
    bool decodeResult;
};

struct CodecStream : testing::Test {
    Coder coders[4] = {{"HUFFMAN", std::make_unique<cCodecHuffman>(), plain::decodeHuffman, true, true},
                       {"MTF", std::make_unique<cCodecMTF>(), plain::decodeMtf, true, true},
                       {"LZ77", std::make_unique<cCodecLZ77>(), plain::decodeLz77, false, false},
                       {"LZW", std::make_unique<cCodecLZW>(), plain::decodeLzw, false, true}};
};

std::uint32_t crc(std::string const &stream, std::uint32_t before = 0)
{
    auto const *const bytes = reinterpret_cast<Bytef const *>(stream.data());
    return static_cast<std::uint32_t>(crc32(before, bytes, static_cast<uInt>(stream.size())));
}

TEST_F(CodecStream, SmallOnesAreRightToTheBit)
{
    struct {
        std::size_t coder;
        char const *data;
        char const *stream;
    } const rows[] = {
        {0, "", "00000000 00 00"},            // a lone leaf: bit 0, then the symbol in a whole byte
        {0, "00", "01000000 00 00"},          // the same tree, no code bits
        {0, "01", "01000000 01 01 00 00 00"}, // 1; 0, symbol 1; 0, symbol 0; the code 0
        {1, "05 05 05 00", "05 00 00 01"},
        {2, "", "00 00"},                                 // 13 zeros
        {2, "FF", "FF 01 00"},                            // 1 11111111, the end
        {2, "41 41", "05 0B 02 00"},                      // 1 01000001 twice: one byte is no match
        {2, "41 41 41", "05 01 20 00 00"},                // 1 01000001, 0 000000000001 0000, the end
        {3, "", "01 02 00"},                              // 256 twice: 100000000 100000000
        {3, "41", "04 03 00"},                            // 65, 256: 001000001 100000000
        {3, "41 42 41 42 41 42 41", "04 09 05 0E 1A 00"}, // 65, 66, 259, 261, which is not made yet, 256
    };
    for (auto const &row : rows) {
        Coder &coder = coders[row.coder];
        SCOPED_TRACE(std::string(coder.name) + " " + row.data);
        std::string const data = test::fromHex(row.data);
        std::string const stream = test::encoded(*coder.codec, data);
        EXPECT_EQ(stream, test::fromHex(row.stream));
        EXPECT_EQ(test::decoded(*coder.codec, stream), data);
    }
}

TEST_F(CodecStream, LargerOnesAreThoseOfTheIndependentScriptAtEveryLevelOfTheProcessor)
{
    struct {
        char const *kind;
        std::size_t size;
        std::uint32_t seed;
        struct {
            std::size_t size;
            std::uint32_t crc;
        } streams[4];
    } const rows[] = {
#include "Tests/Codec/golden.inc"
    };
    for (std::uint32_t level = os::processorLevelMax() + 1; level-- > 0;) {
        ASSERT_TRUE(os::setProcessorLevel(static_cast<os::eProcessorLevel>(level)));
        for (auto const &row : rows) {
            std::string const data = test::makeData(row.kind, row.size, row.seed);
            // The first two have loops of their own for some levels.
            for (std::size_t i = 0; i < (level == os::processorLevelMax() ? 4 : 2); ++i) {
                SCOPED_TRACE(std::string(coders[i].name) + " " + row.kind + " " + std::to_string(row.size) +
                             " level " + std::to_string(level));
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
    os::setProcessorLevel(os::processorLevelMax());
}

// One object for all: nothing of one call may show in the next. And whatever is broken in a stream, what
// comes is what the plain decoder gives, in memory of the right size.
TEST_F(CodecStream, AThousandInputsOnOneObjectAndTheirBrokenStreams)
{
    struct {
        char const *kind;
        std::uint32_t crcs[4];
    } const rows[] = {
#include "Tests/Codec/goldenSizes.inc"
    };
    std::mt19937 random(77);
    for (auto const &row : rows) {
        std::uint32_t crcs[4] = {};
        for (std::uint32_t i = 0; i < 200; ++i) {
            std::string const data = test::makeData(row.kind, i % 10 == 0 ? i * 60 : i, i);
            for (Coder &coder : coders) {
                SCOPED_TRACE(std::string(coder.name) + " " + row.kind + " " + std::to_string(data.size()));
                std::string stream = test::encoded(*coder.codec, data);
                crcs[&coder - coders] = crc(stream, crcs[&coder - coders]);
                ASSERT_TRUE(test::decoded(*coder.codec, stream) == data);
                std::size_t const whole = &coder == coders ? 4 : 0; // a count is no damage
                for (unsigned flips = random() % 4; flips > 0 && stream.size() > whole; --flips) {
                    char &byte = stream[whole + random() % (stream.size() - whole)];
                    byte = static_cast<char>(byte ^ 1 << random() % 8);
                }
                stream.resize(whole + random() % (stream.size() - whole + 1));
                ASSERT_TRUE(test::decoded(*coder.codec, stream) == coder.plainDecode(stream));
            }
        }
        for (std::size_t i = 0; i < 4; ++i) {
            EXPECT_EQ(crcs[i], row.crcs[i]) << coders[i].name << " " << row.kind;
        }
    }
}

TEST_F(CodecStream, LzwAroundEachChangeOfWidthAndTheFlush)
{
    // No two bytes stand side by side twice, so that each one makes a string.
    std::string data;
    for (int first = 0; first < 256; ++first) {
        data += static_cast<char>(first);
        for (int second = first + 1; second < 256; ++second) {
            data += static_cast<char>(first);
            data += static_cast<char>(second);
        }
    }
    struct {
        std::size_t codes;
        std::uint32_t crc;
    } const rows[] = {
#include "Tests/Codec/goldenWidths.inc"
    };
    iCodec &codec = *coders[3].codec;
    constexpr std::size_t flush = 32'768 - 258;
    for (auto const &[codes, expected] : rows) {
        std::size_t const size = codes <= 32'768 ? codes - 258 : flush + codes - 32'768 - 258;
        std::uint32_t streams = 0;
        for (std::size_t at = size - 4; at < size + 5; ++at) {
            std::string const stream = test::encoded(codec, data.substr(0, at));
            streams = crc(stream, streams);
            ASSERT_TRUE(test::decoded(codec, stream) == data.substr(0, at)) << at;
        }
        EXPECT_EQ(streams, expected) << codes;
    }
    std::string const zeros(5'000'000, '\0');
    EXPECT_TRUE(test::decoded(codec, test::encoded(codec, zeros)) == zeros) << "long strings";
}

TEST_F(CodecStream, ReadsFromAndWritesToAnyStreamAtItsPosition)
{
    std::string const data = test::makeData("text", 150'000, 1);
    std::string block = data;
    for (Coder &coder : coders) {
        SCOPED_TRACE(coder.name);
        std::string const expected = test::encoded(*coder.codec, data.substr(2));
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
        EXPECT_TRUE(out.eof() && back.content() == data.substr(2));

        cFileMem shared;
        cFileMem packed;
        shared.openShared(static_cast<unsigned int>(block.size()),
                          reinterpret_cast<unsigned char *>(block.data()));
        shared.seek(2);
        coder.codec->encode(shared, packed);
        EXPECT_TRUE(shared.eof() && test::content(packed) == expected);

        cFileMem both;
        test::fill(both, data.substr(2, 5'000));
        coder.codec->encode(both, both);
        EXPECT_TRUE(test::content(both) ==
                    data.substr(2, 5'000) + test::encoded(*coder.codec, data.substr(2, 5'000)));

        auto const fromBits = [&coder](auto bits) { // which go on for ever
            bits.write("some text for all", 17);
            bits.seek(8 * 5);
            cFileMem to;
            coder.codec->encode(bits, to);
            return test::content(to);
        };
        EXPECT_EQ(fromBits(cFileBit()), test::encoded(*coder.codec, "text for all"));
        EXPECT_EQ(fromBits(cFileBitOld()), test::encoded(*coder.codec, "text for all"));
    }
}

TEST_F(CodecStream, AnOutputThatTakesNoMoreIsTold)
{
    std::string const data = test::makeData("random", 200'000, 2);
    for (Coder &coder : coders) {
        SCOPED_TRACE(coder.name);
        for (bool const encodes : {true, false}) {
            cFileMem in;
            test::fill(in, encodes ? data : test::encoded(*coder.codec, data));
            test::VectorFile out;
            out.writeLimit = 90'000;
            EXPECT_FALSE(encodes ? coder.codec->encode(in, out) : coder.codec->decode(in, out));
            EXPECT_TRUE(encodes || data.starts_with(out.content()));
        }
    }
}

TEST_F(CodecStream, ThreadsWorkAtTheSameTimeWithObjectsOfTheirOwn)
{
    std::string const data = test::makeData("text", 30'000, 6);
    auto const work = [&data](auto &&...codecs) {
        EXPECT_TRUE(((test::decoded(codecs, test::encoded(codecs, data)) == data) && ...));
    };
    std::thread second([&] { work(cCodecHuffman(), cCodecLZ77(), cCodecLZW(), cCodecMTF(), cCodecZIP()); });
    work(*coders[0].codec, *coders[1].codec, *coders[2].codec, *coders[3].codec, cCodecZIP());
    second.join();
}

TEST(CodecMtf, DecodesABufferInPlace)
{
    std::string const data = test::makeData("text", 3'000, 5);
    std::string stream = test::encoded(*std::make_unique<cCodecMTF>(), data);
    EXPECT_TRUE(cCodecMTF::decode(stream.data(), stream.data(), 3'000));
    EXPECT_TRUE(stream == data);
    EXPECT_TRUE(cCodecMTF::decode(stream.data(), stream.data(), 0));
    EXPECT_FALSE(cCodecMTF::decode(nullptr, stream.data(), 1));
    EXPECT_FALSE(cCodecMTF::decode(stream.data(), nullptr, 1));
}

} // namespace
} // namespace Qel
