#include "System/System/stringTools.h"
#include "System/math/crc32.h"
#include "System/math/md5.h"
#include "Tests/math/atEveryLevel.h"
#include "Tests/math/mathNumbersReference.inc"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace Qel {
namespace {

std::vector<unsigned char> pattern(std::size_t size)
{
    std::vector<unsigned char> bytes(size);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<unsigned char>(i * i * 7 + i * 3 + 11);
    }
    return bytes;
}

std::string text(MD5Hash const &hash)
{
    std::string out;
    for (unsigned char const byte : hash.hash) {
        out += "0123456789abcdef"[byte >> 4];
        out += "0123456789abcdef"[byte & 15];
    }
    return out;
}

unsigned int stepped(unsigned int crc, unsigned char const *data, std::size_t size)
{
    for (std::size_t i = 0; i < size; ++i) {
        cCRC32::addCrc(crc, data[i]);
    }
    return crc;
}

TEST(CRC32, IsTheStandardOneWithoutItsLastInversion)
{
    EXPECT_EQ(cCRC32::CRC32Table[1], 0x77073096U);
    EXPECT_EQ(cCRC32().getCRC(), 0xFFFFFFFFU);
    EXPECT_EQ(cCRC32::calcCRC(""), 0xFFFFFFFFU);
    EXPECT_EQ(cCRC32::calcCRC(nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(StringTools::calcHash(nullptr), 0xFFFFFFFFU);
    EXPECT_EQ(cCRC32::calcCRC("123456789"), 0x340BC6D9U);
    atEveryLevel([] {
        for (std::size_t i = 0; i < std::size(reference::digestSizes); ++i) {
            SCOPED_TRACE(reference::digestSizes[i]);
            std::vector<unsigned char> const bytes = pattern(reference::digestSizes[i]);
            EXPECT_EQ(cCRC32().add(bytes.data(), static_cast<unsigned int>(bytes.size())),
                      reference::crcs[i]);
            EXPECT_EQ(stepped(0xFFFFFFFFU, bytes.data(), bytes.size()), reference::crcs[i]);
        }
    });
}

// Every way in which a size can be cut into blocks, from every value that a stream can have reached.
TEST(CRC32, GoesOnFromAnyValueOverAnySizeAtEveryLevel)
{
    std::vector<unsigned char> const bytes = pattern(1500);
    atEveryLevel([&] {
        for (unsigned int size = 0; size < 1400; size += size < 300 ? 1 : 37) {
            unsigned int const offset = size % 67;
            cCRC32 crc;
            crc.add(bytes.data(), offset);
            unsigned int const before = crc.getCRC();
            unsigned int const whole = stepped(before, bytes.data() + offset, size);
            ASSERT_EQ(crc.calcCRC(bytes.data() + offset, size),
                      stepped(0xFFFFFFFFU, bytes.data() + offset, size));
            ASSERT_EQ(crc.getCRC(), before) << "the running value is left alone";
            ASSERT_EQ(crc.add(bytes.data() + offset, size), whole) << size;
        }
    });
    cCRC32 crc;
    crc.addString("1234");
    crc.addString(nullptr);
    crc.addString("56789");
    EXPECT_EQ(crc.getCRC(), 0x340BC6D9U);
}

// Names of every length at every place around the end of a page, where whole vectors must not be read.
TEST(CalcHash, MapsHashesAndMeasuresNamesWhereverTheyLie)
{
    constexpr std::size_t page = 4096;
    std::vector<char> memory(4 * page, 'x');
    char *const boundary = reinterpret_cast<char *>(
        (reinterpret_cast<std::uintptr_t>(memory.data()) + 2 * page) & ~std::uintptr_t{page - 1});
    std::vector<unsigned char> scramble(256);
    for (std::size_t i = 0; i < 256; ++i) {
        scramble[i] = static_cast<unsigned char>(i * 7 + 3);
    }
    unsigned char const *const maps[] = {StringTools::getMapTable(MAP_PATH), scramble.data()};
    std::vector<unsigned char> const bytes = pattern(700);
    atEveryLevel([&] {
        for (int start = -140; start <= 70; start += 3) {
            for (std::size_t length = 0; length < 140; ++length) {
                char *const name = boundary + start;
                auto const from = bytes.begin() + 100 + start % 100;
                std::vector<unsigned char> source(from, from + static_cast<int>(length));
                for (std::size_t i = 0; i < length; ++i) {
                    source[i] = source[i] == 0 ? 0x5C : source[i];
                    name[i] = static_cast<char>(source[i]);
                }
                name[length] = 0;
                ASSERT_EQ(StringTools::calcHash(name), stepped(0xFFFFFFFFU, source.data(), length))
                    << start << ' ' << length;
                for (unsigned char const *const map : maps) {
                    std::vector<unsigned char> mapped(source);
                    for (unsigned char &byte : mapped) {
                        byte = map[byte];
                    }
                    ASSERT_EQ(StringTools::calcHash(name, const_cast<unsigned char *>(map)),
                              stepped(0xFFFFFFFFU, mapped.data(), length))
                        << start << ' ' << length;
                }
                name[length] = 'x';
            }
        }
    });
}

TEST(MD5, GivesTheDigestHoweverTheMessageIsCut)
{
    for (std::size_t i = 0; i < std::size(reference::digestSizes); ++i) {
        SCOPED_TRACE(reference::digestSizes[i]);
        std::vector<unsigned char> const bytes = pattern(reference::digestSizes[i]);
        MD5Hash hash;
        cMD5 whole;
        whole.update(reinterpret_cast<unsigned char const *>("x"), 1); // dropped by getMD5()
        whole.getMD5(bytes.data(), static_cast<unsigned int>(bytes.size()), hash);
        EXPECT_EQ(text(hash), reference::md5s[i]);
        for (unsigned int const piece : {1U, 7U, 63U, 64U, 65U, 200003U}) {
            cMD5 md5;
            for (std::size_t at = 0; at < bytes.size(); at += piece) {
                md5.update(bytes.data() + at,
                           static_cast<unsigned int>(std::min<std::size_t>(piece, bytes.size() - at)));
            }
            md5.final(hash);
            EXPECT_EQ(text(hash), reference::md5s[i]) << piece;
        }
    }
}

// The count of bits passes 32 bits at half a gigabyte; the digest is that of other tools for as many
// zeros.
TEST(MD5, CountsBitsBeyondThirtyTwo)
{
    std::vector<unsigned char> const zeros(1U << 20U);
    cMD5 md5;
    for (int i = 0; i < 513; ++i) {
        md5.update(zeros.data(), 1U << 20U);
    }
    MD5Hash hash;
    md5.final(hash);
    EXPECT_EQ(text(hash), "f3a8799d64129a6fd8a5aa56f199ac54");
}

} // namespace
} // namespace Qel
