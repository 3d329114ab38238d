#include "System/math/rand.h"
#include "System/math/randMsvc.h"
#include "System/math/randPseudo.h"
#include "System/math/randPseudoOld.h"
#include "Tests/math/atEveryLevel.h"
#include "Tests/math/mathNumbersReference.inc"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

namespace Qel {
namespace {

using Image = std::array<std::uint32_t, 627>;

Image imageOf(cMersenneTwister const &twister)
{
    Image image{};
    twister.MemorySave(reinterpret_cast<char *>(image.data()));
    return image;
}

cMersenneTwister fromImage(Image const &image)
{
    cMersenneTwister twister;
    twister.MemoryLoad(reinterpret_cast<char const *>(image.data()));
    return twister;
}

// The published generator differs in its seeding alone: given its state, the draws are its draws.
Image publishedStart()
{
    Image image{};
    std::uint32_t word = 5489;
    for (std::uint32_t i = 0; i < 624; ++i) {
        image[2 + i] = word;
        word = 1812433253U * (word ^ (word >> 30U)) + i + 1;
    }
    return image;
}

TEST(MersenneTwister, DrawsThePublishedSequenceFromThePublishedStateAtEveryLevel)
{
    atEveryLevel([] {
        cMersenneTwister twister = fromImage(publishedStart());
        std::mt19937 published;
        for (int i = 1; i < 10000; ++i) {
            ASSERT_EQ(twister.Random(), published()) << i;
        }
        EXPECT_EQ(twister.Random(), 4123659995U);
    });
}

TEST(MersenneTwister, SeedsWithPowersOf69069AndAnOddSeed)
{
    cMersenneTwister twister(7);
    twister.seed(4357);
    EXPECT_EQ(imageOf(twister), imageOf(cMersenneTwister()));
    EXPECT_EQ(imageOf(cMersenneTwister(0)), imageOf(cMersenneTwister(1))) << "a plain 0 is a seed";
    EXPECT_EQ(imageOf(cMersenneTwister(nullptr)), imageOf(twister));
    std::vector<std::uint32_t> draws(2000);
    twister.fill(draws.data(), draws.size());
    for (std::size_t i = 0; i < std::size(reference::twisterPositions); ++i) {
        EXPECT_EQ(draws[static_cast<std::size_t>(reference::twisterPositions[i])],
                  reference::twisterDefault[i]);
    }
    cMersenneTwister even(123456788);
    for (std::uint32_t const expected : reference::twisterSeeded) {
        EXPECT_EQ(even.Random(), expected);
    }
}

TEST(MersenneTwister, ManyAtOnceAreTheSingleDrawsAtEveryLevel)
{
    atEveryLevel([] {
        cMersenneTwister one(99);
        cMersenneTwister many(99);
        for (std::size_t const count : {0U, 1U, 3U, 620U, 1U, 17U, 2000U, 624U, 5U}) {
            std::vector<std::uint32_t> values(count);
            std::vector<float> floats(count);
            many.fill(values.data(), count);
            many.fill01(floats.data(), count);
            for (std::uint32_t const value : values) {
                ASSERT_EQ(value, one.Random());
            }
            for (float const value : floats) {
                ASSERT_EQ(value, one.Random01());
            }
            ASSERT_EQ(many.Random(), one.Random()) << "single draws go on where the many left off";
        }
        EXPECT_EQ(imageOf(one), imageOf(many));
    });
}

TEST(MersenneTwister, AnImageHoldsWhatIsLeftThePositionAndTheStateAndGoesOn)
{
    cMersenneTwister twister(11);
    EXPECT_EQ(imageOf(twister)[0], 0U);
    EXPECT_EQ(imageOf(twister)[2], 11U);
    EXPECT_EQ(imageOf(cMersenneTwister())[3], 4357U * 69069U);
    for (int const draws : {0, 1, 622, 1, 1, 300}) {
        for (int i = 0; i < draws; ++i) {
            twister.Random();
        }
        Image const image = imageOf(twister);
        EXPECT_EQ(imageOf(fromImage(image)), image);
        unsigned int words[cMersenneTwister::saveWords];
        twister.Save(words);
        cMersenneTwister copies[] = {fromImage(image), cMersenneTwister(words), twister};
        copies[2] = cMersenneTwister(twister);
        for (int i = 0; i < 1000; ++i) {
            std::uint32_t const expected = twister.Random();
            for (cMersenneTwister &copy : copies) {
                ASSERT_EQ(copy.Random(), expected);
            }
        }
    }
    EXPECT_EQ(imageOf(twister)[0] + imageOf(twister)[1], 624U);
    EXPECT_EQ(cMersenneTwister::MemorySaveSize(), 2508);
}

TEST(MersenneTwister, AnImageThatLiesNeverLeadsOutOfTheState)
{
    Image image = publishedStart();
    for (std::uint32_t const left : {0U, 1U, 624U, 625U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFEU}) {
        for (std::uint32_t const position : {0U, 1U, 623U, 624U, 626U, 0x7FFFFFFFU, 0x80000000U}) {
            image[0] = left;
            image[1] = position;
            cMersenneTwister twister = fromImage(image);
            for (int i = 0; i < 700; ++i) {
                twister.Random();
            }
            std::vector<unsigned int> values(700);
            fromImage(image).fill(values.data(), values.size());
        }
    }
    // Less than nothing left means a generator that was never seeded.
    image[0] = static_cast<std::uint32_t>(-5);
    EXPECT_EQ(fromImage(image).Random(), reference::twisterDefault[0]);
}

TEST(MersenneTwister, FloatsStayBelowOneAndIntegersInTheirRange)
{
    cMersenneTwister twister(5);
    cMersenneTwister raw(5);
    for (int i = 0; i < 200000; ++i) {
        double const exact = (raw.Random() & 0x7FFFFFU) * double{std::bit_cast<float>(0x34000001U)};
        float const drawn = twister.Random01();
        ASSERT_LT(drawn, 1.0F);
        ASSERT_NEAR(drawn, exact, 1.0 / (1 << 24));
    }
    struct {
        int a, b;
    } const rows[] = {{0, 0}, {5, 5}, {1, 6}, {-3, 3}, {std::numeric_limits<int>::min(), 1000000000}};
    for (auto const &row : rows) {
        for (int i = 0; i < 1000; ++i) {
            std::int64_t const width = std::int64_t{row.b} - row.a + 1;
            ASSERT_EQ(twister.random(row.a, row.b), raw.Random() % width + row.a);
        }
    }
}

// The highest 23 bits would round up to one.
TEST(MersenneTwister, TheHighestFloatIsBelowOne)
{
    Image image{};
    image[0] = 1;
    image[1] = 623;
    image[2 + 623] = 0x12DD9BB3U; // tempers to all ones
    cMersenneTwister twister = fromImage(image);
    EXPECT_EQ(cMersenneTwister(twister).Random(), 0xFFFFFFFFU);
    float many = 0;
    cMersenneTwister(twister).fill01(&many, 1);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(twister.Random01()), 0x3F7FFFFFU);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(many), 0x3F7FFFFFU);
}

