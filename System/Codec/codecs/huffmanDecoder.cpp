#include "System/Codec/codecs/huffmanDecoder.h"

#include "System/Codec/codecs/huffmanDecoderLoop.h"

#include <algorithm>
#include <cstring>

namespace Qel {

namespace {

// A table is filled in about the time that it takes to decode twice as many symbols as it has entries.
std::uint32_t tableBitsFor(std::uint64_t expected, std::uint32_t largestTable)
{
    constexpr std::uint64_t kilo = 1024;
    return expected >= 512 * kilo   ? largestTable
           : expected >= 128 * kilo ? 12
           : expected >= 16 * kilo  ? 11
           : expected >= 2 * kilo   ? 9
                                    : 8;
}

constexpr std::uint32_t entryOf(std::uint32_t bits, std::uint32_t symbols, std::uint32_t values)
{
    return bits | symbols << 6 | values << 8;
}

} // namespace

HuffmanDecoder::HuffmanDecoder(HuffmanTree const &tree, std::uint64_t expected)
    : m_tree(tree), m_tableBits(tableBitsFor(expected, largestTable))
{
    if (m_tree.isLeaf(m_tree.root())) {
        return;
    }
    m_table.resize(std::size_t{1} << m_tableBits);
    fillSingle();
    fillMultiple();
}

void HuffmanDecoder::fillSingle()
{
    struct Open {
        int node;
        std::uint32_t code;
        std::uint32_t length;
    };
    std::array<Open, HuffmanTree::symbolCount> open{{{m_tree.root(), 0, 0}}};
    std::size_t depth = 1;
    while (depth > 0) {
        Open const top = open[--depth];
        HuffmanTree::sHuffman const &node = m_tree[top.node];
        if (node.symbol < 0 && top.length < m_tableBits) {
            open[depth++] = {node.child[1], top.code | 1u << top.length, top.length + 1};
            open[depth++] = {node.child[0], top.code, top.length + 1};
            continue;
        }
        std::uint32_t const entry = node.symbol < 0
                                        ? entryOf(top.length, 0, static_cast<std::uint32_t>(top.node))
                                        : entryOf(top.length, 1, static_cast<std::uint32_t>(node.symbol));
        for (std::size_t at = top.code; at < m_table.size(); at += std::size_t{1} << top.length) {
            m_table[at] = entry;
        }
    }
}

// What is left of an index behind a first code is looked up in turn: downwards, so that the entries met there
// still hold one symbol each.
void HuffmanDecoder::fillMultiple()
{
    std::vector<std::uint32_t> const single = m_table;
    for (std::size_t at = 0; at < m_table.size(); ++at) {
        std::uint32_t bits = bitsOf(single[at]);
        std::uint32_t symbols = symbolsOf(single[at]);
        std::uint32_t values = single[at] >> 8;
        while (symbols > 0 && symbols < 3) {
            std::uint32_t const next = single[at >> bits];
            if (symbolsOf(next) == 0 || bits + bitsOf(next) > m_tableBits) {
                break;
            }
            values |= next >> 8 << (8 * symbols);
            bits += bitsOf(next);
            ++symbols;
        }
        m_table[at] = entryOf(bits, symbols, values);
    }
}

int HuffmanDecoder::walk(int node, Bits &bits) const
{
    while (!m_tree.isLeaf(node)) {
        std::uint64_t const byte = bits.position / 8;
        unsigned bit = 0;
        if (byte < bits.size) {
            bit = bits.bytes[byte] >> bits.position % 8 & 1;
            ++bits.position;
            if (bits.around && bits.position == std::uint64_t{bits.size} * 8) {
                bits.position = 0;
            }
        }
        node = m_tree[node].child[bit];
    }
    return node;
}

unsigned char HuffmanDecoder::decodeOne(Bits &bits) const
{
    return static_cast<unsigned char>(m_tree[walk(m_tree.root(), bits)].symbol);
}

unsigned char *HuffmanDecoder::decodeFast(unsigned char *to, unsigned char *end, Bits &bits) const
{
    return decodeLoop<os::PROCESSOR_PLAIN>(to, end, bits);
}

void HuffmanDecoder::decode(unsigned char *to, std::size_t count, Bits &bits) const
{
#if defined(__x86_64__)
    bool const isWide = os::processorLevel() >= os::PROCESSOR_AVX2;
#else
    constexpr bool isWide = false;
#endif
    unsigned char *const end = to + count;
    if (m_table.empty()) {
        std::memset(to, m_tree[m_tree.root()].symbol, count);
        return;
    }
    while (to < end) {
        to = isWide ? decodeAvx2(to, end, bits) : decodeFast(to, end, bits);
        if (to < end && !bits.around && bits.position / 8 >= bits.size) {
            std::memset(to, decodeOne(bits), static_cast<std::size_t>(end - to));
            return;
        }
        if (to < end) {
            *to++ = decodeOne(bits);
        }
    }
}

} // namespace Qel
