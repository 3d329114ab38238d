#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace Qel {

/// The code tree of cCodecHuffman, in fixed room: 256 leaves at most.
class HuffmanTree {
public:
    static constexpr std::uint32_t symbolCount = 256;
    static constexpr std::size_t largestSaved = 3 * symbolCount; ///< bytes that save() can need

    /// Leaf or inner node.
    struct sHuffman {
        std::int32_t symbol;   ///< the byte value of a leaf, -1 for an inner node
        std::int32_t count;    ///< how often it was met, at most INT32_MAX
        std::int16_t child[2]; ///< nodes, -1 in a leaf
    };

    /// The bits of a leaf, from the root on, the first one lowest. No tree of 256 leaves is deeper than 255.
    struct Code {
        std::array<std::uint64_t, 4> bits;
        std::uint32_t length;
    };
    using Codes = std::array<Code, symbolCount>;

    using Counts = std::array<std::uint32_t, symbolCount>;

    void build(Counts const &counts);

    /// Writes the tree; it ends on a whole byte.
    /// @param to  largestSaved bytes
    /// @return bytes written
    std::size_t save(unsigned char *to) const;

    /// Reads a tree as save() writes it.
    /// @return bytes read; 0, and the tree is then empty, if they end too early or it has more than 256
    /// leaves
    std::size_t load(unsigned char const *from, std::size_t size);

    /// The code of each symbol; symbols that are not in the tree have the length 0.
    void collect(Codes &codes) const;

    bool empty() const { return m_nodeCount == 0; }
    int root() const { return m_root; }
    sHuffman const &operator[](int node) const { return m_nodes[static_cast<std::size_t>(node)]; }
    bool isLeaf(int node) const { return (*this)[node].symbol >= 0; }

private:
    static constexpr std::int16_t maxNodes = 2 * symbolCount - 1;

    int addNode(std::int32_t symbol, std::int32_t count);

    std::array<sHuffman, maxNodes> m_nodes;
    int m_nodeCount = 0;
    int m_root = -1;
};

} // namespace Qel
