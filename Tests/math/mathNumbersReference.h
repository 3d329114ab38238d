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

// Of that many bytes (i * i * 7 + i * 3 + 11) & 255: CRC-32 without its last inversion, and MD5.
inline constexpr unsigned digestSizes[] = {
    0, 1, 3, 4, 15, 16, 55, 56, 63, 64, 65, 119, 120, 1000, 100003,
};

inline constexpr std::uint32_t crcs[] = {
    4294967295U, 3123694074U, 2122412909U, 3240074456U, 33274132U, 3775882145U, 1467885525U,
    624471175U, 1168203638U, 1598040407U, 4192640838U, 2144874212U, 4020946948U, 3776639979U,
    1544180191U,
};

inline constexpr char const *md5s[] = {
    "d41d8cd98f00b204e9800998ecf8427e", "13c8ffd977013703a701cf8e11deac65",
    "a1a8982dee033098383ccab22fd9a4b9", "498a974228e4d1a1f526efe6165c684d",
    "b8d5a50149914ab919c6daa7439d3b52", "fb7172fa704f32ca2c0232b29f7dcb64",
    "79d1edeb4c383af51103192e86d08fbc", "51db0c419a9444f204814daece4f8d6a",
    "ba807335603dda341b3cf03e0dae7b54", "6a411726c1603a09cdcef6398740c4a7",
    "d40a33a2ac541e5ef766b811e6b6c0a7", "e064bc8805018f5f081c4cdda36c01da",
    "da3742ea48b8a9c835ce2d472bae030b", "eb00c088376b5a345e5b1bed07d5018a",
    "8d01b681e81f0f40956b13e00df5188b",
};

} // namespace Qel::reference
