#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace Qel {

/// The bits of each byte in reverse: the streams have their first bit lowest, their fields the highest first.
constexpr std::array<std::uint8_t, 256> reversedByte = [] {
    std::array<std::uint8_t, 256> table{};
    for (unsigned i = 0; i < 256; ++i) {
        unsigned reversed = 0;
        for (unsigned bit = 0; bit < 8; ++bit) {
            reversed |= (i >> bit & 1) << (7 - bit);
        }
        table[i] = static_cast<std::uint8_t>(reversed);
    }
    return table;
}();

/// The lowest 16 bits in reverse.
inline std::uint32_t reversed16(std::uint32_t value)
{
    return std::uint32_t{reversedByte[value & 0xFF]} << 8 | reversedByte[value >> 8 & 0xFF];
}

inline std::uint64_t load64(unsigned char const *from)
{
    std::uint64_t value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

inline void store64(unsigned char *to, std::uint64_t value)
{
    std::memcpy(to, &value, sizeof(value));
}

/// Writes bits into memory, the first one lowest. The caller has room for them and for 8 bytes more.
class BitWriter {
public:
    explicit BitWriter(unsigned char *to) : m_to(to) {}

    /// @param bits   none set above @p count
    /// @param count  0 to 56
    void put(std::uint64_t bits, std::uint32_t count)
    {
        m_held |= bits << m_count;
        m_count += count;
        store64(m_to, m_held);
        m_to += m_count / 8;
        m_held >>= m_count & ~7u;
        m_count &= 7;
    }

    /// A field that goes out highest bit first.
    /// @param count  1 to 16
    void putField(std::uint32_t value, std::uint32_t count) { put(reversed16(value) >> (16 - count), count); }

    /// Ends the last byte with zeros. @return where the next one would go
    unsigned char *finish()
    {
        if (m_count > 0) {
            *m_to++ = static_cast<unsigned char>(m_held);
            m_held = 0;
            m_count = 0;
        }
        return m_to;
    }

    unsigned char *place() const { return m_to; } ///< of the next byte
    void moveTo(unsigned char *to) { m_to = to; } ///< goes on elsewhere, with the bits of a byte begun

private:
    unsigned char *m_to;
    std::uint64_t m_held = 0;
    std::uint32_t m_count = 0; // bits in m_held, fewer than 8 between calls
};

/// Reads bits as BitWriter writes them; behind the end they are zeros.
class BitReader {
public:
    BitReader(unsigned char const *from, std::size_t bytes) : m_from(from), m_bytes(bytes) {}

    /// At least 57 bits from the position on, the first one lowest.
    std::uint64_t peek() const
    {
        std::uint64_t const at = m_position / 8;
        if (at + 8 <= m_bytes) [[likely]] {
            return load64(m_from + at) >> m_position % 8;
        }
        std::uint64_t last = 0;
        if (at < m_bytes) {
            std::memcpy(&last, m_from + at, m_bytes - at);
        }
        return last >> m_position % 8;
    }

    void skip(std::uint32_t count) { m_position += count; }

    /// @param count  1 to 16
    std::uint32_t field(std::uint32_t count)
    {
        auto const bits = static_cast<std::uint32_t>(peek());
        skip(count);
        return reversed16(bits) >> (16 - count);
    }

    /// Are there so many bits? Asked before a field() it costs nothing, since that asks the same first.
    /// @param count  1 to 57
    bool has(std::uint32_t count) const { return m_position / 8 + 8 <= m_bytes || bitsLeft() >= count; }

    std::uint64_t bitsLeft() const
    {
        std::uint64_t const all = std::uint64_t{m_bytes} * 8;
        return all > m_position ? all - m_position : 0;
    }
    std::uint64_t position() const { return m_position; }

private:
    unsigned char const *m_from;
    std::size_t m_bytes;
    std::uint64_t m_position = 0;
};

} // namespace Qel
