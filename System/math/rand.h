#pragma once

#include "System/math/mersenneTwister.h"

namespace Qel {

/// The random choices of the whole process, drawn from one shared generator.
///
/// @code
/// cRand::seed(static_cast<unsigned int>(savedGame.seed));
/// int const dice = cRand::random(1, 6);
/// float const spread = cRand::random(-0.5F, 0.5F);
/// @endcode
///
/// @par Threads  Takes no lock. Particles and sound channels draw from it on the thread that runs the frame.
class QEL_API cRand {
public:
    static void seed(unsigned int value) { mt.seed(value); }    ///< starts the sequence of @p value
    static unsigned int random() { return mt.Random(); }        ///< any 32-bit value
    static int random(int a, int b) { return mt.random(a, b); } ///< @p a to @p b, both included
    static float random01() { return mt.Random01(); }           ///< at least 0 and below 1

    /// a + (b - a) r, with r = random01(): from @p a to @p b, which need not be in order.
    static float random(float a, float b) { return a + (b - a) * mt.Random01(); }
    static float randomRange(float a, float b) { return random(a, b); } ///< random(float, float)

    /// The next @p count values of random() or of random01() at once, several times as fast.
    /// @param values  room for @p count values
    static void fill(unsigned int *values, std::size_t count) { mt.fill(values, count); }
    static void fill01(float *values, std::size_t count) { mt.fill01(values, count); }

    static bool randomSign() { return (mt.Random() & 1U) != 0; } ///< true half of the time

    static cMersenneTwister mt; ///< seeded with 4357 at load
};

} // namespace Qel
