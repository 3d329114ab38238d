#include "System/math/perlin.h"

#include "Support/PoolHeap/poolHeap.h"
#include "System/math/mersenneTwister.h"
#include "Tests/math/atEveryLevel.h"
#include "Tests/math/mathNumbersReference.inc"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>

namespace Qel {
namespace {

struct FreeField {
    void operator()(unsigned char *field) const { PoolHeap::std_free(field); }
};
using Field = std::unique_ptr<unsigned char, FreeField>;

int cellOf(float floor)
{
    // Beyond 2^31 floats are multiples of 256.
    return std::fabs(floor) < 2147483648.0F ? static_cast<int>(static_cast<std::int64_t>(floor) & 255) : 0;
}

// The formula as it is written down, from the class's own building blocks.
struct Plain : Perlin {
    static float space(float x, float y, float z)
    {
        int const cx = cellOf(std::floor(x));
        int const cy = cellOf(std::floor(y));
        int const cz = cellOf(std::floor(z));
        x -= std::floor(x);
        y -= std::floor(y);
        z -= std::floor(z);
        int const a = p[cx] + cy;
        int const b = p[cx + 1] + cy;
        int const aa = p[a] + cz;
        int const ab = p[a + 1] + cz;
        int const ba = p[b] + cz;
        int const bb = p[b + 1] + cz;
        float const u = curve(x);
        float const v = curve(y);
        return lerp(curve(z),
                    lerp(v, lerp(u, grad(p[aa], x, y, z), grad(p[ba], x - 1, y, z)),
                         lerp(u, grad(p[ab], x, y - 1, z), grad(p[bb], x - 1, y - 1, z))),
                    lerp(v, lerp(u, grad(p[aa + 1], x, y, z - 1), grad(p[ba + 1], x - 1, y, z - 1)),
                         lerp(u, grad(p[ab + 1], x, y - 1, z - 1), grad(p[bb + 1], x - 1, y - 1, z - 1))));
    }

    static float plane(float x, float y)
    {
        int const cx = cellOf(std::floor(x));
        int const cy = cellOf(std::floor(y));
        x -= std::floor(x);
        y -= std::floor(y);
        int const a = p[cx] + cy;
        int const b = p[cx + 1] + cy;
        float const u = curve(x);
        return lerp(curve(y), lerp(u, grad(p[p[a]], x, y), grad(p[p[b]], x - 1, y)),
                    lerp(u, grad(p[p[a + 1]], x, y - 1), grad(p[p[b + 1]], x - 1, y - 1)));
    }

