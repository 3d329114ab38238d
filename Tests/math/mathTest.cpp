#include "System/math/math.h"

#include "Tests/math/near.h"
#include "Tests/math/referenceTable.inc"

#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <vector>

namespace Qel {
namespace {

constexpr float pi = std::numbers::pi_v<float>;

void resetPointers()
{
    cMath::sqrt = cMath::sqrt_base;
    cMath::rsqrt = cMath::rsqrt_base;
    cMath::cos = cMath::cos_base;
    cMath::sincos = cMath::sincos_asm;
}

TEST(MathPointers, FollowTheFeatures)
{
    struct {
        bool sse, sse2;
        float (*sqrt)(float);
        float (*rsqrt)(float);
        float (*cos)(float);
        void (*sincos)(float, float *, float *);
    } const rows[] = {
        {false, false, cMath::sqrt_base, cMath::rsqrt_base, cMath::cos_base, cMath::sincos_asm},
        {true, false, cMath::sqrt_sse, cMath::rsqrt_sse, cMath::cos_sse, cMath::sincos_sse},
        {true, true, cMath::sqrt_sse, cMath::rsqrt_sse, cMath::cos_sse2, cMath::sincos_sse2},
        {false, true, cMath::sqrt_base, cMath::rsqrt_base, cMath::cos_sse2, cMath::sincos_sse2},
    };
    matrixIdentity = D3DXMATRIX(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.sse << row.sse2);
        resetPointers();
        cMath::init(row.sse, row.sse2, true, true, true);
        EXPECT_TRUE(cMath::sqrt == row.sqrt && cMath::rsqrt == row.rsqrt && cMath::cos == row.cos &&
                    cMath::sincos == row.sincos);
        D3DXMATRIX identity;
        EXPECT_TRUE(matrixIdentity == *D3DXMatrixIdentity(&identity));
    }
    resetPointers();
}

TEST(MathPointers, TheRootsKeepTheirErrors)
{
    for (float x = 1e-20f; x < 1e20f; x *= 1.0137f) {
        double const exact = 1 / std::sqrt(static_cast<double>(x));
        ASSERT_NEAR(cMath::rsqrt_base(x) / exact, 1, 6e-5) << x;
        ASSERT_NEAR(cMath::rsqrt_q3(x) / exact, 1, 1.8e-3) << x;
        ASSERT_NEAR(cMath::rsqrt_sse(x) / exact, 1, 3.7e-4) << x;
    }
    EXPECT_EQ(cMath::sqrt_sse(2), 1.41421356f);
    EXPECT_NEAR(cMath::sqrt_base(2), 1.41421356f, 9e-5f);
    cMath::rsqrt = [](float) { return 3.0f; };
    EXPECT_EQ(cMath::sqrt_base(2), 6.0f) << "it goes by the pointer";
    resetPointers();
}

TEST(Math, TheFastSineAndCosineStayNearTheTrueOnes)
{
    for (float x = -40; x < 40; x += 0.0137f) {
        double const exactSine = std::sin(static_cast<double>(x));
        double const exactCosine = std::cos(static_cast<double>(x));
        float sine, cosine, sine2, cosine2;
        cMath::sincos_sse(x, &sine, &cosine);
        cMath::sincos_sse2(x, &sine2, &cosine2);
        ASSERT_NEAR(sine, exactSine, 1.7e-4) << x;
        ASSERT_NEAR(cosine, exactCosine, 1.7e-4) << x;
        ASSERT_NEAR(cMath::cos_sse(x), exactCosine, 1.7e-4) << x;
        ASSERT_TRUE(sine == sine2 && cosine == cosine2 && cMath::cos_sse(x) == cMath::cos_sse2(x)) << x;
        cMath::sincos_asm(x, &sine, &cosine);
        cMath::sincos_base(x, &sine2, &cosine2);
        ASSERT_EQ(sine, static_cast<float>(exactSine)) << x;
        ASSERT_EQ(cosine, static_cast<float>(exactCosine)) << x;
        ASSERT_TRUE(sine2 == sine && cosine2 == cosine) << x;
        ASSERT_TRUE(cMath::sin(x) == sine && cMath::cos_base(x) == cosine) << x;
        ASSERT_EQ(cMath::tan(x), static_cast<float>(std::tan(static_cast<double>(x)))) << x;
    }
}

TEST(Math, TheFastFormsAreExactToTheBit)
{
    for (auto const &row : reference::fastSineRows) {
        SCOPED_TRACE(row[0]);
        float sine, cosine;
        cMath::sincos_sse(row[0], &sine, &cosine);
        EXPECT_EQ(sine, row[1]);
        EXPECT_EQ(cosine, row[2]);
        EXPECT_EQ(cMath::cos_sse(row[0]), row[3]);
    }
    for (auto const &row : reference::fastRootRows) {
        SCOPED_TRACE(row[0]);
        EXPECT_EQ(cMath::rsqrt_base(row[0]), row[1]);
        EXPECT_EQ(cMath::rsqrt_q3(row[0]), row[2]);
    }
}

TEST(Math, NoArgumentTakesTheSineOutOfItsRange)
{
    float const inf = std::numeric_limits<float>::infinity();
    for (float const x : {1e9f, -3e9f, 1e15f, -1e19f, 1e30f, inf, -inf, std::nanf("")}) {
        SCOPED_TRACE(x);
        float sine, cosine;
        cMath::sincos_sse(x, &sine, &cosine);
        EXPECT_LE(std::fabs(sine), 1.001f);
        EXPECT_LE(std::fabs(cosine), 1.001f);
        EXPECT_LE(std::fabs(cMath::cos_sse(x)), 1.001f);
        EXPECT_FALSE(std::fabs(cMath::sin(x)) > 1);
        EXPECT_FALSE(std::fabs(cMath::cos_base(x)) > 1);
    }
}

TEST(Math, AnglesComeIntoTheirRange)
{
    float const twoPi = 6.2831855f;
    struct {
        float (*f)(float);
        std::vector<std::pair<float, float>> values; // in, out
    } const rows[] = {
        {cMath::deg2rad, {{180, pi}}},
        {cMath::rad2deg, {{1, 57.29578f}}},
        {cMath::rad2range0_piDiv2, {{pi / 2, pi / 2}, {2, 0.5f}, {-1, 0.25f}, {twoPi + 1, 0.25f}}},
        {cMath::angleNormalize360, {{360, 0}, {-90, 270}}},
        {cMath::angleNormalize180, {{180, 180}, {181, -179}, {-180, 180}}},
        {cMath::radNormalize, {{-0.5f, 5.7831855f}, {-twoPi, 0}, {7, 7 - twoPi}}},
        {cMath::fraction, {{-2.75f, -0.75f}, {3e9f, 0}}},
        {cMath::saturate, {{-1, 0}, {0.25f, 0.25f}}},
    };
    for (auto const &row : rows) {
        for (auto const &[in, out] : row.values) {
            EXPECT_NEAR(row.f(in), out, 2e-6f) << &row - rows << ": " << in;
        }
    }
    EXPECT_TRUE(std::isnan(cMath::saturate(std::nanf(""))));
    EXPECT_TRUE(std::signbit(cMath::fraction(-1.0f)) == std::signbit(-1.0f - -1.0f));

    EXPECT_EQ(cMath::getAngle(0, 1), 90.0f);
    EXPECT_EQ(cMath::getAngle(0, -1), 270.0f);
    EXPECT_EQ(cMath::getAngle(0, 0), 270.0f);
    EXPECT_FLOAT_EQ(cMath::getAngle(1, 1), pi / 4);
    EXPECT_FLOAT_EQ(cMath::getAngle(-1, 1), 3 * pi / 4);
}

TEST(Math, AnArcRunsEitherWayAndThroughZero)
{
    struct {
        float value, a, b;
        bool flag, in;
    } const rows[] = {
        {1, 0.5f, 2, true, true},       {1, 0.5f, 2, false, false},  {3, 0.5f, 2, false, true},
        {0.1f, 0.5f, 2, false, true},   {0.5f, 0.5f, 2, true, true}, {2, 0.5f, 2, false, true},
        {6, 5, 1, true, true},          {3, 5, 1, true, false},      {1, 1, 1, true, true},
        {6.2831855f, 5, 1, true, true}, {3, 1, 1, true, false},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.value << ' ' << row.a << ' ' << row.b << ' ' << row.flag);
        EXPECT_EQ(cMath::radNormalized_IsIn(row.value, row.a, row.b, row.flag), row.in);
    }
}

