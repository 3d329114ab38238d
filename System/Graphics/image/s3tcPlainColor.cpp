#include "System/Graphics/image/s3tcPlain.h"

#include <algorithm>
#include <cstdlib>

namespace Qel::s3tcPlain {

namespace {

// A colour cut to what a block can hold, channel by channel.
struct Quantised {
    int red;   // 0 .. 31
    int green; // 0 .. 63
    int blue;  // 0 .. 31

    bool operator==(Quantised const &) const = default;
    bool operator<(Quantised const &other) const { return packed() < other.packed(); }

    unsigned short packed() const { return static_cast<unsigned short>(red << 11 | green << 5 | blue); }
};

Quantised quantise(unsigned int pixel)
{
    return {static_cast<int>(pixel >> 19 & 31), static_cast<int>(pixel >> 10 & 63),
            static_cast<int>(pixel >> 3 & 31)};
}

unsigned int distance(Quantised const &a, Quantised const &b)
{
    return static_cast<unsigned int>(std::abs(a.red - b.red) + std::abs(a.green - b.green) +
                                     std::abs(a.blue - b.blue));
}

// The point two thirds of the way to @p near.
Quantised third(Quantised const &near, Quantised const &far)
{
    return {(2 * near.red + far.red) / 3, (2 * near.green + far.green) / 3, (2 * near.blue + far.blue) / 3};
}

Quantised middle(Quantised const &a, Quantised const &b)
{
    return {(a.red + b.red) >> 1, (a.green + b.green) >> 1, (a.blue + b.blue) >> 1};
}

// The distinct colours of a block in order of appearance, and how often each is there.
struct Colors {
    Quantised values[blockPixels];
    unsigned int counts[blockPixels];
    unsigned int size = 0;

