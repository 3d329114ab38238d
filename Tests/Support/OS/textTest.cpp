#include "Support/OS/text.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>

namespace {

TEST(OsText, WellFormedTextGoesBothWays)
{
    std::tuple<std::string, std::wstring> const rows[] = {
        {"", L""},
        {"plain", L"plain"},
        {std::string("a\0b", 3), std::wstring(L"a\0b", 3)},
        {"\xC2\x80\xDF\xBF", L"\x80\x7FF"},
        {"\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF", L"\x800\xD7FF\xE000\xFFFF"},
        {"\xF0\x90\x80\x80\xF4\x8F\xBF\xBF", L"\x10000\x10FFFF"},
    };
    for (auto const &[narrow, wide] : rows) {
        SCOPED_TRACE(narrow);
        EXPECT_EQ(os::toWide(narrow), wide);
        EXPECT_EQ(os::toNarrow(wide), narrow);
    }
}

// The counts of replacement characters are those of the Unicode standard's table of maximal subparts.
TEST(OsText, EachIllFormedSequenceBecomesOneReplacement)
{
    std::tuple<char const *, std::string, std::wstring> const rows[] = {
        {"continuation alone", "\x80z", L"\xFFFDz"},
        {"cut at the end", "a\xE2\x82", L"a\xFFFD"},
        {"cut by a plain character", "\xF0\x9F\x98z", L"\xFFFDz"},
        {"overlong slash", "\xC0\xAF", L"\xFFFD\xFFFD"},
        {"overlong in three", "\xE0\x80\xAF", L"\xFFFD\xFFFD\xFFFD"},
        {"surrogate", "\xED\xA0\x80", L"\xFFFD\xFFFD\xFFFD"},
        {"beyond the last code point", "\xF4\x90\x80\x80", L"\xFFFD\xFFFD\xFFFD\xFFFD"},
        {"never a lead", "\xFF", L"\xFFFD"},
        {"cut, then whole", "\xE2\x82\xC3\xA9", L"\xFFFD\xE9"},
    };
    for (auto const &[what, narrow, wide] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(os::toWide(narrow), wide);
    }
    EXPECT_EQ(os::toNarrow(std::wstring{static_cast<wchar_t>(0xD800), static_cast<wchar_t>(0x110000), L'a'}),
              "\xEF\xBF\xBD\xEF\xBF\xBD"
              "a");
}

} // namespace
