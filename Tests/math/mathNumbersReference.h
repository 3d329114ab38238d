// Printed by mathNumbersReference.py.
#pragma once

#include <cstdint>

namespace Qel::reference {

// Draws of the seed 4357 at these positions, and the first eight of the seed 123456789.
inline constexpr int twisterPositions[] = {
    0, 1, 2, 3, 622, 623, 624, 625, 1247, 1248, 1999,
};

inline constexpr std::uint32_t twisterDefault[] = {
    3510405877U, 4290933890U, 2191955339U, 564929546U, 3800499491U, 730882493U, 2222118351U,
    4107301035U, 3705639611U, 1244107692U, 842677508U,
};

inline constexpr std::uint32_t twisterSeeded[] = {
    2498471029U, 2327538236U, 4084141020U, 2150866308U, 665401037U, 1095323745U, 525288231U,
    2822468072U,
};

// Seed 1 of the minimal standard, seed 77 of the old generator, seed 4242 of the 15-bit one.
inline constexpr std::int32_t parkMiller[] = {
    16807, 282475249, 1622650073, 984943658, 1144108930, 470211272, 101027544, 1457850878,
};

inline constexpr std::int32_t oldRandom[] = {
    146862, 273020177, 738371834, -1756291595, -770926426, 1366854649, -1637843022, 381638685,
};

inline constexpr int msvcRandom[] = {
    13891, 12632, 17223, 23513, 19988, 8477, 3655, 11974,
};

} // namespace Qel::reference
