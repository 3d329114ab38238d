#pragma once

#include "System/System/export.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Qel {

/// Generator of the MT19937 recurrence, with a seeding of its own.
///
/// A draw costs a few instructions in the caller's loop; every 624th draw steps the whole state in vectors,
/// and many values at once are tempered in vectors too.
///
/// The recurrence and the tempering are those of M. Matsumoto and T. Nishimura, "Mersenne Twister: A
/// 623-dimensionally equidistributed uniform pseudo-random number generator", 1998. The seeding fills the
/// state with powers of 69069 times the seed, and sets the seed's lowest bit.
///
/// @par Threads  Takes no lock: one generator belongs to one thread at a time.
class QEL_API cMersenneTwister {
public:
    static constexpr unsigned int defaultSeed = 4357;
    static constexpr int stateSize = 624;           ///< words of a block
    static constexpr int saveWords = stateSize + 1; ///< words that Save() writes

    /// Seeds with 4357.
    constexpr cMersenneTwister() : next(state) { Init(defaultSeed); }
    explicit constexpr cMersenneTwister(unsigned int seedValue) : next(state) { Init(seedValue); }

    /// Goes on where a generator was saved.
    /// @param saved  what Save() wrote; null seeds with 4357
    template <class Words>
    requires(std::is_pointer_v<Words> || std::is_null_pointer_v<Words>) explicit cMersenneTwister(Words saved)
        : cMersenneTwister()
    {
        // Not for a plain 0, which is a seed.
        if (unsigned int const *const words = saved; words != nullptr) {
            Load(words);
        }
    }

    cMersenneTwister(cMersenneTwister const &other);
    cMersenneTwister &operator=(cMersenneTwister const &other);

    /// Starts the sequence of @p seedValue. The lowest bit is always set: 2 and 3 give one sequence.
    constexpr void Init(unsigned int seedValue)
    {
        std::uint32_t word = seedValue | 1U;
        left = 0;
        state[0] = word;
        for (int i = 1; i < stateSize; ++i) {
            word *= 69069U;
            state[i] = word;
        }
    }
    constexpr void seed(unsigned int seedValue) { Init(seedValue); } ///< Init()

    /// The next value, any of the 2^32.
    unsigned int Random()
    {
        if (--left < 0) [[unlikely]] {
            return Reload();
        }
        std::uint32_t y = *next++;
        y ^= y >> 11U;
        y ^= (y << 7U) & 0x9D2C5680U;
        y ^= (y << 15U) & 0xEFC60000U;
        return y ^ (y >> 18U);
    }

    /// The next value in steps of 2^-23: at least 0 and below 1.
    float Random01()
    {
        // One step is a little more than 2^-23, so that the highest draw would round up to 1.
        float const value = static_cast<float>(static_cast<std::int32_t>(Random() & 0x7FFFFFU)) *
                            std::bit_cast<float>(0x34000001U);
        constexpr float belowOne = std::bit_cast<float>(0x3F7FFFFFU);
        return value < belowOne ? value : belowOne;
    }
    float random01() { return Random01(); } ///< Random01()

    /// The next @p count values at once: those of as many single draws, several times as fast.
    /// @param values  room for @p count values
    void fill(unsigned int *values, std::size_t count);

    /// The next @p count values as Random01() gives them.
    /// @param values  room for @p count values
    void fill01(float *values, std::size_t count);

    /// An integer from @p a to @p b, both included. Draws one value.
    /// @param b  not below @p a, and the range is narrower than 2^32; otherwise the result is @p a
    int random(int a, int b)
    {
        std::uint32_t const width = static_cast<std::uint32_t>(b) - static_cast<std::uint32_t>(a) + 1U;
        QEL_ASSERT(a <= b && width != 0);
        std::uint32_t const value = Random();
        if (a > b || width == 0) [[unlikely]] {
            return a;
        }
        return static_cast<int>(value % width + static_cast<std::uint32_t>(a));
    }

    int randMax() const { return 0x7FFFFFFF; } ///< a constant, not the range of Random()

    /// Steps the whole state to its next block, whatever is left of this one.
    /// @return the new block's first value
    unsigned int Reload();

    static int MemorySaveSize() { return 2508; } ///< bytes that MemorySave() writes

    /// Writes the generator's image: 32-bit words, little-endian; what is left of the block, the position in
    /// it, the 625 words of the state.
    /// @param image  MemorySaveSize() bytes, aligned or not
    void MemorySave(char *image) const;

    /// Goes on where MemorySave() left off. A position outside the state, or more left than there is, is cut
    /// down to what the state holds.
    /// @param image  MemorySaveSize() bytes, aligned or not
    void MemoryLoad(char const *image);

    /// Writes the state and, as the last word, what is left of the block.
    /// @param words  room for saveWords words
    void Save(unsigned int *words) const;

    /// Goes on where Save() left off; what is left is cut down to a block.
    /// @param words  saveWords words
    void Load(unsigned int const *words);

private:
    template <class T>
    void draw(T *values, std::size_t count, void (*temper)(std::uint32_t const *, std::size_t, T *));

    std::uint32_t state[stateSize + 1] = {}; // the last word is spare
    std::uint32_t *next;                     // the next word to temper
    std::int32_t left = 0;                   // words before the next reload
};

} // namespace Qel
