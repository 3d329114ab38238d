#include "System/System/stringConverter.h"

#include "System/System/numberText.h"
#include "System/System/stringVector.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>

namespace Qel {

namespace {

bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isFigure(char c, bool hex)
{
    return (c >= '0' && c <= '9') || (hex && ((c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F')));
}

// A text up to its first terminator, behind white space and sign.
struct Number {
    char const *first;
    char const *last;
    bool negative = false;

    explicit Number(String const &text)
        : first(text.c_str()), last(first + std::char_traits<char>::length(first))
    {
        while (isSpace(*first)) {
            ++first;
        }
        if (*first == '+' || *first == '-') {
            negative = *first == '-';
            ++first;
        }
    }

    bool hasHexPrefix() const { return first[0] == '0' && (first[1] == 'x' || first[1] == 'X'); }
};

template <typename Unsigned>
Unsigned magnitude(Number const &number, char const *first, int base)
{
    Unsigned value = 0;
    if (std::from_chars(first, number.last, value, base).ec == std::errc::result_out_of_range) {
        value = std::numeric_limits<Unsigned>::max();
    }
    return value;
}

// Whether a number that no double can hold is too large rather than too small.
bool isLarge(char const *first, char const *last, bool hex)
{
    std::int64_t figures = 0;
    bool point = false;
    bool seen = false;
    for (; first != last && (isFigure(*first, hex) || (*first == '.' && !point)); ++first) {
        if (*first == '.') {
            point = true;
            continue;
        }
        seen = seen || *first != '0';
        if (seen != point) {
            figures += seen ? 1 : -1;
        }
    }
    std::int64_t exponent = 0;
    char const mark = hex ? 'p' : 'e';
    if (first != last && (*first | 0x20) == mark) {
        ++first;
        bool const negative = *first == '-';
        first += *first == '-' || *first == '+' ? 1 : 0;
        constexpr std::int64_t beyondAnyLength = 1'000'000'000'000'000;
        for (; first != last && isFigure(*first, false) && exponent < beyondAnyLength; ++first) {
            exponent = exponent * 10 + (*first - '0');
        }
        exponent = negative ? -exponent : exponent;
    }
    return figures * (hex ? 4 : 1) + exponent > 0;
}

double parseDouble(String const &text)
{
    Number const number(text);
    bool const hex = number.hasHexPrefix();
    char const *const first = number.first + (hex ? 2 : 0);
    double value = 0.0;
    // A second sign, and a word after "0x", would be taken too.
    bool const taken = hex ? isFigure(*first, true) || *first == '.' : *first != '-';
    if (!taken) {
        return hex && number.negative ? -value : value;
    }
    // No number holds "+-", but std::from_chars() of some libraries reads on over it.
    std::string_view const signs = "+-";
    char const *const last = std::search(first, number.last, signs.begin(), signs.end());
    auto const format = hex ? std::chars_format::hex : std::chars_format::general;
    std::errc const error = std::from_chars(first, last, value, format).ec;
    if (error == std::errc::result_out_of_range) {
        value = isLarge(first, last, hex) ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (error != std::errc() && !hex) {
        return 0.0;
    }
    return number.negative ? -value : value;
}

String joined(float const *values, std::size_t count)
{
    String text;
    text.reserve(count * 14);
    for (std::size_t i = 0; i < count; ++i) {
        if (i != 0) {
            text += ' ';
        }
        text += detail::NumberText(values[i]).view();
    }
    return text;
}

} // namespace

String StringConverter::toString(float value)
{
    return String(value);
}

String StringConverter::toString(int value)
{
    return String(value);
}

String StringConverter::toString(unsigned int value)
{
    return String(value);
}

String StringConverter::toString(D3DXVECTOR3 const &value)
{
    float const values[] = {value.x, value.y, value.z};
    return joined(values, 3);
}

String StringConverter::toString(D3DXMATRIX const &value)
{
    return joined(&value.m[0][0], 16);
}

String StringConverter::toString(bool value)
{
    return value ? "true" : "false";
}

String StringConverter::toString(Color value)
{
    String text(8, '0');
    for (int digit = 0; digit < 8; ++digit) {
        text[digit] = "0123456789abcdef"[value.value >> (28 - 4 * digit) & 15];
    }
    return text;
}

float StringConverter::parseReal(String const &text)
{
    return static_cast<float>(parseDouble(text));
}

int StringConverter::parseInt(String const &text)
{
    Number const number(text);
    auto const value = magnitude<std::uint32_t>(number, number.first, 10);
    if (number.negative) {
        return value > 0x80000000u ? std::numeric_limits<int>::min() : static_cast<int>(0u - value);
    }
    return value > 0x7FFFFFFFu ? std::numeric_limits<int>::max() : static_cast<int>(value);
}

unsigned int StringConverter::parseHex(String const &text)
{
    Number const number(text);
    auto const value = magnitude<std::uint32_t>(number, number.first + (number.hasHexPrefix() ? 2 : 0), 16);
    bool const clamped = value == 0xFFFFFFFFu;
    return number.negative && !clamped ? 0u - value : value;
}

Color StringConverter::parseColorValue(String const &text)
{
    return parseHex(text);
}

bool StringConverter::parseBool(String const &text)
{
    return text == "1" || text == "true";
}

D3DXVECTOR3 StringConverter::parseVector3d(String const &text)
{
    StringVector pieces;
    if (text.split(pieces, "\t\n ", 0) != 3) {
        return {0.0f, 0.0f, 0.0f};
    }
    return {parseReal(pieces[0]), parseReal(pieces[1]), parseReal(pieces[2])};
}

D3DXMATRIX StringConverter::parseMatrix4d(String const &text)
{
    StringVector pieces;
    bool const whole = text.split(pieces, "\t\n ", 0) == 16;
    D3DXMATRIX matrix;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            float const unit = row == column ? 1.0f : 0.0f;
            matrix(row, column) = whole ? parseReal(pieces[row * 4 + column]) : unit;
        }
    }
    return matrix;
}

} // namespace Qel
