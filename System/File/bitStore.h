#pragma once

#include "System/System/export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace Qel {

/// The bits under both bit streams. Bit k is bit (k mod 8), counted from the least significant, of byte k
/// / 8.
///
/// Positions have 32 bits, so there are at most maxBytes bytes. What would lie behind them is not stored, and
/// the position does not move then.
class QEL_API BitStore {
public:
    static constexpr std::uint32_t maxBytes = 0x1FFFFFFF; ///< 512 MiB less one: its bits can still be counted

    BitStore() = default;
    explicit BitStore(std::vector<unsigned char> const &source); ///< a copy, cut at maxBytes

    /// ORs a bit in and moves on. A position behind the end gets zeros up to it.
    void writeBit(bool bit)
    {
        std::size_t const at = m_position / 8;
        if (!grow(at + 1)) {
            return;
        }
        m_bytes[at] = static_cast<unsigned char>(m_bytes[at] | unsigned{bit} << m_position % 8);
        moveTo(m_position + 1);
    }

    /// The bit at the position, which moves on; false at the end, where it stays.
    bool readBit()
    {
        std::size_t const at = m_position / 8;
        if (at >= m_used) {
            return false;
        }
        bool const bit = (m_bytes[at] >> m_position % 8 & 1) != 0;
        ++m_position;
        return bit;
    }

    /// ORs in the lowest @p count bits of @p value, the most significant of them first.
    /// @param count  1 to 32
    /// @return false if there is no room for all of them; nothing is then written
    bool writeBits(std::uint32_t value, std::uint32_t count)
    {
        std::uint64_t const end = std::uint64_t{m_position} + count;
        std::uint64_t const needed = (end + 7) / 8;
        std::size_t const at = m_position / 8;
        bool const appends = at + 1 >= m_used;
        if (!grow(needed)) {
            return false;
        }
        // In the order of the stream the first bit is the lowest one.
        std::uint64_t const field = std::uint64_t{reversed(value) >> (32 - count)} << m_position % 8;
        unsigned char *const to = m_bytes.data() + at;
        std::uint64_t there = *to;
        if (!appends) {
            // Only here: a wide load waits for the store of the field before, which overlaps it in part.
            std::memcpy(&there, to, sizeof(there));
        }
        there |= field;
        std::memcpy(to, &there, sizeof(there));
        moveTo(static_cast<std::uint32_t>(end));
        return true;
    }

    /// The next @p count bits, the first one being the most significant. Bits behind the end are 0.
    /// @param count  1 to 32
    std::uint32_t readBits(std::uint32_t count)
    {
        std::uint32_t const end = sizeInBits();
        if (m_position >= end) {
            return 0;
        }
        std::uint64_t field;
        std::memcpy(&field, m_bytes.data() + m_position / 8, sizeof(field));
        auto const bits = static_cast<std::uint32_t>(field >> m_position % 8);
        m_position += count < end - m_position ? count : end - m_position;
        return reversed(bits) >> (32 - count);
    }

    /// Moves up to a multiple of 8, or to the end of what 32 bits can count.
    void align();

    /// Makes @p count bytes of it, with zeros behind what is there, if it has fewer.
    /// @return false beyond maxBytes or without memory
    bool grow(std::uint64_t count)
    {
        if (count > m_used) {
            if (count + slack > m_bytes.size() && !growRoom(count)) {
                return false;
            }
            m_used = static_cast<std::uint32_t>(count);
        }
        return true;
    }

    /// Makes room for @p count bytes of it in all, so that writes up to there can not fail.
    /// @return false beyond maxBytes or without memory
    bool reserve(std::uint64_t count) { return count + slack <= m_bytes.size() || growRoom(count); }

    /// Are these bytes of the store itself, which may move as it grows?
    bool holds(void const *address) const;

    std::uint32_t position() const { return m_position; } ///< index of the next bit
    void seek(std::uint32_t bit) { m_position = bit; }    ///< to any bit
    std::uint32_t sizeInBits() const { return m_used * 8; }
    std::uint32_t numBytes() const { return m_used; }
    unsigned char *data() { return m_bytes.data(); } ///< numBytes() bytes; good until the next write

private:
    // Room for a load and a store of 64 bits at every byte of the contents.
    static constexpr std::uint32_t slack = 8;

    bool growRoom(std::uint64_t count);

    void moveTo(std::uint32_t position)
    {
        m_position = position;
        m_highestBit = position > m_highestBit ? position : m_highestBit;
    }

    static std::uint32_t reversed(std::uint32_t value)
    {
        value = (value & 0x55555555) << 1 | (value >> 1 & 0x55555555);
        value = (value & 0x33333333) << 2 | (value >> 2 & 0x33333333);
        value = (value & 0x0F0F0F0F) << 4 | (value >> 4 & 0x0F0F0F0F);
        return __builtin_bswap32(value);
    }

    std::uint32_t m_position = 0;
    std::uint32_t m_highestBit = 0;     // the largest position that a write of bits has reached
    std::vector<unsigned char> m_bytes; // the contents, and zeros ahead of them
    std::uint32_t m_used = 0;           // bytes of contents
};

} // namespace Qel
