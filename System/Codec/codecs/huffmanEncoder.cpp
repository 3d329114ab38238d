#include "System/Codec/codecs/huffmanEncoder.h"

#include "System/Codec/codecs/bitOrder.h"

#include <algorithm>
#include <limits>

namespace Qel {

namespace {

// Counts that stand in the way of each other's stores go to lists of their own.
constexpr std::size_t lists = 4;

void addSaturated(std::uint32_t &count, std::uint64_t more)
{
    count = static_cast<std::uint32_t>(
        std::min<std::uint64_t>(count + more, std::numeric_limits<std::uint32_t>::max()));
}

} // namespace

void addCounts(HuffmanTree::Counts &counts, std::span<unsigned char const> bytes)
{
    if (bytes.size() < 1024) {
        for (unsigned char const byte : bytes) {
            addSaturated(counts[byte], 1);
        }
        return;
    }
    std::uint32_t seen[lists][HuffmanTree::symbolCount] = {};
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t const eight = load64(bytes.data() + i);
        for (std::size_t byte = 0; byte < 8; ++byte) {
            ++seen[byte % lists][eight >> (8 * byte) & 0xFF];
        }
    }
    for (; i < bytes.size(); ++i) {
        ++seen[0][bytes[i]];
    }
    for (std::size_t symbol = 0; symbol < HuffmanTree::symbolCount; ++symbol) {
        addSaturated(counts[symbol],
                     std::uint64_t{seen[0][symbol]} + seen[1][symbol] + seen[2][symbol] + seen[3][symbol]);
    }
}

HuffmanEncoder::HuffmanEncoder(HuffmanTree const &tree)
{
    tree.collect(m_codes);
}

std::uint64_t HuffmanEncoder::bytesFor(HuffmanTree::Counts const &counts)
{
    std::uint64_t bits = 0;
    for (std::size_t symbol = 0; symbol < HuffmanTree::symbolCount; ++symbol) {
        HuffmanTree::Code const &code = m_codes[symbol];
        bits += std::uint64_t{counts[symbol]} * code.length;
        if (counts[symbol] > 0) {
            m_longest = std::max(m_longest, code.length);
        }
        m_short[symbol] = static_cast<std::uint32_t>((code.bits[0] & 0xFFFFFF) | code.length << 24);
    }
    return (bits + 7) / 8;
}

void HuffmanEncoder::put(std::span<unsigned char const> bytes)
{
    if (m_longest <= 14) {
        putGroups<4>(bytes);
    } else if (m_longest <= 24) {
        putGroups<2>(bytes);
    } else {
        putLong(bytes);
    }
}

// A group of codes is put together before it is joined to what is held: fewer steps then wait for each other.
template <int group>
void HuffmanEncoder::putGroups(std::span<unsigned char const> bytes)
{
    unsigned char const *from = bytes.data();
    unsigned char const *const end = from + bytes.size();
    unsigned char *to = m_to;
    std::uint64_t held = m_held;
    std::uint32_t heldBits = m_heldBits;
    auto const flush = [&](std::uint64_t codes, std::uint32_t count) {
        held |= codes << heldBits;
        heldBits += count;
        store64(to, held);
        to += heldBits / 8;
        held >>= heldBits & ~7u;
        heldBits &= 7;
    };
    for (; end - from >= group; from += group) {
        std::uint64_t codes = 0;
        std::uint32_t count = 0;
        for (int i = 0; i < group; ++i) {
            std::uint32_t const code = m_short[from[i]];
            codes |= std::uint64_t{code & 0xFFFFFF} << count;
            count += code >> 24;
        }
        flush(codes, count);
    }
    for (; from < end; ++from) {
        std::uint32_t const code = m_short[*from];
        flush(code & 0xFFFFFF, code >> 24);
    }
    m_to = to;
    m_held = held;
    m_heldBits = heldBits;
}

void HuffmanEncoder::putLong(std::span<unsigned char const> bytes)
{
    constexpr std::uint32_t part = 32;
    for (unsigned char const byte : bytes) {
        HuffmanTree::Code const &code = m_codes[byte];
        for (std::uint32_t at = 0; at < code.length; at += part) {
            std::uint32_t const count = std::min(part, code.length - at);
            m_held |= (code.bits[at / 64] >> at % 64 & 0xFFFFFFFF) << m_heldBits;
            m_heldBits += count;
            store64(m_to, m_held);
            m_to += m_heldBits / 8;
            m_held >>= m_heldBits & ~7u;
            m_heldBits &= 7;
        }
    }
}

unsigned char *HuffmanEncoder::finish()
{
    if (m_heldBits > 0) {
        *m_to++ = static_cast<unsigned char>(m_held);
        m_held = 0;
        m_heldBits = 0;
    }
    return m_to;
}

} // namespace Qel
