#include "Support/OS/text.h"

#include <cstdint>

namespace os {

namespace {

static_assert(sizeof(wchar_t) == 4, "one wide character holds one code point");

constexpr std::uint32_t replacement = 0xFFFD;

bool isSurrogate(std::uint32_t c)
{
    return c >= 0xD800 && c <= 0xDFFF;
}

// Bytes that may follow a lead byte: how many, and the range of the first of them. The range is what rules
// out overlong forms, surrogates and values beyond 0x10FFFF.
struct Lead {
    int following;
    unsigned char low;
    unsigned char high;
};

Lead leadOf(unsigned char c)
{
    if (c >= 0xC2 && c <= 0xDF) {
        return {1, 0x80, 0xBF};
    }
    if (c >= 0xE0 && c <= 0xEF) {
        return {2, static_cast<unsigned char>(c == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(c == 0xED ? 0x9F : 0xBF)};
    }
    if (c >= 0xF0 && c <= 0xF4) {
        return {3, static_cast<unsigned char>(c == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(c == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, 0, 0};
}

} // namespace

std::string toNarrow(std::wstring_view text)
{
    std::string result;
    result.reserve(text.size());
    for (wchar_t const wide : text) {
        auto c = static_cast<std::uint32_t>(wide);
        if (c > 0x10FFFF || isSurrogate(c)) {
            c = replacement;
        }
        if (c < 0x80) {
            result += static_cast<char>(c);
        } else if (c < 0x800) {
            result += static_cast<char>(0xC0 | c >> 6);
            result += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            result += static_cast<char>(0xE0 | c >> 12);
            result += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            result += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            result += static_cast<char>(0xF0 | c >> 18);
            result += static_cast<char>(0x80 | (c >> 12 & 0x3F));
            result += static_cast<char>(0x80 | (c >> 6 & 0x3F));
            result += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return result;
}

std::wstring toWide(std::string_view text)
{
    std::wstring result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        auto const first = static_cast<unsigned char>(text[at++]);
        if (first < 0x80) {
            result += static_cast<wchar_t>(first);
            continue;
        }
        Lead const lead = leadOf(first);
        std::uint32_t c = first & (0x3Fu >> lead.following);
        int taken = 0;
        while (taken < lead.following && at < text.size()) {
            auto const next = static_cast<unsigned char>(text[at]);
            if (next < (taken == 0 ? lead.low : 0x80) || next > (taken == 0 ? lead.high : 0xBF)) {
                break;
            }
            c = c << 6 | (next & 0x3Fu);
            ++taken;
            ++at;
        }
        bool const whole = lead.following > 0 && taken == lead.following;
        result += static_cast<wchar_t>(whole ? c : replacement);
    }
    return result;
}

} // namespace os
