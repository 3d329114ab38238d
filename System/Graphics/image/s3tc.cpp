#include "System/Graphics/image/s3tc.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace Qel {

namespace {

constexpr unsigned int blockSide = 4;
constexpr unsigned int blockPixels = 16;
constexpr unsigned int worst = std::numeric_limits<unsigned int>::max();

// A colour cut to what a block can hold, channel by channel.
struct Quantised {
    int red;   // 0 .. 31
    int green; // 0 .. 63
    int blue;  // 0 .. 31

    bool operator==(Quantised const &) const = default;
    auto operator<=>(Quantised const &) const = default;

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

unsigned int pixelAt(unsigned int const *pixels, unsigned int pitchPixels, unsigned int i)
{
    return pixels[std::size_t{i / blockSide} * pitchPixels + i % blockSide];
}

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

void storeColors(unsigned short *block, unsigned short color0, unsigned short color1, unsigned int indices)
{
    block[0] = color0;
    block[1] = color1;
    block[2] = static_cast<unsigned short>(indices);
    block[3] = static_cast<unsigned short>(indices >> 16);
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
        if (a > b) {
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

unsigned int gap(unsigned int a, unsigned int b)
{
    return a > b ? a - b : b - a;
}

// The eight values that the indices of an alpha block stand for.
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

void storeAlpha(unsigned short *block, unsigned int a0, unsigned int a1, unsigned long long indices)
{
    std::uint64_t const bytes = std::uint64_t{a0} | std::uint64_t{a1} << 8 | std::uint64_t{indices} << 16;
    std::memcpy(block, &bytes, sizeof bytes);
}

// Runs a coder of one block over an image, and adds up what it returns.
template <class Coder>
unsigned int forEachBlock(void const *src, unsigned int pitch, unsigned int width, unsigned int height,
                          Coder coder)
{
    unsigned int total = 0;
    unsigned int block = 0;
    for (unsigned int y = 0; y < height / blockSide; ++y) {
        for (unsigned int x = 0; x < width / blockSide; ++x) {
            unsigned int pixels[blockPixels];
            for (unsigned int row = 0; row < blockSide; ++row) {
                std::memcpy(pixels + std::size_t{row} * blockSide,
                            static_cast<unsigned char const *>(src) +
                                std::size_t{pitch} * (std::size_t{y} * blockSide + row) + std::size_t{x} * 16,
                            16);
            }
            total += coder(block++, pixels);
        }
    }
    return total;
}

bool isWholeBlocks(unsigned int pitch, unsigned int width, unsigned int height)
{
    return (pitch | width | height) % blockSide == 0 && height >= blockSide;
}

// Four bits of alpha a pixel; the error.
unsigned int mapAlpha(unsigned short *block, unsigned int const *pixels)
{
    unsigned int error = 0;
    for (unsigned int row = 0; row < blockSide; ++row) {
        unsigned int bits = 0;
        for (unsigned int x = blockSide; x-- != 0;) {
            unsigned int const alpha = pixels[row * blockSide + x] >> 24;
            unsigned int const nibble = alpha >> 4;
            bits = bits << 4 | nibble;
            error += gap(alpha, nibble * 255 / 15);
        }
        block[row] = static_cast<unsigned short>(bits);
    }
    return error;
}

unsigned char const *alphaOf(unsigned int const *pixels)
{
    return reinterpret_cast<unsigned char const *>(pixels) + 3;
}

unsigned short *blockAt(void *dest, unsigned int block, unsigned int shorts)
{
    return static_cast<unsigned short *>(dest) + std::size_t{block} * shorts;
}

unsigned int expand(unsigned short color)
{
    unsigned int const red = color >> 11;
    unsigned int const green = color >> 5 & 63;
    unsigned int const blue = color & 31;
    return red * 255 / 31 << 16 | green * 255 / 63 << 8 | blue * 255 / 31;
}

// Each colour channel of two expanded colours through a function.
template <class Mix>
unsigned int mix(unsigned int c0, unsigned int c1, Mix channel)
{
    unsigned int result = 0;
    for (unsigned int shift = 0; shift < 24; shift += 8) {
        result |= channel(c0 >> shift & 255, c1 >> shift & 255) << shift;
    }
    return result;
}

// The four colours of a block, without alpha.
void decodeColors(unsigned short const *block, unsigned int opaque, unsigned int fourth,
                  unsigned int (&colors)[4])
{
    unsigned int const c0 = expand(block[0]);
    unsigned int const c1 = expand(block[1]);
    colors[0] = c0 | opaque;
    colors[1] = c1 | opaque;
    if (c0 > c1) {
        colors[2] = mix(c0, c1, [](unsigned int a, unsigned int b) { return (2 * a + b) / 3; }) | opaque;
        colors[3] = mix(c0, c1, [](unsigned int a, unsigned int b) { return (a + 2 * b) / 3; }) | opaque;
    } else {
        colors[2] = mix(c0, c1, [](unsigned int a, unsigned int b) { return (a + b) >> 1; }) | opaque;
        colors[3] = fourth;
    }
}

// Decodes an image of blocks: the alpha of a pixel, in place, comes from a function of block and pixel.
template <class AlphaOf>
void decode(unsigned int *dest, unsigned short const *src, unsigned int width, unsigned int height,
            unsigned int blockShorts, unsigned int opaque, unsigned int fourth, AlphaOf alphaOfBlock)
{
    for (unsigned int y = 0; y < height / blockSide; ++y) {
        for (unsigned int x = 0; x < width / blockSide; ++x, src += blockShorts) {
            unsigned short const *const colorBlock = src + blockShorts - 4;
            unsigned int colors[4];
            decodeColors(colorBlock, opaque, fourth, colors);
            unsigned int const indices = colorBlock[2] | static_cast<unsigned int>(colorBlock[3]) << 16;
            auto const alpha = alphaOfBlock(src);
            unsigned int *const to = dest + std::size_t{y} * blockSide * width + std::size_t{x} * blockSide;
            for (unsigned int i = 0; i < blockPixels; ++i) {
                to[std::size_t{i / blockSide} * width + i % blockSide] =
                    colors[indices >> 2 * i & 3] | alpha(i);
            }
        }
    }
}

} // namespace

cS3TC::cS3TC() = default;

char const *cS3TC::getS3TC_name(eS3TC format) const
{
    static constexpr char const *names[] = {"S3TC RGB555 (DXT1)", "S3TC RGBA5551 (DXT1 with alpha)",
                                            "S3TC RGBA8888, mapped alpha (DXT2/3)",
                                            "S3TC RGBA8888, interpolated alpha (DXT4/5)"};
    return format < std::size(names) ? names[format] : "cS3TC::getS3TC_name() Unknown S3TC-format";
}

void cS3TC::findbest(unsigned char const *values, unsigned int const *weights, unsigned int count,
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

namespace {

using FindBest = void (*)(unsigned char const *, unsigned int const *, unsigned int, unsigned int *,
                          unsigned int);

// Narrows each channel's extremes to two ends.
void narrow(Colors const &colors, unsigned int (&ends)[3][2], FindBest findbest)
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

unsigned int cS3TC::findcolor4x4(unsigned short *block, unsigned int const *pixels, unsigned int pitchPixels)
{
    auto const colorOf = [&](unsigned int i) { return quantise(pixelAt(pixels, pitchPixels, i)); };
    Colors colors;
    for (unsigned int i = 0; i < blockPixels; ++i) {
        colors.add(colorOf(i));
    }
    if (colors.size == 1) {
        unsigned short const packed = colors.values[0].packed();
        if (packed != 0) {
            storeColors(block, packed, 0, 0);
        } else {
            storeColors(block, 0xFFFF, 0, 0x55555555);
        }
        return 0;
    }
    if (colors.size == 2) {
        Quantised const points[] = {std::max(colors.values[0], colors.values[1]),
                                    std::min(colors.values[0], colors.values[1])};
        storeColors(block, points[0].packed(), points[1].packed(),
                    gatherIndices([&](unsigned int i) { return nearest(colorOf(i), points); }));
        return 0;
    }
    unsigned int ends[3][2];
    narrow(colors, ends, findbest);
    Search const best = searchEnds(colors, ends, [](Quantised const &a, Quantised const &b) {
        return std::array<Quantised, 4>{a, b, third(a, b), third(b, a)};
    });
    Quantised const points[] = {best.b, best.a, third(best.b, best.a), third(best.a, best.b)};
    storeColors(block, points[0].packed(), points[1].packed(),
                gatherIndices([&](unsigned int i) { return nearest(colorOf(i), points); }));
    return best.error;
}

unsigned int cS3TC::findcolor4x4a(unsigned short *block, unsigned int const *pixels, unsigned int pitchPixels)
{
    constexpr unsigned int transparent = 3;
    auto const pixelOf = [&](unsigned int i) { return pixelAt(pixels, pitchPixels, i); };
    Colors colors;
    unsigned int numOpaque = 0;
    for (unsigned int i = 0; i < blockPixels; ++i) {
        if (isOpaque(pixelOf(i))) {
            colors.add(quantise(pixelOf(i)));
            ++numOpaque;
        }
    }
    if (numOpaque == blockPixels) {
        return findcolor4x4(block, pixels, pitchPixels);
    }
    unsigned int const alphaError = numOpaque * opaqueError;
    auto const store = [&](unsigned short color0, unsigned short color1, auto indexOf) {
        storeColors(block, color0, color1, gatherIndices([&](unsigned int i) {
                        return isOpaque(pixelOf(i)) ? indexOf(quantise(pixelOf(i))) : transparent;
                    }));
    };
    if (colors.size < 2) {
        unsigned short const packed = colors.size == 0 ? 0 : colors.values[0].packed();
        if (packed != 0) {
            store(0, packed, [](Quantised const &) { return 1u; });
        } else {
            store(0, 0xFFFF, [](Quantised const &) { return 0u; });
        }
        return alphaError;
    }
    if (colors.size == 2) {
        Quantised const points[] = {std::min(colors.values[0], colors.values[1]),
                                    std::max(colors.values[0], colors.values[1])};
        store(points[0].packed(), points[1].packed(),
              [&](Quantised const &color) { return nearest(color, points); });
        return alphaError;
    }
    unsigned int ends[3][2];
    narrow(colors, ends, findbest);
    Search const best = searchEnds(colors, ends, [](Quantised const &a, Quantised const &b) {
        return std::array<Quantised, 3>{a, b, middle(a, b)};
    });
    Quantised const points[] = {best.a, best.b, middle(best.a, best.b)};
    store(points[0].packed(), points[1].packed(),
          [&](Quantised const &color) { return nearest(color, points); });
    return best.error + alphaError;
}

unsigned int cS3TC::findalpha4x4(unsigned short *block, unsigned char const *alpha, unsigned int rowBytes)
{
    unsigned int values[blockPixels];
    unsigned int size = 0;
    unsigned int low = 255;
    unsigned int high = 0;
    unsigned int lowInside = 255; // smallest value of 2 or more
    unsigned int highInside = 0;  // largest value of 253 or less
    auto const valueOf = [&](unsigned int i) -> unsigned int {
        return alpha[std::size_t{i / blockSide} * rowBytes + std::size_t{i % blockSide} * 4];
    };
    for (unsigned int i = 0; i < blockPixels; ++i) {
        unsigned int const value = valueOf(i);
        if (std::find(values, values + size, value) == values + size) {
            values[size++] = value;
        }
        low = std::min(low, value);
        high = std::max(high, value);
        lowInside = value >= 2 ? std::min(lowInside, value) : lowInside;
        highInside = value <= 253 ? std::max(highInside, value) : highInside;
    }
    auto const gather = [&](auto indexOf) {
        unsigned long long indices = 0;
        for (unsigned int i = blockPixels; i-- != 0;) {
            indices = indices << 3 | indexOf(valueOf(i));
        }
        return indices;
    };
    if (size == 1) {
        storeAlpha(block, values[0], 0, 0);
        return 0;
    }
    if (size == 2) {
        storeAlpha(block, values[0], values[1], gather([&](unsigned int value) -> unsigned long long {
                       return value == values[1] ? 1 : 0;
                   }));
        return 0;
    }

    // Both ends of the range; of it is left where the values crowd too high for any pair below.
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
    storeAlpha(block, a0, a1, gather([&](unsigned int value) -> unsigned long long {
                   unsigned int index = 0;
                   for (unsigned int i = 1; i < points.size(); ++i) {
                       unsigned int const now = gap(value, points[index]);
                       unsigned int const then = gap(value, points[i]);
                       if (then < now || (then == now && points[i] < points[index])) {
                           index = i;
                       }
                   }
                   return index;
               }));
    return best;
}

unsigned int cS3TC::to_S3TC1(void *dest, void const *src, unsigned int pitch, unsigned int width,
                             unsigned int height)
{
    if (dest == nullptr || src == nullptr || !isWholeBlocks(pitch, width, height)) {
        return 0;
    }
    return forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
        return findcolor4x4(blockAt(dest, block, 4), pixels, blockSide);
    });
}

unsigned int cS3TC::to_S3TC1a(void *dest, void const *src, unsigned int pitch, unsigned int width,
                              unsigned int height)
{
    if (dest == nullptr || src == nullptr || !isWholeBlocks(pitch, width, height)) {
        return 0;
    }
    return forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
        return findcolor4x4a(blockAt(dest, block, 4), pixels, blockSide);
    });
}

unsigned int cS3TC::to_S3TC2or3(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                unsigned int height)
{
    if (dest == nullptr || src == nullptr) {
        return 0;
    }
    return forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
        unsigned short *const to = blockAt(dest, block, 8);
        unsigned int const alphaError = mapAlpha(to, pixels);
        return alphaError + findcolor4x4(to + 4, pixels, blockSide);
    });
}

