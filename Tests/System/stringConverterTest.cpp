#include "System/System/stringConverter.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

using namespace Qel;

namespace {

class StreamText {
public:
    StreamText() { m_stream.imbue(std::locale::classic()); }

    std::string operator()(float value)
    {
        m_stream.str("");
        m_stream << value;
        return m_stream.str();
    }

private:
    std::ostringstream m_stream;
};

TEST(StringConverter, WritesFloatsAsAStreamDoes)
{
    StreamText expected;
    auto const check = [&expected](float value) {
        ASSERT_EQ(StringConverter::toString(value), expected(value)) << std::bit_cast<std::uint32_t>(value);
    };
    // Every exponent at both ends: zero, denormals, infinity and not-a-number are among them.
    for (std::uint32_t exponent = 0; exponent < 512; ++exponent) {
        for (std::uint32_t step = 0; step < 50; ++step) {
            check(std::bit_cast<float>(exponent << 23 | step));
            check(std::bit_cast<float>((exponent << 23 | 0x7FFFFF) - step));
        }
    }
    // Ties: seven significant digits that end in 5, held exactly.
    for (int i = 0; i < 20000; ++i) {
        check(static_cast<float>(i * 50 + 1000005));
        check(static_cast<float>(i) + 0.5f);
        check(static_cast<float>(i) / 64);
    }
    std::mt19937 random(20);
    for (int i = 0; i < 300000; ++i) {
        check(std::bit_cast<float>(static_cast<std::uint32_t>(random())));
    }
}

TEST(StringConverter, WritesTheOtherTypes)
{
    EXPECT_EQ(StringConverter::toString(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(StringConverter::toString(4000000000u), "4000000000");
    EXPECT_EQ(StringConverter::toString(true), "true");
    EXPECT_EQ(StringConverter::toString(false), "false");
    EXPECT_EQ(StringConverter::toString(Color(0x0A0Bcdefu)), "0a0bcdef");
    EXPECT_EQ(StringConverter::toString(D3DXVECTOR3(1, -2.5f, 1e10f)), "1 -2.5 1e+10");
    D3DXMATRIX matrix;
    for (unsigned i = 0; i < 16; ++i) {
        matrix(i / 4, i % 4) = static_cast<float>(i);
    }
    EXPECT_EQ(StringConverter::toString(matrix), "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15");
}

TEST(StringConverter, ReadsRealsAsTheCLibraryDoes)
{
    std::vector<std::string> texts{
        "1",     "-2",       "--2",      "-+2",     "- 1",     "",         "x",         "-.",
        ".5",    "5.",       "1e",       "1e+",     "1e5",     "1e+-5",    "1,5",       "00012",
        "0.1",   "16777217", "1e39",     "-1e400",  "1e-46",   "1e-400",   "0e999",     "-Infinity",
        "infx",  "in",       "-nan",     "nan(12)", "-0x",     "0xg",      "0x-1",      "0xinf",
        "0x1p3", "0X.8",     "0x1.8P-1", "-0x10",   "0x1p+-3", "0x1p9999", "0x1p-9999", "-0"};
    texts.insert(texts.end(), {" \t\n\v\f\r+1.5x", "3.4028236e38", "1e99999999999999999999",
                               "-1e-99999999999999999999", "0.00000000000000000000000001e27"});
    std::mt19937 random(21);
    std::string const alphabet = "0123456789.eE+-xXpP afniNF";
    for (int i = 0; i < 300000; ++i) {
        std::string &text = texts.emplace_back(i % 2 == 0 ? "" : "0x");
        for (std::size_t length = random() % 10; length > 0; --length) {
            text += alphabet[random() % alphabet.size()];
        }
    }
    for (std::string const &text : texts) {
        ASSERT_EQ(std::bit_cast<std::uint32_t>(StringConverter::parseReal(text)),
                  std::bit_cast<std::uint32_t>(static_cast<float>(std::atof(text.c_str()))))
            << text;
    }
    EXPECT_TRUE(std::isinf(StringConverter::parseReal(String(100000, '9'))));
}

TEST(StringConverter, ReadsIntegersAndClampsThem)
{
    std::tuple<char const *, int, unsigned int> const rows[] = {
        {"12", 12, 0x12},
        {" \t-12", -12, 0xFFFFFFEE},
        {"+7g", 7, 7},
        {"", 0, 0},
        {"0x1F", 0, 0x1F},
        {"-0X1f", 0, 0xFFFFFFE1},
        {"0x", 0, 0},
        {"--1", 0, 0},
        {"- 1", 0, 0},
        {"ffffffff", 0, 0xFFFFFFFF},
        {"100000000", 100000000, 0xFFFFFFFF},
        {"2147483647", 2147483647, 0xFFFFFFFF},
        {"2147483648", 2147483647, 0xFFFFFFFF},
        {"-2147483648", -2147483647 - 1, 0xFFFFFFFF},
        {"-99999999999999999999", -2147483647 - 1, 0xFFFFFFFF},
    };
    for (auto const &[text, number, hex] : rows) {
        EXPECT_EQ(StringConverter::parseInt(text), number) << text;
        EXPECT_EQ(StringConverter::parseHex(text), hex) << text;
        EXPECT_EQ(StringConverter::parseColorValue(text).value, hex) << text;
    }
}

TEST(StringConverter, ReadsBoolsVectorsAndMatrices)
{
    EXPECT_TRUE(StringConverter::parseBool("1") && StringConverter::parseBool("true"));
    for (char const *const text : {"True", "TRUE", "0", "", "true ", "11"}) {
        EXPECT_FALSE(StringConverter::parseBool(text)) << text;
    }

    EXPECT_EQ(StringConverter::parseVector3d("\n1\t\t-2.5 x "), D3DXVECTOR3(1, -2.5f, 0));
    for (char const *const text : {"1 2", "1 2 3 4", ""}) {
        EXPECT_EQ(StringConverter::parseVector3d(text), D3DXVECTOR3(0, 0, 0)) << text;
    }

    String const fifteen = "0 1 2 3 4 5 6 7 8 9 10 11 12 13 14";
    D3DXMATRIX const matrix = StringConverter::parseMatrix4d(fifteen + " 15");
    D3DXMATRIX const identity = StringConverter::parseMatrix4d(fifteen);
    for (unsigned i = 0; i < 16; ++i) {
        EXPECT_EQ(matrix(i / 4, i % 4), static_cast<float>(i));
        EXPECT_EQ(identity(i / 4, i % 4), i % 5 == 0 ? 1.0f : 0.0f);
    }
}

} // namespace
