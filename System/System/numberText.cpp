#include "System/System/numberText.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace Qel::detail {

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int significant = 6;
constexpr std::uint32_t digitsEnd = 1'000'000; // the first number of more than six digits

constexpr auto powersOfFive = [] {
    std::array<Wide, 52> powers{};
    powers[0] = 1;
    for (std::size_t i = 1; i < powers.size(); ++i) {
        powers[i] = powers[i - 1] * 5;
    }
    return powers;
}();

// Six digits, rounded half to even from the exact value: digits * 10^(exponent - 5).
struct Decimal {
    std::uint32_t digits;
    int exponent;
};

// A whole number and what the division that made it left over, for rounding.
struct Quotient {
    std::uint32_t whole;
    int half; // the rest against one half: -1, 0, 1
    bool hasRest;
};

template <typename Unsigned>
Quotient shiftedRight(Unsigned number, int shift)
{
    Unsigned const rest = number & ((Unsigned{1} << shift) - 1);
    Unsigned const half = Unsigned{1} << (shift - 1);
    return {static_cast<std::uint32_t>(number >> shift), rest > half ? 1 : rest == half ? 0 : -1, rest != 0};
}

// mantissa * 2^exponent * 10^power, which is less than 2^24. With a float's range no step exceeds 128 bits.
Quotient scaled(std::uint32_t mantissa, int exponent, int power)
{
    int const shift = exponent + power;
    if (power >= 0) {
        Wide const factor = powersOfFive[static_cast<std::size_t>(power)];
        if (shift >= 0) {
            return {static_cast<std::uint32_t>((mantissa * factor) << shift), -1, false};
        }
        constexpr int inOneWord = 17; // 2^24 * 5^17 is less than 2^64
        if (power <= inOneWord && -shift < 64) {
            return shiftedRight(mantissa * static_cast<std::uint64_t>(factor), -shift);
        }
        return shiftedRight(mantissa * factor, -shift);
    }
    Wide number = mantissa;
    Wide divisor = powersOfFive[static_cast<std::size_t>(-power)];
    (shift >= 0 ? number : divisor) <<= shift >= 0 ? shift : -shift;
    Wide const whole = number / divisor;
    Wide const twice = (number - whole * divisor) * 2;
    return {static_cast<std::uint32_t>(whole), twice > divisor ? 1 : twice == divisor ? 0 : -1, twice != 0};
}

Decimal sixDigits(std::uint32_t mantissa, int exponent)
{
    // The logarithm of the leading bit alone: right, or one too small.
    int const log2 = exponent + static_cast<int>(std::bit_width(mantissa)) - 1;
    int log10 = log2 * 78913 >> 18;
    Quotient value = scaled(mantissa, exponent, significant - 1 - log10);
    if (value.whole >= digitsEnd) {
        std::uint32_t const last = value.whole % 10;
        value.whole /= 10;
        value.half = last > 5 || (last == 5 && value.hasRest) ? 1 : last == 5 ? 0 : -1;
        ++log10;
    }
    if (value.half > 0 || (value.half == 0 && value.whole % 2 != 0)) {
        ++value.whole;
    }
    if (value.whole == digitsEnd) {
        value.whole /= 10;
        ++log10;
    }
    return {value.whole, log10};
}

char *copied(char *to, char const *from, int count)
{
    std::memcpy(to, from, static_cast<std::size_t>(count));
    return to + count;
}

char *written(char *to, Decimal value)
{
    char digits[significant];
    for (int i = significant; i-- > 0; value.digits /= 10) {
        digits[i] = static_cast<char>('0' + value.digits % 10);
    }
    int count = significant;
    while (count > 1 && digits[count - 1] == '0') {
        --count;
    }

    if (value.exponent < -4 || value.exponent >= significant) {
        *to++ = digits[0];
        if (count > 1) {
            *to++ = '.';
            to = copied(to, digits + 1, count - 1);
        }
        int const exponent = value.exponent < 0 ? -value.exponent : value.exponent;
        *to++ = 'e';
        *to++ = value.exponent < 0 ? '-' : '+';
        *to++ = static_cast<char>('0' + exponent / 10);
        *to++ = static_cast<char>('0' + exponent % 10);
        return to;
    }
    if (value.exponent < 0) {
        to = copied(to, "0.000", 1 - value.exponent);
        return copied(to, digits, count);
    }
    int const before = value.exponent + 1;
    to = copied(to, digits, before);
    if (count > before) {
        *to++ = '.';
        to = copied(to, digits + before, count - before);
    }
    return to;
}

} // namespace

NumberText::NumberText(float value)
{
    constexpr std::uint32_t mantissaBits = 23;
    auto const bits = std::bit_cast<std::uint32_t>(value);
    std::uint32_t const fraction = bits & ((1u << mantissaBits) - 1);
    int const field = static_cast<int>(bits >> mantissaBits & 0xFF);

    char *to = m_text;
    if (bits >> 31 != 0) {
        *to++ = '-';
    }
    if (field == 0xFF) {
        to = copied(to, fraction != 0 ? "nan" : "inf", 3);
    } else if (field == 0 && fraction == 0) {
        *to++ = '0';
    } else if (field == 0) {
        to = written(to, sixDigits(fraction, -149));
    } else {
        to = written(to, sixDigits(fraction | 1u << mantissaBits, field - 150));
    }
    m_length = static_cast<std::size_t>(to - m_text);
}

} // namespace Qel::detail