TEST(Math, WholeNumbersAndPowersOfTwo)
{
    struct {
        unsigned x;
        bool isPower;
        unsigned next, bits;
    } const rows[] = {
        {0, false, 1, 0},           {1, false, 1, 0},
        {7, false, 8, 0},           {8, true, 8, 3},
        {12, false, 16, 2},         {0x80000000u, true, 0x80000000u, 31},
        {0xFFFFFFFEu, false, 1, 1},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.x);
        EXPECT_EQ(cMath::isPowerOfTwo(row.x), row.isPower);
        EXPECT_EQ(cMath::nextPowerOfTwo(row.x), row.next);
        EXPECT_EQ(cMath::bitsPowerOfTwo(row.x), row.bits);
    }
    struct {
        float x;
        int rounded;
    } const roundings[] = {{0.5f, 0},   {1.5f, 2},        {2.5f, 2},        {-0.5f, 0},
                           {-1.5f, -2}, {1e10f, INT_MIN}, {-1e10f, INT_MIN}};
    for (auto const &row : roundings) {
        int rounded = 7;
        cMath::floatToInt(row.x, &rounded);
        EXPECT_EQ(rounded, row.rounded) << row.x;
    }
    EXPECT_TRUE(cMath::isInteger(2.99f, 0.02f));
    EXPECT_FALSE(cMath::isInteger(2.97f, 0.02f));
    EXPECT_EQ(cMath::machine_epsilon(), std::bit_cast<float>(0x34000000u));
    EXPECT_FALSE(std::signbit(cMath::abs(-0.0f)));
}

