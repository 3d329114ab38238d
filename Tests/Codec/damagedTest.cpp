#include "System/Codec/codecs/codec_huffman.h"
#include "System/Codec/codecs/codec_lzw.h"
#include "System/File/fileBit.h"
#include "Tests/Codec/testData.h"

#include <gtest/gtest.h>

namespace Qel {
namespace {

struct Row {
    char const *what;
    std::string stream;
    std::string data;
    bool result = true;
};

void expectRows(iCodec &codec, std::vector<Row> const &rows)
{
    for (Row const &row : rows) {
        SCOPED_TRACE(row.what);
        bool result = !row.result;
        EXPECT_TRUE(test::decoded(codec, row.stream, &result) == row.data);
        EXPECT_EQ(result, row.result);
    }
}

// A tree as deep as this: inner nodes, each with a leaf on side 0; then a code that leads to the deepest
// leaf.
std::string deepTree(int inner)
{
    std::string stream = test::fromHex("01000000");
    for (int i = 0; i < inner; ++i) {
        stream += {'\1', static_cast<char>(i)};
    }
    return stream + test::fromHex("00 EE") + std::string(32, '\xFF');
}

TEST(DamagedStream, HuffmanTrees)
{
    cCodecHuffman codec;
    expectRows(codec, {
                          {"nothing", "", ""},
                          {"half a count", test::fromHex("0500"), ""},
                          {"a leaf without its byte", test::fromHex("05000000 00"), ""},
                          {"a second leaf without its byte", test::fromHex("05000000 01 61 00"), ""},
                          {"a lone leaf needs no codes", test::fromHex("05000000 00 61"), "aaaaa"},
                          {"inner nodes", test::fromHex("05000000") + std::string(100'000, '\xFF'), ""},
                          {"the deepest tree there can be", deepTree(255), "\xEE"},
                          {"one deeper", deepTree(256), ""},
                      });
}

std::string lzwStream(std::vector<std::pair<unsigned, unsigned>> const &codes)
{
    cFileBit bits;
    for (auto const &[code, width] : codes) {
        bits.write_bits(code, width);
    }
    return {reinterpret_cast<char const *>(bits.getData()), bits.getNumBytes()};
}

TEST(DamagedStream, LzwCodes)
{
    std::vector<std::pair<unsigned, unsigned>> sixteen = {{'a', 9}};
    for (unsigned width = 9; width < 16; ++width) {
        sixteen.emplace_back(257, width);
    }
    sixteen.insert(sixteen.end(), {{'b', 16}, {256, 16}});
    std::vector<std::pair<unsigned, unsigned>> flushes;
    for (int i = 0; i < 40'000; ++i) {
        flushes.insert(flushes.end(), {{'a', 9}, {258, 9}});
    }
    flushes.insert(flushes.end(), {{'b', 9}, {256, 9}});
    cCodecLZW codec;
    expectRows(
        codec,
        {
            {"nothing", "", "", false},
            {"no end code", lzwStream({{'a', 9}, {'b', 9}}), "ab", false},
            {"a code that is cut", lzwStream({{'a', 9}, {'b', 9}, {256, 9}}).substr(0, 3), "ab", false},
            {"a code beyond the next one", lzwStream({{'a', 9}, {'b', 9}, {261, 9}, {'c', 9}}), "ab", false},
            {"first a string", lzwStream({{259, 9}, {'a', 9}}), "", false},
            {"a string behind a flush", lzwStream({{'a', 9}, {258, 9}, {259, 9}}), "a", false},
            {"9 bits behind a flush, to the last one",
             lzwStream({{'a', 9}, {258, 9}, {'b', 9}, {258, 9}, {'c', 9}, {'d', 9}, {258, 9}, {'e', 9}}),
             "abcde", false},
            {"16 bits", lzwStream(sixteen), "a", false},
            {"no flush in time", lzwStream({40'000, {'a', 9}}), std::string(32'768 - 259 + 1, 'a'), false},
            {"wider and whole", lzwStream({{'a', 9}, {257, 9}, {259, 10}, {256, 10}}), "aaa"},
            {"flushed and whole", lzwStream({{'a', 9}, {258, 9}, {'b', 9}, {256, 9}, {'c', 9}}), "ab"},
            {"always flushed", lzwStream(flushes), std::string(40'000, 'a') + "b"},
            {"flushed and ended", lzwStream({{'a', 9}, {258, 9}, {256, 9}}), "a"},
        });
}

TEST(DamagedStream, OutputStaysInProportion)
{
    cCodecHuffman huffman;
    cCodecLZW lzw;
    std::string const many = test::encoded(lzw, std::string(30'000'000, '\0'));
    struct {
        iCodec &codec;
        std::string stream;
        std::uint32_t limit;
        std::size_t size;
        bool result;
    } const rows[] = {
        {huffman, test::fromHex("FFFFFFFF 00 61"), 1'000'000, 1'000'000, false},
        {huffman, test::fromHex("FFFFFFFF 01 61 00 62 FF"), 64 << 20, 64 << 20, false},
        {lzw, many, 1'000'000, 30'000'000, true}, // as far as the format goes
    };
    EXPECT_EQ(iCodec::getOutputLimit(), 64u << 20);
    for (auto const &row : rows) {
        iCodec::setOutputLimit(row.limit);
        bool result = !row.result;
        EXPECT_EQ(test::decoded(row.codec, row.stream, &result).size(), row.size);
        EXPECT_EQ(result, row.result);
    }
}

} // namespace
} // namespace Qel