unsigned int cS3TC::to_S3TC4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                unsigned int height)
{
    if (dest == nullptr || src == nullptr) {
        return 0;
    }
    return forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
        unsigned short *const to = blockAt(dest, block, 8);
        unsigned int const alphaError = findalpha4x4(to, alphaOf(pixels), 16);
        return alphaError + findcolor4x4(to + 4, pixels, blockSide);
    });
}

unsigned int cS3TC::to_S3TC2or3vs4or5(void *dest, void const *src, unsigned int pitch, unsigned int width,
                                      unsigned int height, unsigned int *format)
{
    if (dest == nullptr || src == nullptr || format == nullptr) {
        return 0;
    }
    unsigned int mapped = 0;
    unsigned int const colors =
        forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
            unsigned short *const to = blockAt(dest, block, 8);
            mapped += mapAlpha(to, pixels);
            return findcolor4x4(to + 4, pixels, blockSide);
        });
    *format = 2;
    if (mapped == 0) {
        return colors;
    }
    unsigned int const interpolated =
        forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
            return findalpha4x4(blockAt(dest, block, 8), alphaOf(pixels), 16);
        });
    if (interpolated > mapped) {
        forEachBlock(src, pitch, width, height, [&](unsigned int block, unsigned int const *pixels) {
            return mapAlpha(blockAt(dest, block, 8), pixels);
        });
        return mapped + colors;
    }
    *format = 4;
    return interpolated + colors;
}

void cS3TC::from_S3TC1(unsigned int *dest, unsigned short const *src, unsigned int width, unsigned int height)
{
    constexpr unsigned int opaque = 0xFF000000;
    decode(dest, src, width, height, 4, opaque, 0,
           [](unsigned short const *) { return [](unsigned int) { return 0u; }; });
}

void cS3TC::from_S3TC2or3(unsigned int *dest, unsigned short const *src, unsigned int width,
                          unsigned int height)
{
    decode(dest, src, width, height, 8, 0, 0x0000FFFF, [](unsigned short const *block) {
        return [block](unsigned int i) {
            return (block[i / blockSide] >> i % blockSide * 4 & 15) * 255u / 15 << 24;
        };
    });
}

void cS3TC::from_S3TC4or5(unsigned int *dest, unsigned short const *src, unsigned int width,
                          unsigned int height)
{
    decode(dest, src, width, height, 8, 0, 0x0000FFFF, [](unsigned short const *block) {
        std::uint64_t bits;
        std::memcpy(&bits, block, sizeof bits);
        return [points = alphaPoints(bits & 255, bits >> 8 & 255), bits](unsigned int i) {
            return points[bits >> (16 + 3 * i) & 7] << 24;
        };
    });
}

} // namespace Qel
