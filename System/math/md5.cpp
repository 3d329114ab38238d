#include "System/math/md5.h"

#include <algorithm>
#include <bit>

namespace Qel {

namespace {

constexpr std::size_t blockBytes = 64;

struct Words {
    std::uint32_t a, b, c, d;
};

std::uint32_t word(unsigned char const *block, std::size_t index)
{
    std::uint32_t value;
    std::memcpy(&value, block + 4 * index, sizeof value);
    return value;
}

// The four functions, each added to the sum in the order in which its parts come to be known: b is the word
// that the step before has just made, and every step waits for it. The two halves of F and G have no bit in
// common, so that they may be added one by one.
struct RoundF {
    static std::uint32_t add(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
    {
        return sum + (d ^ (b & (c ^ d)));
    }
};
struct RoundG {
    static std::uint32_t add(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
    {
        return sum + (c & ~d) + (b & d);
    }
};
struct RoundH {
    static std::uint32_t add(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
    {
        return sum + (b ^ (c ^ d));
    }
};
struct RoundI {
    static std::uint32_t add(std::uint32_t sum, std::uint32_t b, std::uint32_t c, std::uint32_t d)
    {
        return sum + (c ^ (b | ~d));
    }
};

template <class Round>
[[gnu::always_inline]] inline void step(Words &w, std::uint32_t x, int shift, std::uint32_t sine)
{
    std::uint32_t const sum = Round::add(w.a + x + sine, w.b, w.c, w.d);
    w = {w.d, w.b + std::rotl(sum, shift), w.b, w.c};
}

// Sixteen steps; the words of the block are taken from `first` on in steps of `stride`.
template <class Round, unsigned first, unsigned stride, int s0, int s1, int s2, int s3>
[[gnu::always_inline]] inline void round(Words &w, unsigned char const *block, std::uint32_t const *sines)
{
    int const shifts[4] = {s0, s1, s2, s3};
#pragma GCC unroll 16
    for (unsigned i = 0; i < 16; ++i) {
        step<Round>(w, word(block, (first + stride * i) & 15U), shifts[i & 3U], sines[i]);
    }
}

// 2^32 times the sines of 1 to 64 radians.
constexpr std::uint32_t sineTable[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

} // namespace

void cMD5::MD5Transform(std::uint32_t *state, unsigned char const *blocks, std::size_t count)
{
    Words sum{state[0], state[1], state[2], state[3]};
    for (; count > 0; --count, blocks += blockBytes) {
        Words w = sum;
        round<RoundF, 0, 1, 7, 12, 17, 22>(w, blocks, sineTable);
        round<RoundG, 1, 5, 5, 9, 14, 20>(w, blocks, sineTable + 16);
        round<RoundH, 5, 3, 4, 11, 16, 23>(w, blocks, sineTable + 32);
        round<RoundI, 0, 7, 6, 10, 15, 21>(w, blocks, sineTable + 48);
        sum = {sum.a + w.a, sum.b + w.b, sum.c + w.c, sum.d + w.d};
    }
    state[0] = sum.a;
    state[1] = sum.b;
    state[2] = sum.c;
    state[3] = sum.d;
}

void cMD5::update(unsigned char const *data, unsigned int size)
{
    QEL_ASSERT(data != nullptr || size == 0);
    if (data == nullptr) {
        return;
    }
    std::size_t const held = count[0] >> 3U & 63U;
    std::uint32_t const before = count[0];
    count[0] += size << 3U;
    count[1] += (size >> 29U) + (count[0] < before ? 1U : 0U);

    std::size_t left = size;
    if (held != 0) {
        std::size_t const taken = std::min(left, blockBytes - held);
        std::memcpy(buffer + held, data, taken);
        data += taken;
        left -= taken;
        if (held + taken < blockBytes) {
            return;
        }
        MD5Transform(state, buffer, 1);
    }
    if (left >= blockBytes) {
        MD5Transform(state, data, left / blockBytes);
    }
    std::memcpy(buffer, data + (left & ~(blockBytes - 1)), left % blockBytes);
}

void cMD5::final(unsigned char *digest)
{
    std::size_t const held = count[0] >> 3U & 63U;
    buffer[held] = 0x80;
    std::size_t filled = held + 1;
    if (filled > 56) {
        std::memset(buffer + filled, 0, blockBytes - filled);
        MD5Transform(state, buffer, 1);
        filled = 0;
    }
    // Not memset: for so few bytes its call would cost more than they do.
    for (; (filled & 7U) != 0; ++filled) {
        buffer[filled] = 0;
    }
    for (; filled < 56; filled += 8) {
        std::memset(buffer + filled, 0, 8);
    }
    std::memcpy(buffer + 56, count, sizeof count);
    MD5Transform(state, buffer, 1);
    std::memcpy(digest, state, sizeof state);
    wipe();
}

void cMD5::final(unsigned int *digest)
{
    final(reinterpret_cast<unsigned char *>(digest));
}

void cMD5::final(MD5Hash &digest)
{
    final(digest.hash);
}

void cMD5::getMD5(unsigned char const *data, unsigned int size, MD5Hash &digest)
{
    init();
    update(data, size);
    final(digest);
}

void cMD5::wipe()
{
    std::memset(state, 0, sizeof state);
    std::memset(count, 0, sizeof count);
    std::memset(buffer, 0, sizeof buffer);
    asm volatile("" : : "r"(this) : "memory"); // the zeros must be written though nobody reads them
}

} // namespace Qel
