#include "System/Graphics/image/s3tcPlain.h"

#include <algorithm>

namespace Qel::s3tcPlain {

namespace {

std::uint64_t blockOf(unsigned int a0, unsigned int a1, std::uint64_t indices)
{
    return std::uint64_t{a0} | std::uint64_t{a1} << 8 | indices << 16;
}

} // namespace

std::array<unsigned int, 8> alphaPoints(unsigned int a0, unsigned int a1)
{
    if (a0 > a1) {
        return {a0,
                a1,
                (6 * a0 + a1) / 7,
                (5 * a0 + 2 * a1) / 7,
                (4 * a0 + 3 * a1) / 7,
                (3 * a0 + 4 * a1) / 7,
                (2 * a0 + 5 * a1) / 7,
                (a0 + 6 * a1) / 7};
    }
    return {a0, a1, (4 * a0 + a1) / 5, (3 * a0 + 2 * a1) / 5, (2 * a0 + 3 * a1) / 5, (a0 + 4 * a1) / 5,
            0,  255};
}

Block mapAlpha(Pixels const &pixels)
{
    Block block{0, 0};
    for (unsigned int i = blockPixels; i-- != 0;) {
        unsigned int const alpha = pixels[i] >> 24;
        unsigned int const nibble = alpha >> 4;
        block.bits = block.bits << 4 | nibble;
        block.error += gap(alpha, nibble * 255 / 15);
    }
    return block;
}

Block findalpha4x4(std::array<unsigned char, blockPixels> const &alpha)
{
    unsigned int values[blockPixels];
    unsigned int size = 0;
    unsigned int low = 255;
    unsigned int high = 0;
    unsigned int lowInside = 255; // smallest value of 2 or more
    unsigned int highInside = 0;  // largest value of 253 or less
    for (unsigned int const value : alpha) {
        if (std::find(values, values + size, value) == values + size) {
            values[size++] = value;
        }
        low = std::min(low, value);
        high = std::max(high, value);
        lowInside = value >= 2 ? std::min(lowInside, value) : lowInside;
        highInside = value <= 253 ? std::max(highInside, value) : highInside;
    }
    auto const gather = [&](auto indexOf) {
        std::uint64_t indices = 0;
        for (unsigned int i = blockPixels; i-- != 0;) {
            indices = indices << 3 | indexOf(alpha[i]);
        }
        return indices;
    };
    if (size == 1) {
        return {values[0], 0};
    }
    if (size == 2) {
        return {blockOf(values[0], values[1], gather([&](unsigned int value) -> unsigned int {
                            return value == values[1] ? 1 : 0;
                        })),
                0};
    }

    // The one set that no pair below is tried for, 253, 254 and 255, has points of its own between its ends.
    unsigned int a0 = high;
    unsigned int a1 = low;
    unsigned int best = worst;
    auto const errorOf = [&](unsigned int first, unsigned int second) {
        auto const points = alphaPoints(first, second);
        unsigned int error = 0;
        for (unsigned int i = 0; i < size && error < best; ++i) {
            unsigned int smallest = worst;
            for (unsigned int const point : points) {
                smallest = std::min(smallest, gap(values[i], point));
            }
            error += smallest;
        }
        return error;
    };
    auto const search = [&](unsigned int lowest, unsigned int highest, bool isSixValues) {
        unsigned int const end = std::min(lowest + 1, 255u);
        for (unsigned int lo = lowest == 0 ? 0 : lowest - 1; lo <= end; ++lo) {
            for (unsigned int hi = lo + 4; hi < 256 && best != 0; hi += 4) {
                unsigned int const first = isSixValues ? lo : hi;
                unsigned int const second = isSixValues ? hi : lo;
                unsigned int const error = errorOf(first, second);
                if (error < best) {
                    best = error;
                    a0 = first;
                    a1 = second;
                }
                if (hi > highest) {
                    break;
                }
            }
        }
    };
    search(low, high, false);
    if (lowInside < highInside) {
        search(lowInside, highInside, true);
    }
    if (best == worst) {
        best = errorOf(a0, a1);
    }
    auto const points = alphaPoints(a0, a1);
    std::uint64_t const indices = gather([&](unsigned int value) {
        unsigned int index = 0;
        for (unsigned int i = 1; i < points.size(); ++i) {
            unsigned int const now = gap(value, points[index]);
            unsigned int const then = gap(value, points[i]);
            if (then < now || (then == now && points[i] < points[index])) {
                index = i;
            }
        }
        return index;
    });
    return {blockOf(a0, a1, indices), best};
}

} // namespace Qel::s3tcPlain
