#include "System/Codec/codecs/moveToFront.h"

#include <bit>
#include <cstdint>

#include <immintrin.h>

namespace Qel {

namespace {

constexpr std::size_t quarter = 64; // places in one register

/// For each place in a quarter: its byte goes first, and those before it move on by one.
struct Turns {
    alignas(64) unsigned char rows[quarter][quarter];
};

constexpr Turns turns = [] {
    Turns table{};
    for (std::size_t place = 0; place < quarter; ++place) {
        for (std::size_t i = 0; i < quarter; ++i) {
            table.rows[place][i] = static_cast<unsigned char>(i == 0 ? place : i <= place ? i - 1 : i);
        }
    }
    return table;
}();

__m512i turned(__m512i bytes, std::size_t place)
{
    return _mm512_permutexvar_epi8(_mm512_load_si512(turns.rows[place]), bytes);
}

__m512i withFirst(__m512i bytes, __m512i first)
{
    return _mm512_mask_mov_epi8(bytes, 1, first);
}

/// The table. Named registers and not an array, which would lie in memory.
struct Quarters {
    __m512i a, b, c, d;

    explicit Quarters(unsigned char const *table)
        : a(_mm512_load_si512(table)), b(_mm512_load_si512(table + 64)), c(_mm512_load_si512(table + 128)),
          d(_mm512_load_si512(table + 192))
    {
    }
    void store(unsigned char *table) const
    {
        _mm512_store_si512(table, a);
        _mm512_store_si512(table + 64, b);
        _mm512_store_si512(table + 128, c);
        _mm512_store_si512(table + 192, d);
    }

    // A quarter before the one of the place gives its last byte to the next; the byte of the place itself
    // goes to the first quarter.
    void moveFromBehind(std::size_t place)
    {
        std::size_t const inside = place % quarter;
        __m512i const lastA = turned(a, quarter - 1);
        __m512i moved;
        if (place < 2 * quarter) {
            moved = turned(b, inside);
            b = withFirst(moved, lastA);
        } else {
            __m512i const lastB = turned(b, quarter - 1);
            b = withFirst(lastB, lastA);
            if (place < 3 * quarter) {
                moved = turned(c, inside);
                c = withFirst(moved, lastB);
            } else {
                __m512i const lastC = turned(c, quarter - 1);
                c = withFirst(lastC, lastB);
                moved = turned(d, inside);
                d = withFirst(moved, lastC);
            }
        }
        a = withFirst(lastA, moved);
    }
    std::size_t findBehind(__m512i wanted) const
    {
        if (__mmask64 const inB = _mm512_cmpeq_epi8_mask(b, wanted)) {
            return quarter + static_cast<std::size_t>(std::countr_zero(inB));
        }
        if (__mmask64 const inC = _mm512_cmpeq_epi8_mask(c, wanted)) {
            return 2 * quarter + static_cast<std::size_t>(std::countr_zero(inC));
        }
        return 3 * quarter + static_cast<std::size_t>(std::countr_zero(_mm512_cmpeq_epi8_mask(d, wanted)));
    }
};

} // namespace

void MoveToFront::encodeAvx512(unsigned char const *from, unsigned char *to, std::size_t count)
{
    Quarters table(m_table.data());
    for (std::size_t i = 0; i < count; ++i) {
        __m512i const wanted = _mm512_set1_epi8(static_cast<char>(from[i]));
        __mmask64 const found = _mm512_cmpeq_epi8_mask(table.a, wanted);
        std::size_t place = static_cast<std::size_t>(std::countr_zero(found));
        if (found != 0) [[likely]] {
            // Moved as if the place were the last one, and taken over up to it: nothing waits for its number.
            __m512i const moved = withFirst(turned(table.a, quarter - 1), wanted);
            table.a = _mm512_mask_mov_epi8(table.a, found ^ (found - 1), moved);
        } else {
            place = table.findBehind(wanted);
            table.moveFromBehind(place);
        }
        to[i] = static_cast<unsigned char>(place);
    }
    table.store(m_table.data());
}

void MoveToFront::decodeAvx512(unsigned char const *from, unsigned char *to, std::size_t count)
{
    Quarters table(m_table.data());
    for (std::size_t i = 0; i < count; ++i) {
        std::size_t const place = from[i];
        if (place < quarter) [[likely]] {
            table.a = turned(table.a, place);
        } else {
            table.moveFromBehind(place);
        }
        to[i] = static_cast<unsigned char>(_mm_cvtsi128_si32(_mm512_castsi512_si128(table.a)));
    }
    table.store(m_table.data());
}

} // namespace Qel