    static int fixedLerp(int t, int a, int b) { return lerp(t, a, b); }
};

std::uint32_t bits(float value)
{
    return std::bit_cast<std::uint32_t>(value);
}

TEST(Perlin, IsItsAuthorsNoise)
{
    atEveryLevel([] {
        EXPECT_NEAR(Perlin::noise(3.14F, 42, 7), 0.13691995878400012, 1e-6) << "a value that is often quoted";
        for (std::size_t i = 0; i < std::size(reference::noiseInSpace); ++i) {
            float const *const spot = reference::noiseSpots + 3 * i;
            EXPECT_NEAR(Perlin::noise(spot[0], spot[1], spot[2]), reference::noiseInSpace[i], 1e-6) << i;
            EXPECT_NEAR(Perlin::noise(spot[0], spot[1]), reference::noiseInPlane[i], 1e-6) << i;
            EXPECT_EQ(Perlin::noise(spot[0] + 256, spot[1], spot[2]),
                      Perlin::noise(spot[0], spot[1], spot[2]));
        }
        EXPECT_EQ(Perlin::noise(-3, 5, 77), 0);
        EXPECT_EQ(Perlin::noise(-3, 500), 0);
    });
    EXPECT_EQ(Plain::fixedLerp(2048, 10, 21), 15);
    EXPECT_EQ(Plain::fixedLerp(2048, 10, -1), 4) << "the shift rounds down";
}

TEST(Perlin, GivesTheBitsOfThePlainFormulaAtEveryLevel)
{
    atEveryLevel([] {
        cMersenneTwister twister(1);
        float const scales[] = {1, 4, 300, 1e6F, 1e9F, 1e12F};
        for (int i = 0; i < 60000; ++i) {
            float const scale = scales[i % 6];
            float const x = (twister.Random01() - 0.5F) * scale;
            float const y = i % 5 == 0 ? std::floor(x) : (twister.Random01() - 0.5F) * scale;
            float const z = i % 7 == 0 ? 0.0F : (twister.Random01() - 0.5F) * scale;
            ASSERT_EQ(bits(Perlin::noise(x, y, z)), bits(Plain::space(x, y, z))) << x << ' ' << y << ' ' << z;
            ASSERT_EQ(bits(Perlin::noise(x, y)), bits(Plain::plane(x, y))) << x << ' ' << y;
        }
        // A fraction that rounds up to one, and signs of zeros.
        for (float const x : {-1e-10F, -0.0F, 0.0F, 1.0F, 8388609.0F, -8388607.5F, 4294967296.0F, -3e9F}) {
            for (float const y : {-1e-10F, -0.0F, 2.5F}) {
                ASSERT_EQ(bits(Perlin::noise(x, y, x)), bits(Plain::space(x, y, x))) << x << ' ' << y;
                ASSERT_EQ(bits(Perlin::noise(x, y)), bits(Plain::plane(x, y))) << x << ' ' << y;
            }
        }
        float const infinity = std::numeric_limits<float>::infinity();
        EXPECT_TRUE(std::isnan(Perlin::noise(infinity, 1.5F, std::nanf(""))));
    });
}

// What a field of four bytes an element must hold, the last size fastest; noise takes a step and a place.
template <class Noise>
void expectField(unsigned char const *at, std::array<unsigned int, 3> size, double inverse,
                 unsigned int scale, Noise const &noise)
{
    for (unsigned int i = 0; i < size[0]; ++i) {
        for (unsigned int j = 0; j < size[1]; ++j) {
            for (unsigned int k = 0; k < size[2]; ++k) {
                for (unsigned int octave = 0; octave < 4; ++octave, ++at) {
                    auto const f = static_cast<float>(inverse * (scale << octave));
                    float const value = noise(static_cast<float>(i) * f, static_cast<float>(j) * f,
                                              static_cast<float>(k) * f);
                    ASSERT_EQ(*at, static_cast<unsigned char>(static_cast<int>((value + 1) * 128)))
                        << i << ' ' << j << ' ' << k << ' ' << octave;
                }
            }
        }
    }
}

TEST(Perlin, FieldsHoldTheNoiseOfEveryPlaceAndOctave)
{
    struct {
        unsigned int rows, columns, scale;
    } const rows[] = {{1, 1, 3},   {16, 16, 1}, {33, 33, 4},    {64, 64, 64},
                      {7, 500, 9}, {100, 3, 5}, {40, 101, 300}, {3, 9000, 50}};
    atEveryLevel([&] {
        for (auto const &row : rows) {
            SCOPED_TRACE(row.columns);
            std::size_t const count = std::size_t{row.rows} * row.columns;
            Field const field(Perlin::createField(row.rows, row.columns, row.scale));
            Field const octaves(Perlin::createFieldWithOctave123(row.rows, row.columns, row.scale));
            expectField(octaves.get(), {row.rows, row.columns, 1}, 1 / std::sqrt(static_cast<double>(count)),
                        row.scale, [](float x, float y, float) { return Plain::plane(x, y); });
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(field.get()[i], octaves.get()[4 * i]) << i;
            }
        }
        Field const space(Perlin::createFieldWithOctave123(5, 11, 150, 3));
        expectField(space.get(), {5, 11, 150}, 1 / std::sqrt(std::sqrt(5.0 * 11) * 150), 3, Plain::space);
    });
}

TEST(Perlin, FieldsOfNoSizeAreEmptyAndThoseOfAnyOtherAreRefused)
{
    Field const noRows(Perlin::createField(0, 100, 8));
    Field const noColumns(Perlin::createFieldWithOctave123(100, 0, 8));
    Field const nothing(Perlin::createFieldWithOctave123(4000000000U, 4000000000U, 0, 8));
    unsigned int const most = 0xFFFFFFFFU;
    Field const flat(Perlin::createFieldWithOctave123(most, 0, 1, 8));
    EXPECT_EQ(Perlin::createFieldWithOctave123(most, most, 8), nullptr);
    EXPECT_EQ(Perlin::createFieldWithOctave123(most, most, most, 8), nullptr);
    EXPECT_EQ(Perlin::createFieldWithOctave123(2147483648U, 2147483648U, 4, 1), nullptr)
        << "wraps to nothing";
}

} // namespace
} // namespace Qel
