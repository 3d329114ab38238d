#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lz77.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "Tests/Codec/plainCodecs.h"
#include "Tests/Codec/testData.h"

#include <gtest/gtest.h>

#include <random>

namespace Qel {
namespace {

/// Takes any number of bytes and keeps none.
class CountingFile : public cFile {
public:
    unsigned int read(void *, unsigned int) override { return 0; }
    unsigned int write(void const *, unsigned int size) override
    {
        total += size;
        return size;
    }
    unsigned int seek(unsigned int) override { return 0; }
    unsigned int size() const override { return 0; }
    unsigned int tell() const override { return 0; }
    eFileClass getType() const override { return FILECLASS_DISK; }

    std::uint64_t total = 0;
};

bool decodeCounting(iCodec &codec, std::string const &stream, std::uint64_t &total)
{
    cFileMem in;
    test::fill(in, stream);
    CountingFile out;
    bool const result = codec.decode(in, out);
    total = out.total;
    return result;
}

TEST(DamagedStream, HuffmanTrees)
{
    cCodecHuffman codec;
    struct Row {
        char const *what;
        std::string stream;
        std::string data;
    };
    Row const rows[] = {
        {"nothing", "", ""},
        {"half a count", test::fromHex("0500"), ""},
        {"no tree", test::fromHex("05000000"), ""},
        {"a leaf without its byte", test::fromHex("05000000 00"), ""},
        {"a tree without its second leaf", test::fromHex("05000000 01 61"), ""},
        {"a second leaf without its byte", test::fromHex("05000000 01 61 00"), ""},
        {"a lone leaf needs no codes", test::fromHex("05000000 00 61"), "aaaaa"},
        {"zeros behind the last code", test::fromHex("0A000000 01 61 00 62 05"), "babaaaaaaa"},
        {"no codes", test::fromHex("03000000 01 61 00 62"), "aaa"},
        {"one symbol on both sides", test::fromHex("03000000 01 61 00 61 02"), "aaa"},
        {"nothing but inner nodes", test::fromHex("05000000") + std::string(100'000, '\xFF'), ""},
    };
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        bool result = false;
        EXPECT_EQ(test::decoded(codec, row.stream, &result), row.data);
        EXPECT_TRUE(result);
    }

    // The deepest tree there can be: 255 inner nodes, each with a leaf on side 0. One more is too many.
    for (int const inner : {255, 256}) {
        std::string stream = test::fromHex("01000000");
        for (int i = 0; i < inner; ++i) {
            stream += test::fromHex("01");
            stream += static_cast<char>(i);
        }
        stream += test::fromHex("00 EE") + std::string(32, '\xFF');
        EXPECT_EQ(test::decoded(codec, stream), inner == 255 ? "\xEE" : "");
    }
}

TEST(DamagedStream, OutputStaysInProportion)
{
    std::uint64_t total = 0;
    cCodecHuffman huffman;
    std::string const bomb = test::fromHex("FFFFFFFF 00 61");
    EXPECT_FALSE(decodeCounting(huffman, bomb, total));
    EXPECT_EQ(total, 64u * 1'024 * 1'024);
    EXPECT_FALSE(decodeCounting(huffman, test::fromHex("FFFFFFFF 01 61 00 62 FF"), total));
    EXPECT_EQ(total, 64u * 1'024 * 1'024);

    cCodecLZW lzw;
    iCodec::setOutputLimit(1'000'000);
    EXPECT_FALSE(decodeCounting(huffman, bomb, total));
    EXPECT_EQ(total, 1'000'000u);
    std::string const many = test::encoded(lzw, std::string(30'000'000, '\0'));
    EXPECT_TRUE(decodeCounting(lzw, many, total)) << "2 300 bytes for each one, as the format has it";
    EXPECT_EQ(total, 30'000'000u);
    iCodec::setOutputLimit(64 * 1'024 * 1'024);
}

std::string lzwStream(std::vector<std::pair<unsigned, unsigned>> const &codes)
{
    std::string bits;
    for (auto const &[code, width] : codes) {
        for (unsigned i = width; i-- > 0;) {
            bits += (code >> i & 1) != 0 ? '1' : '0';
        }
    }
    std::string stream((bits.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < bits.size(); ++i) {
        stream[i / 8] = static_cast<char>(stream[i / 8] | (bits[i] == '1') << i % 8);
    }
    return stream;
}

TEST(DamagedStream, LzwCodes)
{
    std::vector<std::pair<unsigned, unsigned>> bumps = {{'a', 9}};
    for (unsigned width = 9; width <= 40; ++width) {
        bumps.emplace_back(257, std::min(width, 15u));
    }
    std::vector<std::pair<unsigned, unsigned>> endless(40'000, {'a', 9});
    struct Row {
        char const *what;
        std::string stream;
        std::string data;
        bool result;
    };
    Row const rows[] = {
        {"nothing", "", "", false},
        {"no end code", lzwStream({{'a', 9}, {'b', 9}}), "ab", false},
        {"a code that is cut", lzwStream({{'a', 9}, {'b', 9}, {256, 9}}).substr(0, 3), "ab", false},
        {"a code beyond the next one", lzwStream({{'a', 9}, {'b', 9}, {261, 9}, {'c', 9}}), "ab", false},
        {"the largest code", lzwStream({{'a', 9}, {511, 9}}), "a", false},
        {"first a string", lzwStream({{259, 9}, {'a', 9}}), "", false},
        {"first a wider code", lzwStream({{257, 9}, {'a', 10}}), "", false},
        {"first a flush", lzwStream({{258, 9}, {'a', 9}}), "", false},
        {"a string behind a flush", lzwStream({{'a', 9}, {258, 9}, {259, 9}}), "a", false},
        {"ever wider", lzwStream(bumps), "a", false},
        {"no flush in time", lzwStream(endless), std::string(32'768 - 259 + 1, 'a'), false},
        {"wider and whole", lzwStream({{'a', 9}, {257, 9}, {259, 10}, {256, 10}}), "aaa", true},
        {"flushed and whole", lzwStream({{'a', 9}, {258, 9}, {'b', 9}, {256, 9}, {'c', 9}}), "ab", true},
        {"flushed and ended", lzwStream({{'a', 9}, {258, 9}, {256, 9}}), "a", true},
    };
    cCodecLZW codec;
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        bool result = !row.result;
        EXPECT_TRUE(test::decoded(codec, row.stream, &result) == row.data);
        EXPECT_EQ(result, row.result);
    }
}

TEST(DamagedStream, Lz77PlacesNeverWritten)
{
    cCodecLZ77 codec;
    // 0, the place 4095, the length 17; then the place 1 as it was before any byte came; then the end.
    EXPECT_EQ(test::decoded(codec, test::fromHex("FE FF 01")), std::string(17, '\0'));
    EXPECT_EQ(test::decoded(codec, test::fromHex("FE")), std::string(2, '\0')) << "zeros behind the end";
    test::encoded(codec, test::makeData("random", 9'000, 1));
    EXPECT_EQ(test::decoded(codec, test::fromHex("FE FF 01")), std::string(17, '\0'))
        << "nothing of an earlier call";
}

// Whatever is broken: the same bytes as from the plain decoder, in memory of the right size.
TEST(DamagedStream, BrokenStreamsGiveWhatThePlainDecodersGive)
{
    std::mt19937 random(5);
    cCodecLZ77 lz77;
    cCodecLZW lzw;
    cCodecHuffman huffman;
    for (int i = 0; i < 1'000; ++i) {
        std::string const data =
            test::makeData(i % 3 == 0 ? "runs" : "text", random() % 700 + 1, random() & 0xFFFFF);
        auto const broken = [&](std::string stream, std::size_t keep) {
            for (unsigned flips = random() % 4; flips > 0 && stream.size() > keep; --flips) {
                std::size_t const at = keep + random() % (stream.size() - keep);
                stream[at] = static_cast<char>(stream[at] ^ 1 << random() % 8);
            }
            return stream.substr(0, keep + random() % (stream.size() - keep + 1));
        };
        std::string stream = broken(plain::encodeLz77(data), 0);
        ASSERT_EQ(test::decoded(lz77, stream), plain::decodeLz77(stream)) << i;
        stream = broken(plain::encodeLzw(data), 0);
        ASSERT_EQ(test::decoded(lzw, stream), plain::decodeLzw(stream)) << i;
        std::string const whole = plain::encodeHuffman(data);
        cCodecHuffman table;
        table.fixedTable_encode_init();
        table.fixedTable_encode_add(data.data(), static_cast<unsigned int>(data.size()));
        table.fixedTable_encode_finish();
        cFileMem tree;
        table.fixedTable_encode_getTable(tree);
        stream = broken(whole, 4 + tree.size());
        ASSERT_EQ(test::decoded(huffman, stream), plain::decodeHuffman(stream)) << i;
    }
}

} // namespace
} // namespace Qel