    void add(Quantised const &color)
    {
        auto *const end = values + size;
        auto *const found = std::find(values, end, color);
        if (found != end) {
            ++counts[found - values];
            return;
        }
        values[size] = color;
        counts[size++] = 1;
    }
};

// Bits of 2 for each pixel, the last one first so that pixel 0 ends lowest.
template <class IndexOf>
unsigned int gatherIndices(IndexOf indexOf)
{
    unsigned int indices = 0;
    for (unsigned int i = blockPixels; i-- != 0;) {
        indices = indices << 2 | indexOf(i);
    }
    return indices;
}

std::uint64_t blockOf(unsigned short color0, unsigned short color1, unsigned int indices)
{
    return std::uint64_t{color0} | std::uint64_t{color1} << 16 | std::uint64_t{indices} << 32;
}

template <std::size_t N>
unsigned int nearest(Quantised const &color, Quantised const (&points)[N])
{
    unsigned int best = 0;
    for (unsigned int i = 1; i < N; ++i) {
        if (distance(color, points[i]) < distance(color, points[best])) {
            best = i;
        }
    }
    return best;
}

struct Search {
    Quantised a{};
    Quantised b{};
    unsigned int error = worst;
};

// Two bits per channel choose the ends of A and B; the best pair, and the first of equals, wins.
template <class PointsOf>
Search searchEnds(Colors const &colors, unsigned int const (&ends)[3][2], PointsOf pointsOf)
{
    Search best;
    for (unsigned int n = 0; n < 64 && best.error != 0; ++n) {
        auto const end = [&](unsigned int channel, unsigned int bit) {
            return static_cast<int>(ends[channel][n >> bit & 1]);
        };
        Quantised const a{end(0, 0), end(1, 2), end(2, 4)};
        Quantised const b{end(0, 1), end(1, 3), end(2, 5)};
        if (b < a) {
            continue;
        }
        auto const points = pointsOf(a, b);
        unsigned int error = 0;
        for (unsigned int i = 0; i < colors.size && error < best.error; ++i) {
            unsigned int smallest = worst;
            for (Quantised const &point : points) {
                smallest = std::min(smallest, distance(colors.values[i], point));
            }
            error += colors.counts[i] * smallest;
        }
        if (error < best.error) {
            best = {a, b, error};
        }
    }
    return best;
}

// What the alpha of an opaque pixel adds to the error of a block with one bit of alpha.
constexpr unsigned int opaqueError = 127;

bool isOpaque(unsigned int pixel)
{
    return pixel >> 31 != 0;
}

// Narrows minimum and maximum of a channel to the two ends that fit its values best.
void findbest(unsigned char const *values, unsigned int const *weights, unsigned int count,
              unsigned int *ends, unsigned int maxValue)
{
    unsigned int const range = ends[1] - ends[0];
    if (range < 2) {
        return;
    }
    if (range == 2) {
        if (ends[0] >= maxValue - 3) {
            ends[0] = maxValue - 3;
            ends[1] = maxValue;
        } else {
            ends[1] = ends[0] + 3;
        }
    }
    unsigned int const candidates[] = {ends[0], ends[0] + 1, ends[1] - 1, ends[1]};
    unsigned int best = worst;
    for (unsigned int i = 0; i < 4; ++i) {
        for (unsigned int j = i + 1; j < 4 && best != 0; ++j) {
            unsigned int const lo = candidates[i];
            unsigned int const hi = candidates[j];
            unsigned int const t1 = (2 * lo + hi) / 3;
            unsigned int const t2 = (lo + 2 * hi) / 3;
            unsigned int sum = 0;
            for (unsigned int k = 0; k < count && sum < best; ++k) {
                unsigned int const v = values[k];
                unsigned int c;
                if (v >= t2) {
                    c = std::min(gap(hi, v), v - t2);
                } else if (v < t1) {
                    c = std::min(gap(lo, v), t1 - v);
                } else {
                    c = std::min(v - t1, t2 - v);
                }
                sum += weights[k] * c;
            }
            if (sum < best) {
                best = sum;
                ends[0] = lo;
                ends[1] = hi;
            }
        }
    }
}

// Narrows each channel's extremes to two ends.
void narrow(Colors const &colors, unsigned int (&ends)[3][2])
{
    constexpr int Quantised::*channels[] = {&Quantised::red, &Quantised::green, &Quantised::blue};
    constexpr unsigned int maxValues[] = {31, 63, 31};
    for (unsigned int channel = 0; channel < 3; ++channel) {
        unsigned char values[blockPixels];
        for (unsigned int i = 0; i < colors.size; ++i) {
            values[i] = static_cast<unsigned char>(colors.values[i].*channels[channel]);
        }
        auto const [low, high] = std::minmax_element(values, values + colors.size);
        ends[channel][0] = *low;
        ends[channel][1] = *high;
        findbest(values, colors.counts, colors.size, ends[channel], maxValues[channel]);
    }
}

} // namespace

Block findcolor4x4(Pixels const &pixels)
{
    Colors colors;
    for (unsigned int const pixel : pixels) {
        colors.add(quantise(pixel));
    }
    if (colors.size == 1) {
        unsigned short const packed = colors.values[0].packed();
        return {packed != 0 ? blockOf(packed, 0, 0) : blockOf(0xFFFF, 0, 0x55555555), 0};
    }
    if (colors.size == 2) {
        Quantised const points[] = {std::max(colors.values[0], colors.values[1]),
                                    std::min(colors.values[0], colors.values[1])};
        unsigned int const indices =
            gatherIndices([&](unsigned int i) { return nearest(quantise(pixels[i]), points); });
        return {blockOf(points[0].packed(), points[1].packed(), indices), 0};
    }
    unsigned int ends[3][2];
    narrow(colors, ends);
    Search const best = searchEnds(colors, ends, [](Quantised const &a, Quantised const &b) {
        return std::array<Quantised, 4>{a, b, third(a, b), third(b, a)};
    });
    Quantised const points[] = {best.b, best.a, third(best.b, best.a), third(best.a, best.b)};
    unsigned int const indices =
        gatherIndices([&](unsigned int i) { return nearest(quantise(pixels[i]), points); });
    return {blockOf(points[0].packed(), points[1].packed(), indices), best.error};
}

Block findcolor4x4a(Pixels const &pixels)
{
    constexpr unsigned int transparent = 3;
    Colors colors;
    unsigned int numOpaque = 0;
    for (unsigned int const pixel : pixels) {
        if (isOpaque(pixel)) {
            colors.add(quantise(pixel));
            ++numOpaque;
        }
    }
    if (numOpaque == blockPixels) {
        return findcolor4x4(pixels);
    }
    unsigned int const alphaError = numOpaque * opaqueError;
    auto const block = [&](unsigned short color0, unsigned short color1, unsigned int error, auto indexOf) {
        unsigned int const indices = gatherIndices(
            [&](unsigned int i) { return isOpaque(pixels[i]) ? indexOf(quantise(pixels[i])) : transparent; });
        return Block{blockOf(color0, color1, indices), error + alphaError};
    };
    if (colors.size < 2) {
        unsigned short const packed = colors.size == 0 ? 0 : colors.values[0].packed();
        unsigned int const index = packed != 0 ? 1 : 0;
        return block(0, packed != 0 ? packed : 0xFFFF, 0, [&](Quantised const &) { return index; });
    }
    if (colors.size == 2) {
        Quantised const points[] = {std::min(colors.values[0], colors.values[1]),
                                    std::max(colors.values[0], colors.values[1])};
        return block(points[0].packed(), points[1].packed(), 0,
                     [&](Quantised const &color) { return nearest(color, points); });
    }
    unsigned int ends[3][2];
    narrow(colors, ends);
    Search const best = searchEnds(colors, ends, [](Quantised const &a, Quantised const &b) {
        return std::array<Quantised, 3>{a, b, middle(a, b)};
    });
    Quantised const points[] = {best.a, best.b, middle(best.a, best.b)};
    return block(points[0].packed(), points[1].packed(), best.error,
                 [&](Quantised const &color) { return nearest(color, points); });
}

} // namespace Qel::s3tcPlain
