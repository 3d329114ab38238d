#pragma once

#include <bit>
#include <cstdint>

/// Marks what a shared library of this project exports. Everything else is hidden.
#define QEL_API __attribute__((visibility("default")))

static_assert(std::endian::native == std::endian::little,
              "streams and formats are little-endian as in memory");
static_assert(sizeof(int) == 4 && sizeof(float) == 4, "the given interface counts on 32-bit int and float");
