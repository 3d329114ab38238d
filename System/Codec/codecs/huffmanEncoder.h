#pragma once

#include "System/Codec/codecs/huffmanTree.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace Qel {

/// Adds each byte to its count.
void addCounts(HuffmanTree::Counts &counts, std::span<unsigned char const> bytes);

/// Writes the codes of bytes into memory.
class HuffmanEncoder {
public:
    static constexpr std::size_t slack = 16; ///< bytes of room behind the last one

    explicit HuffmanEncoder(HuffmanTree const &tree);

    /// How many bytes the codes of so many symbols take. To be asked before put(): it picks the way to write.
    std::uint64_t bytesFor(HuffmanTree::Counts const &counts);

    void start(unsigned char *to) { m_to = to; }
    void put(std::span<unsigned char const> bytes);
    unsigned char *finish(); ///< ends the last byte with zeros. @return where the next one would go

private:
    template <int group>
    void putGroups(std::span<unsigned char const> bytes);
    void putLong(std::span<unsigned char const> bytes);

    HuffmanTree::Codes m_codes;
    std::array<std::uint32_t, HuffmanTree::symbolCount> m_short; // code, and its length from bit 24 on
    std::uint32_t m_longest = 0;                                 // among the symbols in use
    unsigned char *m_to = nullptr;
    std::uint64_t m_held = 0;
    std::uint32_t m_heldBits = 0; // fewer than 8 between calls
};

} // namespace Qel
