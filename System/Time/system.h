#pragma once

#include "System/System/export.h"

#include <cstddef>

namespace Qel {

/// Two helpers for raw memory. All static.
class QEL_API cSystem {
public:
    cSystem() = delete;

    /// Are all bytes of a block the same value? It does not compare two blocks, in spite of its name.
    /// @param block  at least @p count bytes; may be null for a count of 0
    /// @return true for a count of 0
    static bool memcmp(unsigned char const *block, unsigned char value, unsigned int count);

    /// The copy function in use: the standard one.
    static void *(*memcpy)(void *target, void const *source, std::size_t bytes);

    static void init(bool, bool, bool, bool, bool) {} ///< does nothing
};

} // namespace Qel
