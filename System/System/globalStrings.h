#pragma once

#include "Support/PoolHeap/internPool.h"

#include <cstdint>
#include <cstring>
#include <set>

namespace Qel {

/// Texts that live as long as Root, each once. Not part of the public interface.
class GlobalStrings {
public:
    /// @param text  not empty
    /// @return the one copy of it
    char const *intern(char const *text);

private:
    struct Node {
        std::uint32_t hash;
        char const *text;

        bool operator<(Node const &other) const
        {
            return hash != other.hash ? hash < other.hash : std::strcmp(text, other.text) < 0;
        }
    };

    std::set<Node> m_nodes;
    InternPool m_pool{0, 4096, 0};
};

} // namespace Qel
