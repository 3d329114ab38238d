#include "System/System/stringTools.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

using namespace Qel;

namespace {

// The match as it is told: recursive, one step after another.
bool matches(char const *pattern, char const *text)
{
    while (*pattern != 0 && *text != 0 && (*pattern == *text || *pattern == '?')) {
        ++pattern;
        ++text;
    }
    if (*pattern == 0) {
        return *text == 0;
    }
    if (*text == 0 || *pattern != '*') {
        return false;
    }
    if (pattern[1] == 0) {
        return true;
    }
    for (; *text != 0; ++text) {
        if (matches(pattern + 1, text)) {
            return true;
        }
    }
    return false;
}

std::vector<std::string> allTexts(std::string const &alphabet, std::size_t longest)
{
    std::vector<std::string> texts{""};
    for (std::size_t from = 0; texts[from].size() < longest; ++from) {
        for (char const c : alphabet) {
            texts.push_back(texts[from] + c);
        }
    }
    return texts;
}

TEST(StringTools, WildcardMatchAgreesWithTheRecursion)
{
    unsigned char const *const map = StringTools::getMapTable(MAP_IDENTITY);
    std::vector<std::string> const patterns = allTexts("ab*?", 6);
    std::vector<std::string> const texts = allTexts("ab*", 6);
    std::vector<std::wstring> wide;
    for (std::string const &text : texts) {
        wide.emplace_back(text.begin(), text.end());
    }
    for (std::string const &pattern : patterns) {
        std::wstring const widePattern(pattern.begin(), pattern.end());
        for (std::size_t i = 0; i < texts.size(); ++i) {
            bool const expected = matches(pattern.c_str(), texts[i].c_str());
            ASSERT_EQ(StringTools::wcMatch(pattern.c_str(), texts[i].c_str(), map), expected)
                << pattern << ' ' << texts[i];
            ASSERT_EQ(StringTools::wcMatch(widePattern.c_str(), wide[i].c_str(), map), expected)
                << pattern << ' ' << texts[i];
        }
    }
}

TEST(StringTools, WildcardMatchMapsAndTakesNull)
{
    unsigned char const *const lower = StringTools::getMapTable(MAP_LOWER);
    char const *const none = nullptr;
    wchar_t const *const wideNone = nullptr;
    EXPECT_TRUE(StringTools::wcMatch("DATA/*.Txt", "data/A.TXT", lower));
    EXPECT_FALSE(StringTools::wcMatch("DATA", "data", StringTools::getMapTable(MAP_IDENTITY)));
    EXPECT_TRUE(StringTools::wcMatch("\xC4", "\xE4", lower));
    EXPECT_TRUE(StringTools::wcMatch(L"\xC4\x100", L"\xE4\x100", lower));
    EXPECT_FALSE(StringTools::wcMatch(L"\x141", L"\x161", lower)) << "not a map of the low byte";
    EXPECT_TRUE(StringTools::wcMatch(none, none, lower));
    EXPECT_TRUE(StringTools::wcMatch(wideNone, L"", lower));
    EXPECT_FALSE(StringTools::wcMatch("*", none, lower));
    EXPECT_TRUE(StringTools::wcMatch("a", "a", nullptr));

    // Every later place of every star is tried in the recursion: it would not end.
    std::string stars;
    for (int i = 0; i < 2048; ++i) {
        stars += "*a";
    }
    std::string const text(4096, 'a');
    EXPECT_FALSE(StringTools::wcMatch((stars + "b*a").c_str(), text.c_str(), lower));
    EXPECT_FALSE(StringTools::wcMatch(std::string(4096, '*').append("b*a").c_str(), text.c_str(), lower));
    EXPECT_TRUE(StringTools::wcMatch(std::string(4096, '*').c_str(), text.c_str(), lower));
}

TEST(StringTools, MapTables)
{
    unsigned char const *const identity = StringTools::getMapTable(MAP_IDENTITY);
    unsigned char const *const lower = StringTools::getMapTable(MAP_LOWER);
    unsigned char const *const path = StringTools::getMapTable(MAP_PATH);
    EXPECT_EQ(StringTools::getMapTable(static_cast<MapTableType>(3)), identity);
    StringTools::init();
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(identity[i], i);
        EXPECT_EQ(path[i], i == '\\' ? '/' : lower[i]);
    }
    std::string text;
    for (int i = 1; i < 256; ++i) {
        text += static_cast<char>(lower[i]);
    }
    std::string expected;
    for (int i = 1; i < 256; ++i) {
        expected += static_cast<char>(i);
    }
    expected.replace('A' - 1, 26, "abcdefghijklmnopqrstuvwxyz");
    expected[0xC4 - 1] = '\xE4';
    expected[0xD6 - 1] = '\xF6';
    expected[0xDC - 1] = '\xFC';
    EXPECT_EQ(text, expected);
}

