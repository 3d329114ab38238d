#include "System/System/stringVector.h"
#include "System/System/wString.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

using namespace Qel;

namespace {

enum Position { first };

// What natural code writes: the conversion to a pointer must make none of it ambiguous or a trap.
TEST(String, WorksWithAllKindsOfText)
{
    std::string const standard = "std";
    std::string_view const view = "view";
    char const *const plain = "plain";
    char array[] = "array";
    StringBase const base = "base";
    char const *const none = nullptr;

    String text = String("a") + "b" + plain + array + 'c' + standard + view + base + none;
    EXPECT_EQ(text, "abplainarraycstdviewbase");
    text = "x" + (plain + (array + ('c' + (standard + (view + (base + text.substr(0, 1)))))));
    EXPECT_EQ(text, "xplainarraycstdviewbasea");
    using namespace Qel;
    std::string const joined = standard + array + '.' + plain;
    EXPECT_EQ(joined, "stdarray.plain") << "standard strings stay among themselves";
    text = "<";
    text += plain;
    text += '.';
    text += standard;
    text += view;
    text += text;
    EXPECT_EQ(text, "<plain.stdview<plain.stdview");
    text = standard;
    EXPECT_TRUE(text == standard && standard == text && text == std::string_view("std") && text != view &&
                text == StringBase("std") && text != plain && "std" == text && text < "t" && "s" < text &&
                standard <= text && text > base && text < view);
    text = {};
    EXPECT_TRUE(text.empty() && String(none).empty());

    text = String("ab", 1) + String(2, 'c');
    EXPECT_EQ(text[0], 'a');
    EXPECT_EQ(text[1L], 'c');
    EXPECT_EQ(text[first], 'a');
    text[2u] = 'd';
    EXPECT_TRUE(text.starts_with("ac") && text.ends_with(String("d")) && !text.ends_with(standard));
    EXPECT_STREQ(text, "acd");

    std::map<String, int> map{{"b", 2}, {"a", 1}};
    std::unordered_map<String, int> hashed{{"b", 2}};
    EXPECT_EQ(map.begin()->first, "a");
    EXPECT_EQ(hashed.find("b")->second, 2);
    EXPECT_EQ(std::hash<String>()("name"), std::hash<std::string>()("name"));
    StringVector const list{"p", "q"};
    EXPECT_EQ(std::find(list.begin(), list.end(), "q") - list.begin(), 1);

    std::ostringstream out;
    out << text << String("!");
    EXPECT_EQ(out.str(), "acd!");
    EXPECT_EQ(std::string(text), "acd");
}

TEST(String, HoldsTheTextOfAValue)
{
    EXPECT_EQ(String(true) + String(-2147483647 - 1) + String(4294967295u), "1-21474836484294967295");
    EXPECT_EQ(String(1234567.0f) + String('c') + String(static_cast<unsigned char>('d')), "1.23457e+06cd");
    EXPECT_EQ(WString(true) + WString(-7) + WString(7u) + WString(0.5f) + WString(L'c'), L"1-770.5c");
}

TEST(String, TrimTakesBlanksButNoNewline)
{
    std::tuple<char const *, bool, bool, char const *, int> const rows[] = {
        {" \t\ra b\r\t ", true, true, "a b", 6},
        {" \t\ra b\r\t ", true, false, "a b\r\t ", 3},
        {" \t\ra b\r\t ", false, true, " \t\ra b", 3},
        {"a \n", true, true, "a \n", 0},
        {"\n a", true, true, "\n a", 0},
        {" ", true, false, "", 1},
        {"    ", true, true, "", 4},
        {"    ", false, true, " ", 3},
        {"", true, true, "", 0},
    };
    for (auto const &[given, left, right, trimmed, count] : rows) {
        SCOPED_TRACE(given);
        String text = given;
        EXPECT_EQ(text.trim(left, right), count);
        EXPECT_EQ(text, trimmed);
        WString wide;
        wide.toString(given);
        EXPECT_EQ(wide.trim(left, right), count);
        EXPECT_EQ(wide, WString().toString(trimmed));
    }
}

TEST(String, SplitCountsSplitsAndMakesNoEmptyPiece)
{
    std::tuple<char const *, unsigned int, StringVector> const rows[] = {
        {"a  b ", 0, {"a", "b"}},
        {"", 0, {""}},
        {"   ", 0, {}},
        {"key a b", 1, {"key", "a b"}},
        {"key  a b ", 1, {"key", "a b "}},
        {" key a b", 1, {"key a b"}}, // the blank in front counts as a split
        {" key a b", 2, {"key", "a b"}},
        {"a\tb c", 0, {"a", "b", "c"}},
    };
    for (auto const &[text, maxSplits, expected] : rows) {
        SCOPED_TRACE(text);
        StringVector pieces{"old"};
        EXPECT_EQ(String(text).split(pieces, " \t", maxSplits), expected.size());
        EXPECT_EQ(pieces, expected);
        std::vector<WString> wide;
        EXPECT_EQ(WString().toString(text).split(wide, L" \t", maxSplits), expected.size());
        for (std::size_t i = 0; i < wide.size(); ++i) {
            EXPECT_EQ(wide[i], WString().toString(expected[i]));
        }
    }
    StringVector list{"x", "a,b", ","};
    EXPECT_EQ(list[1].split(list, list[2]), 2u) << "a list may be split into itself";
    EXPECT_EQ(list, (StringVector{"a", "b"}));
}

TEST(String, FormatsTextOfAnyLength)
{
    String text = "own";
    EXPECT_EQ(text.sprintf("%s-%d-%s", text.c_str(), 7, "x"), "own-7-x");
    for (int const length : {4094, 4095, 4096, 100000}) {
        text.sprintf("%*d", length, 1);
        EXPECT_EQ(text, std::string(static_cast<std::size_t>(length) - 1, ' ') + "1");
        WString wide;
        wide.sprintf(L"%*d", length, 1);
        EXPECT_EQ(wide, std::wstring(static_cast<std::size_t>(length) - 1, L' ') + L"1");
        wide.sprintf(L"%ls%d", wide.c_str(), 2);
        EXPECT_EQ(wide.size(), static_cast<std::size_t>(length) + 1);
    }
    WString kept = L"kept";
    kept.sprintf(L"%s", "\xFF");
    EXPECT_EQ(kept, L"kept") << "no text in the \"C\" locale";
}

TEST(String, ConvertsBetweenNarrowAndWide)
{
    WString wide;
    wide.toString(String("\xC3\xA9\xF0\x9F\x98\x80"));
    EXPECT_EQ(wide, L"\xE9\x1F600");
    EXPECT_EQ(String().toString(wide), "\xC3\xA9\xF0\x9F\x98\x80");
    String kept = "kept";
    EXPECT_EQ(kept.toString(WString()), "kept");
    EXPECT_TRUE(wide.toString(String()).empty());
}

TEST(String, ChangesCase)
{
    EXPECT_EQ(String("aZ[`{\xC4\xD6\xDC\xC5").toLowerCase(), "az[`{\xE4\xF6\xFC\xC5");
    EXPECT_EQ(String("aZ[`{\xE4\xF6\xFC").toUpperCase(), "AZ[`{\xE4\xF6\xFC");
    EXPECT_EQ(WString(L"aZ[\xC4").toLowerCase(), L"az[\xC4");
    EXPECT_EQ(WString(L"aZ[\xE4").toUpperCase(), L"AZ[\xE4");
}

// The plain way: search from the start after each replacement.
std::string replacedFromTheStart(std::string text, std::string const &what, std::string const &with)
{
    for (std::size_t at; (at = text.find(what)) != std::string::npos;) {
        text.replace(at, what.size(), with);
    }
    return text;
}

TEST(String, ReplaceAllStartsAgainAfterEachReplacement)
{
    std::pair<char const *, char const *> const rows[] = {{"a", ""},     {"ab", "ba"},     {"aa", "b"},
                                                          {"ab", "bba"}, {"aba", "b"},     {"aab", "ba"},
                                                          {"bb", "ab"},  {"abb", "cdbab"}, {"aabb", "ab"}};
    for (auto const &[what, with] : rows) {
        SCOPED_TRACE(String(what) + " by " + with);
        for (unsigned bits = 0; bits < 1024; ++bits) {
            std::string text;
            for (unsigned bit = 0; bit < 10; ++bit) {
                text += (bits >> bit & 1) != 0 ? 'a' : 'b';
            }
            String replaced = text;
            replaced.replaceAll(what, with);
            ASSERT_EQ(replaced, replacedFromTheStart(text, what, with)) << text;
        }
    }
}

TEST(String, ReplacingEndsWhateverIsAskedFor)
{
    String text = "a.b.c";
    text.replaceAll(".", "..");
    text.replaceAll("", "x");
    text.replaceAll(text, text);
    EXPECT_EQ(text, "a..b..c");
    text = "aab"; // grows for ever though the replacement does not hold what it replaces
    text.replaceAll("ab", "bbaa");
    EXPECT_LT(text.size(), 100000u);
    text = String(40, 'a') + "b"; // would end after 2^40 characters
    text.replaceAll("ab", "bba");
    EXPECT_LT(text.size(), 100000u);
    text = "%1";
    text.replaceWildcard("__%1", 1);
    EXPECT_EQ(text, "__%1");
    text = String(1000000, '.');
    text.replaceAll(".", "-+-");
    EXPECT_EQ(text.size(), 3000000u);
}

TEST(String, WildcardsTakeTheirValues)
{
    StringVector const ten{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"};
    String text = "%10%1%2%11%";
    text.replaceWildcard(ten);
    EXPECT_EQ(text, "jaba1%");
    WString wide = L"%10%1%2%11%";
    wide.replaceWildcard(std::vector<WString>{L"a", L"b", L"c", L"d", L"e", L"f", L"g", L"h", L"i", L"j"});
    EXPECT_EQ(wide, L"a0aba1%");

    std::tuple<char const *, char const *, int, char const *> const rows[] = {
        {"%1 %1", "longer", 1, "longer longer"},
        {"%1%1%1", "", 1, "%1"},             // two characters on from each match, whatever the value's length
        {"%1%1%1%1", "x", 1, "x%1x%1"},      // likewise
        {"%11111", "ab%", 1, "ababababab%"}, // the end of a value and what follows it
        {"%123456789", "x", 123456789, "x9"},
        {"%-3", "x", -3, "x"},
    };
    for (auto const &[given, value, index, replaced] : rows) {
        text = given;
        text.replaceWildcard(value, index);
        EXPECT_EQ(text, replaced) << given;
    }
}

TEST(String, SimilarityOfNames)
{
    std::tuple<char const *, char const *, float> const rows[] = {
        {"name", "name", 1.0f},
        {"ab", "AB", 0.9f},
        {"", "x", 0.0f},
        {"abcd", "abxd", 0.75f},
        {"abcd", "bcd", 0.75f},
        {"aXb", "ab", 2 / 3.0f},
        {"xa", "yyyA", 0.9f / 4},
        {"\xC4", "\xE4", 0.0f},
        {"qab", "wba", 1 / 3.0f}, // "a" 1 + 2 ahead ties with "b" 2 + 1: fewer in the first text
        {"qabcd", "wbacd", 3 / 5.0f},
    };
    for (auto const &[a, b, score] : rows) {
        EXPECT_FLOAT_EQ(String::match(a, b), score) << a << ' ' << b;
        EXPECT_FLOAT_EQ(WString::match(String(a), String(b)), score);
    }
    EXPECT_FLOAT_EQ(String::match(String(200, 'a'), String(1, 'a')), 0.0f) << "below 0.01";
    std::string large(1 << 20, 'a');
    EXPECT_EQ(String::match(large + "c", std::string(1 << 20, 'b') + "d"), 0.0f) << "and ends";
}

TEST(String, MatchesAPattern)
{
    EXPECT_TRUE(String("readme.TXT").match(String("*.txt"), true));
    EXPECT_FALSE(String("x").match("X", false));
}

TEST(WString, MatchesInItsOwnWay)
{
    std::tuple<wchar_t const *, wchar_t const *, bool> const rows[] = {
        {L"x", L"x", true},         {L"", L"", true},
        {L"", L"*", false},         {L"a", L"a*", false},
        {L"ab", L"a*", true},       {L"ab", L"a*b", true},
        {L"aab", L"*ab", true},     {L"abcbd", L"a*bd", true}, // back to the star once after the difference
        {L"abcbd", L"a*b", false},                             // the end of the pattern is no difference
        {L"xaxaxb", L"*ab", false}, {L"aXbYc", L"a*c", true},
        {L"ab", L"**", false}, // the second star is looked for in the text
        {L"a*b", L"**", true},      {L"abc", L"a?c", true},
        {L"ab", L"ab?", false},   // beyond the end it is a literal
        {L"abcd", L"*?d", false}, // takes the text's second character
        {L"abbd", L"*?bd", true},   {L"a?c", L"a?c", true},
        {L"a*cd", L"a?d", true}, // takes a star, which is one from then on
    };
    for (auto const &[text, pattern, matches] : rows) {
        EXPECT_EQ(WString(text).match(pattern, true), matches)
            << std::string(String().toString(text)) << ' ' << std::string(String().toString(pattern));
    }
    EXPECT_TRUE(WString(L"x").match(L"X", false));
    EXPECT_FALSE(WString(L"x").match(L"X", true));
    EXPECT_FALSE(WString(100000, L'?').match(WString(200000, L'?'), true));
}

} // namespace
