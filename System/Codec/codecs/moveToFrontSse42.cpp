#include "System/Codec/codecs/moveToFront.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include <nmmintrin.h>

namespace Qel {

namespace {

constexpr std::size_t front = 32; // places in registers

/// For each place in front: how the two halves turn, each by itself, and whether their first bytes then
/// change sides.
struct Turns {
    alignas(16) unsigned char low[front][16];
    alignas(16) unsigned char high[front][16];
    alignas(16) unsigned char change[front][16];
};

constexpr Turns turns = [] {
    Turns table{};
    for (std::size_t place = 0; place < front; ++place) {
        bool const isHigh = place >= 16;
        // In a half whose byte moves to its front, the bytes before that move on by one. The lower half gives
        // its last byte when the byte comes from the higher one.
        std::size_t const lowPlace = isHigh ? 15 : place;
        std::size_t const highPlace = isHigh ? place - 16 : 0;
        for (std::size_t i = 0; i < 16; ++i) {
            auto const turned = [i](std::size_t to) { return i == 0 ? to : i <= to ? i - 1 : i; };
            table.low[place][i] = static_cast<unsigned char>(turned(lowPlace));
            table.high[place][i] = static_cast<unsigned char>(turned(highPlace));
        }
        table.change[place][0] = isHigh ? 0xFF : 0;
    }
    return table;
}();

__m128i load(unsigned char const *from)
{
    return _mm_load_si128(reinterpret_cast<__m128i const *>(from));
}

void store(unsigned char *to, __m128i value)
{
    _mm_store_si128(reinterpret_cast<__m128i *>(to), value);
}

struct Front {
    __m128i low;
    __m128i high;

    void moveToFront(std::size_t place)
    {
        __m128i const turnedLow = _mm_shuffle_epi8(low, load(turns.low[place]));
        __m128i const turnedHigh = _mm_shuffle_epi8(high, load(turns.high[place]));
        __m128i const change = _mm_and_si128(_mm_xor_si128(turnedLow, turnedHigh), load(turns.change[place]));
        low = _mm_xor_si128(turnedLow, change);
        high = _mm_xor_si128(turnedHigh, change);
    }
    unsigned char first() const { return static_cast<unsigned char>(_mm_cvtsi128_si32(low)); }
};

// Moves the byte at a place behind the front through all of the table.
void moveFromBehind(unsigned char *table, Front &halves, std::size_t place)
{
    unsigned char const c = table[place];
    store(table, halves.low);
    store(table + 16, halves.high);
    std::memmove(table + 1, table, place);
    table[0] = c;
    halves = {load(table), load(table + 16)};
}

} // namespace

void MoveToFront::encodeSse42(unsigned char const *from, unsigned char *to, std::size_t count)
{
    Front halves{load(m_table.data()), load(m_table.data() + 16)};
    for (std::size_t i = 0; i < count; ++i) {
        unsigned char const c = from[i];
        __m128i const wanted = _mm_set1_epi8(static_cast<char>(c));
        auto const inLow = static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(halves.low, wanted)));
        auto const inHigh =
            static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(halves.high, wanted)));
        std::uint32_t const found = inLow | inHigh << 16;
        if (found != 0) [[likely]] {
            auto const place = static_cast<std::size_t>(std::countr_zero(found));
            to[i] = static_cast<unsigned char>(place);
            halves.moveToFront(place);
            continue;
        }
        std::size_t place = front;
        for (;; place += 16) {
            auto const there = static_cast<std::uint32_t>(
                _mm_movemask_epi8(_mm_cmpeq_epi8(load(m_table.data() + place), wanted)));
            if (there != 0) {
                place += static_cast<std::size_t>(std::countr_zero(there));
                break;
            }
        }
        to[i] = static_cast<unsigned char>(place);
        moveFromBehind(m_table.data(), halves, place);
    }
    store(m_table.data(), halves.low);
    store(m_table.data() + 16, halves.high);
}

void MoveToFront::decodeSse42(unsigned char const *from, unsigned char *to, std::size_t count)
{
    Front halves{load(m_table.data()), load(m_table.data() + 16)};
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const place = from[i];
        if (place < front) [[likely]] {
            halves.moveToFront(place);
        } else {
            moveFromBehind(m_table.data(), halves, place);
        }
        to[i] = halves.first();
    }
    store(m_table.data(), halves.low);
    store(m_table.data() + 16, halves.high);
}

} // namespace Qel
