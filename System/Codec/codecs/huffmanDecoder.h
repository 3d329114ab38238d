#pragma once

#include "System/Codec/codecs/huffmanTree.h"

#include "Support/OS/processorLevel.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Qel {

/// Decodes by a table that gives up to three symbols at once, and bit by bit where that does not reach.
class HuffmanDecoder {
public:
    /// Bits from the tree's codes. Behind the last one either zeros follow for ever or the first one again.
    struct Bits {
        unsigned char const *bytes;
        std::size_t size; ///< in bytes; at least 1 if around
        bool around;
        std::uint64_t position = 0; ///< in bits, of the next one
    };

    /// @param expected  how many symbols will be decoded: a table for few is small
    HuffmanDecoder(HuffmanTree const &tree, std::uint64_t expected);

    /// Decodes exactly @p count symbols.
    void decode(unsigned char *to, std::size_t count, Bits &bits) const;

private:
    static constexpr std::uint32_t largestTable = 14; // bits: 64 KiB

    static constexpr std::uint32_t bitsOf(std::uint32_t entry) { return entry & 63; }
    static constexpr std::uint32_t symbolsOf(std::uint32_t entry) { return entry >> 6 & 3; }

    // By the table, until so little room or so few bits are left that the loop could pass an end, or a code
    // comes that is longer than the table.
    unsigned char *decodeFast(unsigned char *to, unsigned char *end, Bits &bits) const;
    unsigned char *decodeAvx2(unsigned char *to, unsigned char *end, Bits &bits) const;
    template <os::eProcessorLevel level>
    unsigned char *decodeLoop(unsigned char *to, unsigned char *end, Bits &bits) const;
    unsigned char decodeOne(Bits &bits) const;
    int walk(int node, Bits &bits) const;
    void fillSingle();
    void fillMultiple();

    HuffmanTree m_tree;
    std::uint32_t m_tableBits;
    // Bits 0 to 5: bits taken; 6 and 7: symbols; 8 to 31: the symbols, the first one lowest. With no symbols,
    // bits 8 up are the node that the table's bits lead to.
    std::vector<std::uint32_t> m_table;
};

} // namespace Qel
