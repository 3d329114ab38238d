#pragma once

#include <cstdint>
#include <type_traits>

namespace Qel {

/// One packed 32-bit colour, passed by value.
struct Color {
    std::uint32_t value = 0; ///< 0xAARRGGBB

    constexpr Color() = default;
    constexpr Color(std::uint32_t packed) : value(packed) {}

    constexpr operator std::uint32_t() const { return value; }
};

static_assert(sizeof(Color) == 4 && std::is_trivially_copyable_v<Color>);

} // namespace Qel
