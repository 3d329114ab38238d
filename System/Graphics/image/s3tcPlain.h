#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

// The coder of block compression in plain words, one block at a time: how the others must come out.

namespace Qel::s3tcPlain {

constexpr unsigned int blockSide = 4;
constexpr unsigned int blockPixels = 16;
constexpr unsigned int worst = std::numeric_limits<unsigned int>::max();

struct Block {
    std::uint64_t bits;
    unsigned int error;
};

using Pixels = std::array<unsigned int, blockPixels>; // row by row

Block findcolor4x4(Pixels const &pixels);
Block findcolor4x4a(Pixels const &pixels);
Block mapAlpha(Pixels const &pixels);
Block findalpha4x4(std::array<unsigned char, blockPixels> const &alpha);

inline unsigned int gap(unsigned int a, unsigned int b)
{
    return a > b ? a - b : b - a;
}

/// The eight values that the indices of a block of interpolated alpha stand for.
std::array<unsigned int, 8> alphaPoints(unsigned int a0, unsigned int a1);

void decode1(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks);
void decode2or3(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks);
void decode4or5(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks);

} // namespace Qel::s3tcPlain
