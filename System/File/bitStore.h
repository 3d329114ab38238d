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
        std::size_t const at = position / 8;
        if (at >= bytes.size() && !grow(at + 1)) [[unlikely]] {
            return;
        }
        bytes[at] = static_cast<unsigned char>(bytes[at] | unsigned{bit} << position % 8);
        ++position;
        highestBit = position > highestBit ? position : highestBit;
    }

    /// The bit at the position, which moves on; false at the end, where it stays.
    bool readBit()
    {
        std::size_t const at = position / 8;
        if (at >= bytes.size()) {
            return false;
        }
        bool const bit = (bytes[at] >> position % 8 & 1) != 0;
        ++position;
        return bit;
    }

    /// ORs in the lowest @p count bits of @p value, the most significant of them first.
    /// @param count  1 to 32
    /// @return false if there is no room for all of them; nothing is then written
    bool writeBits(std::uint32_t value, std::uint32_t count)
    {
        std::uint64_t const end = std::uint64_t{position} + count;
        std::uint64_t const needed = (end + 7) / 8;
        if (needed > bytes.size() && !grow(needed)) [[unlikely]] {
            return false;
        }
        // In the order of the stream the first bit is the lowest one: a field lies in at most 5 bytes.
        std::uint64_t field = std::uint64_t{reversed(value) >> (32 - count)} << position % 8;
        unsigned char *const to = bytes.data();
        for (std::size_t at = position / 8; at < needed; ++at, field >>= 8) {
            to[at] = static_cast<unsigned char>(to[at] | (field & 0xFF));
        }
        position = static_cast<std::uint32_t>(end);
        highestBit = position > highestBit ? position : highestBit;
        return true;
    }

    /// The next @p count bits, the first one being the most significant. Bits behind the end are 0.
    /// @param count  1 to 32
    std::uint32_t readBits(std::uint32_t count)
    {
        std::size_t const at = position / 8;
        std::uint64_t field = 0;
        if (at + sizeof(field) > bytes.size()) [[unlikely]] {
            return readLastBits(count);
        }
        std::memcpy(&field, bytes.data() + at, sizeof(field));
        std::uint32_t const bits = static_cast<std::uint32_t>(field >> position % 8);
        position += count;
        return reversed(bits) >> (32 - count);
    }

    /// Moves up to a multiple of 8, or to the end of what 32 bits can count.
    void align();

    /// Makes @p count bytes of it, with zeros behind what is there.
    /// @return false beyond maxBytes or without memory
    bool grow(std::uint64_t count);

    std::uint32_t sizeInBits() const { return numBytes() * 8; }
    std::uint32_t numBytes() const { return static_cast<std::uint32_t>(bytes.size()); }

    /// Are these bytes of the store itself, which may move as it grows?
    bool holds(void const *address) const;

    std::uint32_t position = 0;       ///< index of the next bit
    std::uint32_t highestBit = 0;     ///< the largest position that a write of bits has reached
    std::vector<unsigned char> bytes; ///< the contents

private:
    static std::uint32_t reversed(std::uint32_t value)
    {
        value = (value & 0x55555555) << 1 | (value >> 1 & 0x55555555);
        value = (value & 0x33333333) << 2 | (value >> 2 & 0x33333333);
        value = (value & 0x0F0F0F0F) << 4 | (value >> 4 & 0x0F0F0F0F);
        return __builtin_bswap32(value);
    }

    std::uint32_t readLastBits(std::uint32_t count);
};

} // namespace Qel
