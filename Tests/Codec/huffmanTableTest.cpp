#include "System/Codec/codecs/codec_huffman.h"

#include "Tests/Codec/testData.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace Qel {
namespace {

unsigned int sizeOf(std::string const &text)
{
    return static_cast<unsigned int>(text.size());
}

struct HuffmanTable : testing::Test {
    void learn(std::string const &data)
    {
        codec.fixedTable_encode_init();
        codec.fixedTable_encode_add(data.data(), sizeOf(data));
        codec.fixedTable_encode_finish();
        cFileMem out;
        EXPECT_TRUE(codec.fixedTable_encode_getTable(out));
        table = test::content(out);
        codec.fixedTable_decode_init(table.data(), sizeOf(table));
    }
    std::string compressed(std::string const &data)
    {
        cFileMem out;
        EXPECT_TRUE(codec.fixedTable_encode_compress(out, data.data(), sizeOf(data)));
        return test::content(out);
    }
    bool decode(void *to, unsigned int room, std::string const &block) const
    {
        return codec.fixedTable_decode_decompress(to, room, block.data(), sizeOf(block));
    }

    cCodecHuffman codec;
    std::string table;
};

TEST_F(HuffmanTable, TreeAndCodesAreThoseOfTheStream)
{
    std::string const data = test::makeData("text", 5'000, 3);
    learn(data);
    std::string const first = table;
    std::string const stream = test::encoded(*std::make_unique<cCodecHuffman>(), data);
    std::string const block = compressed(data);
    EXPECT_TRUE(stream.substr(0, 4) + table + block.substr(4) == stream);
    learn("other data, once there is a table");
    EXPECT_TRUE(table == first);
    EXPECT_EQ(codec.fixedTable_decode_getuncompressedlength(block.data(), sizeOf(block)), data.size());
    auto const readAll = [&] {
        std::string back(data.size() + 3, '#');
        EXPECT_TRUE(decode(back.data(), sizeOf(back), block) && back == data + "###");
    };
    std::thread second(readAll);
    readAll();
    second.join();
}

TEST_F(HuffmanTable, TrainingCoversWhatLiesBelowItsHighestByte)
{
    learn("zzzz");
    for (std::size_t const size : {5u, 6u, 100u, 3'000u}) {
        std::string data = test::makeData("random", size, 9);
        for (char &c : data) {
            c = static_cast<char>(static_cast<unsigned char>(c) % 123);
        }
        std::string back(size, '\0');
        EXPECT_TRUE(decode(back.data(), sizeOf(back), compressed(data)) && back == data)
            << size << ": codes of up to 122 bits";
    }
    EXPECT_EQ(compressed("\xFF\xFF\xFF\xFF\xFF"), std::string("\5\0\0\0", 4)) << "no codes at all";
}

TEST_F(HuffmanTable, RefusesWhatItCannotDo)
{
    cFileMem out;
    codec.fixedTable_encode_add("aabba", 5);
    codec.fixedTable_encode_finish();
    EXPECT_FALSE(codec.fixedTable_encode_getTable(out)) << "never begun";
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, "aabba", 5));
    codec.fixedTable_encode_init();
    codec.fixedTable_encode_add("zz", 2);
    learn("aabba"); // begins anew
    codec.fixedTable_encode_add(nullptr, 0);
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, "aabb", 4));
    EXPECT_FALSE(codec.fixedTable_encode_compress(out, nullptr, 5));
    EXPECT_EQ(out.size(), 0u);

    std::string const block = compressed("aabba");
    char dest[8] = {};
    EXPECT_FALSE(decode(dest, 4, block)) << "no room";
    EXPECT_FALSE(decode(nullptr, 8, block));
    EXPECT_FALSE(codec.fixedTable_decode_decompress(dest, 8, nullptr, 9));
    EXPECT_FALSE(decode(dest, 8, block.substr(0, 4)));
    EXPECT_FALSE(decode(dest, 8, test::fromHex("00000000 0102"))) << "a length of 0";
    EXPECT_EQ(codec.fixedTable_decode_getuncompressedlength(block.data(), 4), 0u);
    EXPECT_EQ(codec.fixedTable_decode_getuncompressedlength(nullptr, 9), 0u);
    EXPECT_STREQ(dest, "");
    EXPECT_TRUE(decode(dest, 5, block));
    EXPECT_STREQ(dest, "aabba");
    codec.fixedTable_decode_init(table.data(), sizeOf(table) - 1);
    EXPECT_FALSE(decode(dest, 8, block)) << "a table that is cut";
    codec.fixedTable_decode_init(nullptr, 9);
    EXPECT_FALSE(decode(dest, 8, block));

    // A leaf (code 0), two leaves (10, 11), and one byte of codes, which start again behind it: from the
    // lowest bit on 0, 10, 11, 0, 10.
    table = test::fromHex("01 61 01 62 00 63");
    codec.fixedTable_decode_init(table.data(), sizeOf(table));
    char around[13] = {};
    EXPECT_TRUE(decode(around, 12, test::fromHex("0C000000 5A")));
    EXPECT_STREQ(around, "abcababcabab");
}

} // namespace
} // namespace Qel
