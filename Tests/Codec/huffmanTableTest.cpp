#include "System/Codec/codecs/codec_huffman.h"

#include "Tests/Codec/plainCodecs.h"
#include "Tests/Codec/testData.h"

#include <gtest/gtest.h>

#include <thread>

namespace Qel {
namespace {

unsigned int sizeOf(std::string const &text)
{
    return static_cast<unsigned int>(text.size());
}

void learn(cCodecHuffman &codec, std::string const &data)
{
    codec.fixedTable_encode_init();
    codec.fixedTable_encode_add(data.data(), sizeOf(data));
    codec.fixedTable_encode_finish();
}

std::string tableOf(cCodecHuffman &codec)
{
    cFileMem out;
    EXPECT_TRUE(codec.fixedTable_encode_getTable(out));
    return test::content(out);
}

std::string compressed(cCodecHuffman &codec, std::string const &data)
{
    cFileMem out;
    EXPECT_TRUE(codec.fixedTable_encode_compress(out, data.data(), sizeOf(data)));
    return test::content(out);
}

TEST(HuffmanTable, TreeAndCodesAreThoseOfTheStream)
{
    std::string const data = test::makeData("text", 5'000, 3);
    cCodecHuffman codec;
    learn(codec, data);
    std::string const stream = plain::encodeHuffman(data);
    std::string const table = tableOf(codec);
    std::string const block = compressed(codec, data);
    EXPECT_TRUE(stream.substr(0, 4) + table + block.substr(4) == stream);

    learn(codec, "other data, once there is a table");
    EXPECT_TRUE(tableOf(codec) == table);

    cCodecHuffman reader;
    reader.fixedTable_decode_init(table.data(), sizeOf(table));
    reader.fixedTable_decode_init(table.data(), sizeOf(table));
    EXPECT_EQ(reader.fixedTable_decode_getuncompressedlength(block.data(), sizeOf(block)), data.size());
    auto const readAll = [&] {
        std::string back(data.size() + 3, '#');
        EXPECT_TRUE(
            reader.fixedTable_decode_decompress(back.data(), sizeOf(back), block.data(), sizeOf(block)));
        EXPECT_TRUE(back == data + "###");
    };
    std::thread second(readAll);
    readAll();
    second.join();
}

TEST(HuffmanTable, TrainingCoversWhatLiesBelowItsHighestByte)
{
    cCodecHuffman codec;
    learn(codec, "zzzz");
    cCodecHuffman reader;
    std::string const table = tableOf(codec);
    reader.fixedTable_decode_init(table.data(), sizeOf(table));
    for (std::size_t const size : {5u, 6u, 100u, 3'000u}) {
        std::string data = test::makeData("random", size, 9);
        for (char &c : data) {
            c = static_cast<char>(static_cast<unsigned char>(c) % 123);
        }
        std::string const block = compressed(codec, data);
        std::string back(size, '\0');
        EXPECT_TRUE(
            reader.fixedTable_decode_decompress(back.data(), sizeOf(back), block.data(), sizeOf(block)));
        EXPECT_TRUE(back == data) << size << ": codes of up to 122 bits";
    }
    EXPECT_EQ(compressed(codec, "\xFF\xFF\xFF\xFF\xFF"), std::string("\5\0\0\0", 4)) << "no codes at all";
}

TEST(HuffmanTable, RefusesWhatItCannotDo)
{
    std::string const five = "aabba";
    cCodecHuffman codec;
    cFileMem out;
    EXPECT_FALSE(codec.fixedTable_encode_getTable(out));
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, five.data(), 5));
    codec.fixedTable_encode_add(five.data(), 5);
    codec.fixedTable_encode_finish();
    EXPECT_FALSE(codec.fixedTable_encode_getTable(out)) << "never begun";
    codec.fixedTable_encode_init();
    codec.fixedTable_encode_add("zz", 2);
    learn(codec, five);
    codec.fixedTable_encode_add(nullptr, 0);
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, five.data(), 4));
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, nullptr, 5));
    EXPECT_EQ(out.size(), 0u);

    std::string const table = tableOf(codec);
    std::string const block = compressed(codec, five);
    char dest[8] = {};
    auto const decode = [&](void *to, unsigned int room, void const *from, unsigned int size) {
        return codec.fixedTable_decode_decompress(to, room, from, size);
    };
    EXPECT_FALSE(decode(dest, 8, block.data(), sizeOf(block))) << "no table";
    codec.fixedTable_decode_init(table.data(), sizeOf(table) - 1);
    EXPECT_FALSE(decode(dest, 8, block.data(), sizeOf(block))) << "a table that is cut";
    codec.fixedTable_decode_init(nullptr, 9);
    EXPECT_FALSE(decode(dest, 8, block.data(), sizeOf(block)));
    codec.fixedTable_decode_init(table.data(), sizeOf(table));
    EXPECT_FALSE(decode(dest, 4, block.data(), sizeOf(block))) << "no room";
    EXPECT_FALSE(decode(nullptr, 8, block.data(), sizeOf(block)));
    EXPECT_FALSE(decode(dest, 8, nullptr, 9));
    EXPECT_FALSE(decode(dest, 8, block.data(), 4));
    EXPECT_FALSE(decode(dest, 8, "\0\0\0\0\1\2", 6)) << "a length of 0";
    EXPECT_STREQ(dest, "");
    EXPECT_EQ(codec.fixedTable_decode_getuncompressedlength(block.data(), 4), 0u);
    EXPECT_EQ(codec.fixedTable_decode_getuncompressedlength(nullptr, 9), 0u);
    EXPECT_TRUE(decode(dest, 5, block.data(), sizeOf(block)));
    EXPECT_STREQ(dest, five.c_str());
}

// A tree of 1 leaf (code 0) and 2 leaves (10, 11), and one byte of codes: they start again behind it.
TEST(HuffmanTable, CodesBehindTheEndAreThoseOfTheStart)
{
    std::string const table = test::fromHex("01 61 01 62 00 63");
    cCodecHuffman codec;
    codec.fixedTable_decode_init(table.data(), sizeOf(table));
    // From the lowest bit on: 0, 10, 11, 0, 10 and again.
    std::string const block = test::fromHex("0C000000 5A");
    char dest[13] = {};
    EXPECT_TRUE(codec.fixedTable_decode_decompress(dest, 12, block.data(), sizeOf(block)));
    EXPECT_STREQ(dest, "abcababcabab");
}

} // namespace
} // namespace Qel
