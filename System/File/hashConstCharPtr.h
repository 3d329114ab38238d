#pragma once

#include "System/System/stringTools.h"

#include <cstdint>

namespace Qel {

/// A file name in normal form (lower case, slashes) with its hash. Holds no text of its own.
struct HashConstCharPtr {
    char const *text = nullptr;
    std::uint32_t hash = 0; ///< StringTools::calcHash() of the text

    HashConstCharPtr() = default;
    HashConstCharPtr(char const *name, std::uint32_t nameHash) : text(name), hash(nameHash) {}

    /// @param name  in normal form already
    explicit HashConstCharPtr(char const *name) : text(name), hash(StringTools::calcHash(name)) {}
};

} // namespace Qel
