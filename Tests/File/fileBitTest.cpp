#include "System/File/fileBit.h"
#include "System/File/fileBitOld.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace Qel {
namespace {

template <class Bits>
std::string content(Bits &file)
{
    return {reinterpret_cast<char const *>(file.getData()), file.getNumBytes()};
}

TEST(FileBit, FieldsGoOutMostSignificantBitFirst)
{
    cFileBit file;
    file.write_bits(0x0A, 4);
    EXPECT_EQ(content(file), "\x05") << "1, 0, 1, 0 from bit 0 on";
    file.write_bits(0x1FF, 9);
    EXPECT_EQ(file.tell(), 13u);
    EXPECT_EQ(file.getNumBytes(), 2u);
    EXPECT_FALSE(file.eof());
    file.seek(0);
    EXPECT_TRUE(file.read_bit());
    EXPECT_FALSE(file.read_bit());
    EXPECT_EQ(file.read_bits(2), 2u);
    EXPECT_EQ(file.read_bits(12), 0xFF8u) << "the three filling bits are 0";
    EXPECT_TRUE(file.eof());
    EXPECT_EQ(file.read_bits(32), 0u);
    EXPECT_FALSE(file.read_bit());
    EXPECT_EQ(file.tell(), 16u) << "the position stays at the end";

    file.write_bits(0x80000001, 0);
    EXPECT_EQ(file.tell(), 48u) << "a width of 0 stands for 32";
    file.write_bits(~0u, 33);
    EXPECT_EQ(file.tell(), 48u);
    file.seek(16);
    EXPECT_EQ(file.read_bits(33), 0u);
    EXPECT_EQ(file.read_bits(0), 0x80000001u);
}

TEST(FileBit, FieldsOfAnyWidthsMatchSingleBits)
{
    std::mt19937 random(3);
    std::vector<bool> expected;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> fields;
    cFileBit file;
    for (int i = 0; i < 2'000; ++i) {
        auto const width = static_cast<std::uint32_t>(random() % 32 + 1);
        auto const value = static_cast<std::uint32_t>(random());
        if (random() % 4 == 0) {
            file.write_bit((value & 1) != 0);
            expected.push_back((value & 1) != 0);
            fields.emplace_back(value & 1, 1);
            continue;
        }
        file.write_bits(value, width);
        for (std::uint32_t bit = width; bit-- > 0;) {
            expected.push_back((value >> bit & 1) != 0);
        }
        fields.emplace_back(width == 32 ? value : value & ((1u << width) - 1), width);
    }
    ASSERT_EQ(file.tell(), expected.size());
    std::string bytes((expected.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < expected.size(); ++i) {
        bytes[i / 8] = static_cast<char>(bytes[i / 8] | expected[i] << i % 8);
    }
    EXPECT_EQ(content(file), bytes);
    file.seek(0);
    for (auto const &[value, width] : fields) {
        ASSERT_EQ(file.read_bits(width), value);
    }
    // A field that hangs over the end has its missing bits as zeros, at every width and offset.
    unsigned int const size = file.size();
    for (unsigned int left = 0; left < 32; ++left) {
        file.seek(size - left);
        std::uint32_t const whole = file.read_bits(32);
        for (unsigned int bit = 0; bit < 32; ++bit) {
            std::size_t const at = size - left + bit;
            ASSERT_EQ((whole >> (31 - bit) & 1) != 0, at < expected.size() && expected[at]) << left;
        }
        EXPECT_EQ(file.tell(), size);
    }
}

TEST(FileBit, BytesAreMirroredAndFollowAtOnce)
{
    cFileBit file;
    EXPECT_EQ(file.write("\x01\xF0", 2), 2u);
    EXPECT_EQ(content(file), "\x80\x0F");
    file.write_bits(7, 3);
    EXPECT_EQ(file.write("\xFF", 1), 1u);
    EXPECT_EQ(file.tell(), 27u);
    char back[4] = {1, 1, 1, 1};
    file.seek(19);
    EXPECT_EQ(file.read(back, 4), 4u) << "always all of it";
    EXPECT_EQ(std::string(back, 4), std::string("\xFF\0\0\0", 4));
    EXPECT_EQ(file.write(nullptr, 1), 0u);
    EXPECT_EQ(file.read(nullptr, 1), 0u);
    EXPECT_FALSE(file.reserve(1));

    file.seek(file.size());
    EXPECT_EQ(file.write(file.getData(), 4), 4u) << "its own bytes may be the source";
    file.seek(32);
    EXPECT_EQ(file.read(back, 2), 2u);
    EXPECT_EQ(std::string(back, 2), "\x80\x0F");
}

TEST(FileBit, ZerosDoNotClearAndGapsAreZeros)
{
    cFileBit file;
    file.write_bits(0xFF, 8);
    file.seek(0);
    file.write_bits(0, 8);
    EXPECT_EQ(content(file), "\xFF");
    EXPECT_EQ(file.seek(100), 100u);
    EXPECT_EQ(file.write("", 0), 0u);
    EXPECT_EQ(file.getNumBytes(), 1u) << "writing nothing fills no gap";
    file.write_bit(true);
    EXPECT_EQ(file.getNumBytes(), 13u);
    EXPECT_EQ(content(file), std::string("\xFF") + std::string(11, '\0') + "\x10");

    cFileBit const source(std::vector<unsigned char>{1, 2});
    EXPECT_EQ(source.size(), 16u);
    cFileBit copy(file);
    EXPECT_EQ(copy.tell(), 101u);
    copy.write_bit(true);
    EXPECT_EQ(content(file), std::string("\xFF") + std::string(11, '\0') + "\x10");
}

template <class Bits>
class BitLimits : public testing::Test {
};
using BothKinds = testing::Types<cFileBit, cFileBitOld>;
TYPED_TEST_SUITE(BitLimits, BothKinds);

TYPED_TEST(BitLimits, NothingIsWrittenOrReadBehindWhatCanBeCounted)
{
    TypeParam file;
    file.write_bit(true);
    char byte = 'x';
    for (unsigned int const bit : {0xFFFFFFF8u, 0xFFFFFFFFu}) {
        file.seek(bit);
        file.write_bit(true);
        EXPECT_FALSE(file.read_bit());
        EXPECT_EQ(file.tell(), bit);
        file.write_bits(1, 1);
        EXPECT_EQ(file.read_bits(32), 0u);
        EXPECT_EQ(file.write("x", 1), 0u);
        EXPECT_EQ(file.read(&byte, 1), 1u);
        EXPECT_EQ(byte, '\0');
    }
    file.seek(8);
    EXPECT_EQ(file.write("x", 0xFFFFFFFF), 0u);
    EXPECT_EQ(file.getNumBytes(), 1u);
}

TEST(FileBitOld, AWriteLandsOnTheNextWholeByte)
{
    cFileBitOld file;
    file.write_bit(true);
    file.write_bit(false);
    file.write_bit(true);
    EXPECT_EQ(file.write("\x01", 1), 1u);
    EXPECT_EQ(content(file), "\x05\x01") << "bytes are not mirrored";
    EXPECT_EQ(file.tell(), 16u);
    file.write_bit(true);
    EXPECT_EQ(file.write("yz", 2), 2u);
    EXPECT_EQ(content(file), "\x05\x01\x01yz");

    file.seek(3);
    char back[9] = {};
    EXPECT_EQ(file.read(back, 2), 2u);
    EXPECT_STREQ(back, "\x01\x01");
    EXPECT_EQ(file.tell(), 24u);
    EXPECT_EQ(file.read(back, 8), 8u);
    EXPECT_EQ(std::string(back, 8), std::string("yz\0\0\0\0\0\0", 8));
    EXPECT_EQ(file.tell(), 88u);
    EXPECT_EQ(file.write(nullptr, 1), 0u);
    EXPECT_EQ(file.read(nullptr, 1), 0u);

    file.write_bits(0xFF, 8);
    EXPECT_EQ(file.read_bits(8), 0u);
    EXPECT_EQ(file.tell(), 88u) << "there are no fields";
}

TEST(FileBitOld, AfterASeekBackAWriteStillLandsAtTheEnd)
{
    cFileBitOld file(std::vector<unsigned char>{'a', 'b', 'c', 'd'});
    file.seek(8);
    EXPECT_EQ(file.write("XY", 2), 2u);
    EXPECT_EQ(content(file), "abXY");
    EXPECT_EQ(file.tell(), 24u);
    EXPECT_EQ(file.write(file.getData(), 4), 4u) << "its own bytes may be the source";
    EXPECT_EQ(content(file), "abXabXY");
}

} // namespace
} // namespace Qel
