#include "System/Codec/codecs/huffmanTree.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr std::uint32_t mostCounted = std::numeric_limits<std::int32_t>::max();

std::int32_t saturated(std::uint64_t count)
{
    return static_cast<std::int32_t>(std::min<std::uint64_t>(count, mostCounted));
}

} // namespace

int HuffmanTree::addNode(std::int32_t symbol, std::int32_t count)
{
    m_nodes[static_cast<std::size_t>(m_nodeCount)] = {symbol, count, {-1, -1}};
    return m_nodeCount++;
}

// The table stands in the order of the symbols and is not sorted first, so the code is a valid one but not
// always the shortest. Streams depend on the exact order.
void HuffmanTree::build(Counts const &counts)
{
    m_nodeCount = 0;
    std::array<std::int16_t, symbolCount> table;
    std::array<std::int32_t, symbolCount> weights; // of the table's nodes, side by side for the search
    for (std::uint32_t symbol = 0; symbol < symbolCount; ++symbol) {
        weights[symbol] = saturated(counts[symbol]);
        table[symbol] =
            static_cast<std::int16_t>(addNode(static_cast<std::int32_t>(symbol), weights[symbol]));
    }
    std::size_t left = symbolCount;
    while (left > 1 && weights[left - 1] == 0) {
        --left;
    }
    for (; left > 1; --left) {
        auto const heavy = saturated(static_cast<std::uint64_t>(weights[left - 1]) +
                                     static_cast<std::uint64_t>(weights[left - 2]));
        int const inner = addNode(-1, heavy);
        m_nodes[static_cast<std::size_t>(inner)].child[0] = table[left - 1];
        m_nodes[static_cast<std::size_t>(inner)].child[1] = table[left - 2];
        std::size_t const rest = left - 2;
        std::size_t at = 0;
        while (at < rest && weights[at] >= heavy) {
            ++at;
        }
        std::memmove(&weights[at + 1], &weights[at], (rest - at) * sizeof(weights[0]));
        std::memmove(&table[at + 1], &table[at], (rest - at) * sizeof(table[0]));
        weights[at] = heavy;
        table[at] = static_cast<std::int16_t>(inner);
    }
    m_root = table[0];
}

std::size_t HuffmanTree::save(unsigned char *to) const
{
    std::memset(to, 0, largestSaved);
    std::size_t position = 0; // in bits
    std::array<int, symbolCount> open{m_root};
    std::size_t depth = 1;
    while (depth > 0) {
        sHuffman const &node = (*this)[open[--depth]];
        if (node.symbol < 0) {
            to[position / 8] = static_cast<unsigned char>(to[position / 8] | 1u << position % 8);
            ++position;
            open[depth++] = node.child[1];
            open[depth++] = node.child[0];
        } else {
            std::size_t const byte = position / 8 + 1;
            to[byte] = static_cast<unsigned char>(node.symbol);
            position = (byte + 1) * 8;
        }
    }
    return position / 8;
}

std::size_t HuffmanTree::load(unsigned char const *from, std::size_t size)
{
    m_nodeCount = 0;
    m_root = 0;
    std::size_t position = 0; // in bits
    struct Place {
        int parent;
        int side;
    };
    std::array<Place, symbolCount> open{{{-1, 0}}};
    std::size_t depth = 1;
    while (depth > 0) {
        Place const place = open[--depth];
        bool const inner = position / 8 < size && (from[position / 8] >> position % 8 & 1) != 0;
        int node = -1;
        if (inner) {
            ++position;
            // Each open place still needs a leaf; and the last one of them is this node's first child.
            if (depth + 2 > symbolCount || m_nodeCount + static_cast<int>(depth) + 3 > maxNodes) {
                m_nodeCount = 0;
                return 0;
            }
            node = addNode(-1, 0);
            open[depth++] = {node, 1};
            open[depth++] = {node, 0};
        } else {
            std::size_t const byte = position / 8 + 1;
            if (byte >= size) {
                m_nodeCount = 0;
                return 0;
            }
            node = addNode(from[byte], 0);
            position = (byte + 1) * 8;
        }
        if (place.parent >= 0) {
            m_nodes[static_cast<std::size_t>(place.parent)].child[place.side] =
                static_cast<std::int16_t>(node);
        }
    }
    return position / 8;
}

void HuffmanTree::collect(Codes &codes) const
{
    for (Code &code : codes) {
        code.length = 0;
    }
    struct Open {
        int node;
        Code code;
    };
    std::array<Open, symbolCount> open;
    open[0] = {m_root, {}};
    std::size_t depth = 1;
    while (depth > 0) {
        Open const top = open[--depth];
        sHuffman const &node = (*this)[top.node];
        if (node.symbol >= 0) {
            codes[static_cast<std::size_t>(node.symbol)] = top.code;
            continue;
        }
        std::uint32_t const length = top.code.length;
        open[depth] = {node.child[0], top.code};
        open[depth].code.length = length + 1;
        ++depth;
        open[depth] = {node.child[1], top.code};
        open[depth].code.bits[length / 64] |= std::uint64_t{1} << length % 64;
        open[depth].code.length = length + 1;
        ++depth;
    }
}

} // namespace Qel