TEST(StringTools, RemapCopiesThroughTheMap)
{
    unsigned char const *const path = StringTools::getMapTable(MAP_PATH);
    // Lengths on both sides of every block size, in place and into a buffer with nothing after it.
    for (std::size_t length = 0; length < 70; ++length) {
        std::string text;
        std::string expected;
        for (std::size_t i = 0; i < length; ++i) {
            text += "AZ@[\\/\xC4\xD6\xDC\xC5z{"[i * 7 % 12];
            expected += "az@[//\xE4\xF6\xFC\xC5z{"[i * 7 % 12];
        }
        std::vector<char> dest(length + 1, '!');
        StringTools::remap(dest.data(), std::vector<char>(text.c_str(), text.c_str() + length + 1).data(),
                           path);
        EXPECT_STREQ(dest.data(), expected.c_str());
        StringTools::remap(text.data(), text.data(), path);
        EXPECT_EQ(text, expected);
    }
    unsigned char shifted[256];
    for (int i = 0; i < 256; ++i) {
        shifted[i] = static_cast<unsigned char>(i + 1);
    }
    char dest[] = "kept";
    StringTools::remap(dest, nullptr, path);
    EXPECT_STREQ(dest, "kept");
    StringTools::remap(dest, "GHI", shifted);
    EXPECT_STREQ(dest, "HIJ");
    StringTools::toLower(dest);
    EXPECT_STREQ(dest, "hij");
    StringTools::toLower(static_cast<char *>(nullptr));
    StringTools::toLower(static_cast<wchar_t *>(nullptr));

    wchar_t wide[] = L"A\x141\xC4\\";
    StringTools::toLower(wide);
    EXPECT_STREQ(wide, L"a\x141\xE4\\");
    StringTools::remap(wide, L"\\\xFFFF", path);
    EXPECT_STREQ(wide, L"/\xFFFF");
}

TEST(StringTools, Compare)
{
    unsigned char const *const path = StringTools::getMapTable(MAP_PATH);
    EXPECT_EQ(StringTools::compare("a", "\xFF"), -1);
    EXPECT_EQ(StringTools::compare("ab", "a"), 1);
    EXPECT_EQ(StringTools::compare(nullptr, ""), 0);

    std::tuple<char const *, char const *, int> const rows[] = {
        {"Data\\File.TXT", "data/file.txt", 0},
        {"data/file.txt", "data/file.tx", 't'},
        {"data/file.tx", "data/file.txt", -'t'},
        {"\xFF", "\x01", -2}, // 254 as a signed byte
        {"\xC0", "\x40", -128},
        {nullptr, "a", -'a'},
    };
    for (auto const &[a, b, difference] : rows) {
        EXPECT_EQ(StringTools::compare(a, b, path), difference) << b;
    }
}

TEST(StringTools, CopyReportsWhetherTheTerminatorFitted)
{
    char dest[] = "######";
    EXPECT_EQ(StringTools::strCpy(dest, 4, "abc"), 4u);
    EXPECT_EQ(std::string(dest, 6), std::string("abc\0##", 6));
    std::memset(dest, '#', 6);
    EXPECT_EQ(StringTools::strCpy(dest, 4, "abcd"), 0u);
    EXPECT_EQ(std::string(dest, 6), "abcd##");
    EXPECT_EQ(StringTools::strCpy(dest, 0, "x"), 0u);
    EXPECT_EQ(dest[0], 'a');
    EXPECT_EQ(StringTools::strCpy(dest, 6, ""), 1u);
}

} // namespace
