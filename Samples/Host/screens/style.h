#pragma once

#include "System/System/color.h"

#include <cstdarg>
#include <cstdio>
#include <string>

/// Colours of the host's window.
namespace style {

constexpr Qel::Color ground = 0xFF14171D;
constexpr Qel::Color bar = 0xFF222833;
constexpr Qel::Color edge = 0xFF3A4352;
constexpr Qel::Color text = 0xFFE8E8E8;
constexpr Qel::Color faint = 0xFF8C98AA;
constexpr Qel::Color accent = 0xFF5AA9E6;
constexpr Qel::Color good = 0xFF6CC070;
constexpr Qel::Color warning = 0xFFE6A23C;
constexpr Qel::Color bad = 0xFFE0605E;

/// As printf() does.
[[gnu::format(printf, 1, 2)]] inline std::string format(char const *pattern, ...)
{
    char buffer[256];
    std::va_list arguments;
    va_start(arguments, pattern);
    std::vsnprintf(buffer, sizeof(buffer), pattern, arguments);
    va_end(arguments);
    return buffer;
}

} // namespace style
