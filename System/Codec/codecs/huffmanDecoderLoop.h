#pragma once

#include "System/Codec/codecs/bitOrder.h"
#include "System/Codec/codecs/huffmanDecoder.h"

#include "Support/OS/processorLevel.h"

#include <cstring>

// The loop of HuffmanDecoder, for the sources that compile it for one level of the processor each.

namespace Qel {

// The entry for the next bits is looked up before more bits are taken in, so that the load of those is not
// waited for: 56 bits are held at the least, and four entries can take 4 times 13 of them.
template <os::eProcessorLevel>
inline unsigned char *HuffmanDecoder::decodeLoop(unsigned char *to, unsigned char *end, Bits &bits) const
{
    constexpr std::ptrdiff_t roomOfTurn = 16; // three stores of 4 bytes, each 3 at most behind the last one
    static_assert(4 * largestTable <= 56);
    if (end - to < roomOfTurn || bits.position / 8 + 16 > bits.size) {
        return to;
    }
    std::uint64_t const mask = m_table.size() - 1;
    std::uint32_t const *const table = m_table.data();
    unsigned char const *from = bits.bytes + bits.position / 8;
    unsigned char const *const lastLoad = bits.bytes + bits.size - 8;
    std::uint64_t held = load64(from) >> bits.position % 8;
    std::uint32_t count =
        56 - static_cast<std::uint32_t>(bits.position % 8); // of held; those above are right, too
    from += 7;
    auto const take = [&](std::uint32_t entry) {
        std::uint32_t const symbols = entry >> 8;
        std::memcpy(to, &symbols, sizeof(symbols));
        to += symbolsOf(entry);
        held >>= bitsOf(entry);
        count -= bitsOf(entry);
    };
    auto const refill = [&] {
        held |= load64(from) << count;
        from += (63 - count) / 8;
        count |= 56;
    };
    refill();
    std::uint32_t entry = table[held & mask];
    while (end - to >= roomOfTurn && from <= lastLoad) {
        if (symbolsOf(entry) != 0) [[likely]] {
            take(entry);
            entry = table[held & mask];
        }
        if (symbolsOf(entry) != 0) [[likely]] {
            take(entry);
            entry = table[held & mask];
        }
        if (symbolsOf(entry) != 0) [[likely]] {
            take(entry);
            entry = table[held & mask];
            refill();
            continue;
        }
        // Longer than the table: from the node on that it leads to, one bit at a time.
        std::uint64_t const position = static_cast<std::uint64_t>(from - bits.bytes) * 8 - count;
        bits.position = position + bitsOf(entry);
        int const leaf = walk(static_cast<int>(entry >> 8), bits);
        *to++ = static_cast<unsigned char>(m_tree[leaf].symbol);
        return to;
    }
    bits.position = static_cast<std::uint64_t>(from - bits.bytes) * 8 - count;
    return to;
}

} // namespace Qel
