#include "System/System/buildDate.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>

namespace Qel {

namespace {

template <std::size_t Size>
void copyText(char (&to)[Size], char const *from)
{
    std::fill(std::begin(to), std::end(to), '\0');
    for (std::size_t i = 0; i + 1 < Size && from[i] != '\0'; ++i) {
        to[i] = from[i];
    }
}

char lower(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool sameMonth(char const *text, char const *name)
{
    return std::equal(name, name + 3, text, [](char a, char b) { return a == lower(b); });
}

std::uint16_t monthOf(char const *text)
{
    static constexpr char const *names[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                            "jul", "aug", "sep", "oct", "nov"};
    auto const *const found = std::find_if(std::begin(names), std::end(names),
                                           [&](char const *name) { return sameMonth(text, name); });
    return static_cast<std::uint16_t>(found - std::begin(names) + 1);
}

// strtol stops at the ends of its range, where atoi is not defined.
std::uint16_t number(char const *text)
{
    return static_cast<std::uint16_t>(std::strtol(text, nullptr, 10));
}

} // namespace

void BuildDate::set(char const *dateText, char const *timeText)
{
    // Parsed from the copies: behind a short text they hold zeros up to the last place that is read.
    copyText(date, dateText != nullptr ? dateText : __DATE__);
    copyText(time, timeText != nullptr ? timeText : __TIME__);
    month = monthOf(date);
    day = number(date + 4);
    year = number(date + 7);
    hour = number(time);
    minute = number(time + 3);
    second = number(time + 6);
}

} // namespace Qel