TEST(Math, BuildsTheRotationFromOneNormalToAnother)
{
    D3DXMATRIX identity;
    D3DXMatrixIdentity(&identity);
    // The last normal's product with itself is above 1.
    D3DXVECTOR3 const normals[] = {
        {1, 0, 0}, {0, 0, -1}, {0.6f, 0, 0.8f}, {0.57735032f, 0.57735032f, 0.57735032f}};
    for (D3DXVECTOR3 const &a : normals) {
        for (D3DXVECTOR3 const &b : normals) {
            D3DXMATRIX const m = cMath::buildRotMatrixFromNormals(&a, &b);
            if (&a == &b) {
                EXPECT_TRUE(m == identity);
            }
            D3DXVECTOR3 turned;
            D3DXVec3TransformCoord(&turned, &a, &m);
            expectNear(turned, b, 2e-3f);
        }
    }
    D3DXVECTOR3 const right(1, 0, 0), left(-1, 0, 0);
    EXPECT_TRUE(cMath::buildRotMatrixFromNormals(&right, &left) == identity);

    D3DXVECTOR3 v(2, 3, 4);
    cMath::perpendicular(&v, &v);
    EXPECT_TRUE(v == D3DXVECTOR3(3, -2, 0));
    D3DXVECTOR3 turned(2, 0, 7);
    cMath::rotate2D(turned, 450);
    expectNear(turned, D3DXVECTOR3(0, 2, 7), 1e-6f);
}

} // namespace
} // namespace Qel