#ifdef NDEBUG
TEST(MersenneTwister, AnEmptyRangeGivesItsLowerBound)
{
    int const lowest = std::numeric_limits<int>::min();
    int const highest = std::numeric_limits<int>::max();
    cMersenneTwister twister(5);
    EXPECT_EQ(twister.random(4, 3), 4);
    EXPECT_EQ(twister.random(4, -30), 4);
    EXPECT_EQ(twister.random(lowest, highest), lowest);
    EXPECT_EQ(RandPseudo(5).rand(-1), 0);
    EXPECT_EQ(RandPseudoOld(5).rand(0), 0);
}
#endif

TEST(Rand, DrawsFromOneSharedGenerator)
{
    cRand::seed(31);
    cMersenneTwister twin(31);
    EXPECT_EQ(cRand::random(), twin.Random());
    EXPECT_EQ(cRand::random(-10, 10), twin.random(-10, 10));
    EXPECT_EQ(cRand::random01(), twin.Random01());
    float const r = twin.Random01();
    EXPECT_EQ(cRand::random(2.0F, -6.0F), 2.0F + -8.0F * r);
    EXPECT_EQ(cRand::randomSign(), (twin.Random() & 1U) != 0);
    EXPECT_EQ(imageOf(cRand::mt), imageOf(twin));
}

TEST(SmallGenerators, GiveTheirSequences)
{
    RandPseudo minimal(1);
    RandPseudo bounded(1);
    RandPseudo real(1);
    for (std::int32_t const expected : reference::parkMiller) {
        EXPECT_EQ(minimal.rand(std::numeric_limits<std::int32_t>::max()), expected);
        EXPECT_EQ(bounded.rand(9), expected % 10);
        EXPECT_NEAR(real.random01(), (expected & 0x7FFF) / 32767.0, 1e-7);
    }
    // The ten-thousandth value that the authors give to check an implementation with.
    RandPseudo published(1);
    for (int i = 0; i < 10000; ++i) {
        published.rand(0);
    }
    EXPECT_EQ(published.getSeed(), 1043618065);
    RandPseudo unseeded;
    EXPECT_EQ(unseeded.rand(100), 0);
    EXPECT_EQ(unseeded.getSeed(), 0);

    RandPseudoOld old(77);
    for (std::int32_t const expected : reference::oldRandom) {
        EXPECT_EQ(RandPseudoOld(old).rand(1000), std::abs(expected % 1000));
        EXPECT_NEAR(old.random01(), std::abs(expected % 32767) / 32767.0, 1e-7);
        EXPECT_EQ(old.getSeed(), expected);
    }

    cRandMsvc small(4242);
    for (int const expected : reference::msvcRandom) {
        EXPECT_EQ(small.rand(), expected);
    }
}

TEST(SmallGenerators, SurviveTheirExtremes)
{
    // 1859 s + 3719 = -2^31, whose remainder by -1 no processor can divide.
    RandPseudoOld old(-2140552557);
    EXPECT_EQ(RandPseudoOld(old).rand(-1), 0);
    EXPECT_EQ(RandPseudoOld(old).rand(std::numeric_limits<std::int32_t>::max()), 1);
    EXPECT_GE(old.random01(), 0.0F);
    RandPseudo minimal(std::numeric_limits<std::int32_t>::min());
    minimal.rand(std::numeric_limits<std::int32_t>::min());
    EXPECT_GE(minimal.getSeed(), 0);
}

} // namespace
} // namespace Qel
