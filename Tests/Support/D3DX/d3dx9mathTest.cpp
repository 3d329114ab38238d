#include "Support/D3DX/d3dx9math.h"

#include "Support/OS/processorLevel.h"
#include "Tests/math/near.h"
#include "Tests/math/referenceTable.inc"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfloat>
#include <cstring>
#include <limits>
#include <random>
#include <tuple>
#include <vector>

namespace {

D3DXMATRIX randomMatrix(std::mt19937 &random)
{
    std::uniform_real_distribution<float> value(-4, 4);
    D3DXMATRIX m;
    for (unsigned i = 0; i < 16; ++i) {
        m[i] = value(random);
    }
    return m;
}

TEST(D3dxTypes, ComeFromArraysHalvesAndBaseRecords)
{
    float const f[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    D3DXFLOAT16 const half[4] = {1, -2, 0.5f, 3.140625f};

    EXPECT_TRUE(D3DXVECTOR2(f) == D3DXVECTOR2(1, 2));
    EXPECT_TRUE(D3DXVECTOR3(f + 1) == D3DXVECTOR3(2, 3, 4));
    EXPECT_TRUE(D3DXVECTOR4(half) == D3DXVECTOR4(1, -2, 0.5f, 3.140625f));
    EXPECT_TRUE(D3DXPLANE(half) == D3DXPLANE(1, -2, 0.5f, 3.140625f));
    EXPECT_TRUE(D3DXVECTOR4(_D3DVECTOR{1, 2, 3}, 4) == D3DXVECTOR4(f));

    D3DXMATRIX const m(f);
    EXPECT_EQ(m(1, 2), 7.0f);
    EXPECT_EQ(m.m[1][2], m._23);
    EXPECT_EQ(static_cast<float const *>(m)[13], m._42);
    EXPECT_TRUE(D3DXMATRIX(static_cast<_D3DMATRIX const &>(m)) == m);
}

// 1 / 41 is rounded, and so 41 times it is not 1: dividing each element would give exactly 1.
TEST(D3dxTypes, DivideByTheReciprocal)
{
    float const expected = 41.0f * (1.0f / 41.0f);
    ASSERT_NE(expected, 1.0f);
    EXPECT_EQ((D3DXVECTOR2(41, 0) / 41).x, expected);
    EXPECT_EQ((D3DXVECTOR3(41, 0, 0) / 41).x, expected);
    EXPECT_EQ((D3DXVECTOR4(41, 0, 0, 0) / 41).x, expected);
    EXPECT_EQ((D3DXPLANE(41, 0, 0, 0) / 41).a, expected);
    D3DXMATRIX m(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 41);
    m /= 41;
    EXPECT_EQ(m._44, expected);
}

TEST(D3dxTypes, AreUnequalAsSoonAsOneElementIs)
{
    float const nan = std::numeric_limits<float>::quiet_NaN();
    for (unsigned i = 0; i < 16; ++i) {
        SCOPED_TRACE(i);
        float f[16] = {};
        D3DXMATRIX const zero(f);
        f[i] = i % 2 != 0 ? 1.0f : nan;
        D3DXMATRIX const other(f);
        EXPECT_EQ(zero == other, 0);
        EXPECT_EQ(zero != other, 1);
        EXPECT_EQ(D3DXVECTOR4(zero) == D3DXVECTOR4(f), i < 4 ? 0 : 1);
        EXPECT_EQ(D3DXVECTOR3(zero) != D3DXVECTOR3(f), i < 3 ? 1 : 0);
        EXPECT_EQ(D3DXPLANE(zero) != D3DXPLANE(f), i < 4 ? 1 : 0);
    }
    EXPECT_EQ(D3DXVECTOR3(0, 0, 0) == D3DXVECTOR3(-0.0f, 0, 0), 1);
}

TEST(D3dxFloat16, WidensToTheSameValueAndRoundsBackToTheNearest)
{
    for (auto const &row : reference::halfRows) {
        SCOPED_TRACE(row.bits);
        auto const half = std::bit_cast<D3DXFLOAT16>(row.bits);
        float wide;
        EXPECT_EQ(D3DXFLOAT16(row.value).value, row.bits);
        EXPECT_EQ(half, row.value);
        EXPECT_EQ(D3DXFloat16To32Array(&wide, &half, 1), &wide);
        EXPECT_EQ(wide, row.value);
        EXPECT_EQ(std::signbit(wide), std::signbit(row.value));
    }
    // Over their own place, as a converter of a whole buffer does it.
    alignas(float) D3DXFLOAT16 both[6] = {1, -2, 3.140625f};
    auto *const widened = reinterpret_cast<float *>(both);
    D3DXFloat16To32Array(widened, both, 3);
    float values[3];
    std::memcpy(values, both, sizeof values);
    EXPECT_EQ(std::to_array(values), (std::array{1.0f, -2.0f, 3.140625f}));
    D3DXFLOAT16 const nan(std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(std::isnan(*D3DXFloat16To32Array(values, &nan, 1)));

    // Between two halves; the last step before infinity; denormals.
    std::tuple<float, std::uint16_t> const rows[] = {
        {1 + 0x1p-11f, 0x3C00},       {1 + 0x3p-11f, 0x3C02}, {-(1 + 0x1.8p-11f), 0xBC01},
        {65519.996f, 0x7BFF},         {65520, 0x7C00},        {-FLT_MAX, 0xFC00},
        {0x1p-14f - 0x1p-25f, 0x400}, {0x1p-25f, 0},          {0x3p-25f, 2},
        {-0x1.000002p-25f, 0x8001},   {-1e-40f, 0x8000}};
    for (auto const &[value, bits] : rows) {
        EXPECT_EQ(D3DXFLOAT16(value).value, bits) << value;
    }
}

TEST(D3dxVectors, NormaliseOverTheWholeRangeAndKeepZero)
{
    for (float const scale : {1.0f, 1e-44f, 1e-30f, 1e30f, FLT_MAX / 5}) {
        SCOPED_TRACE(scale);
        D3DXVECTOR3 v(3 * scale, 0, -4 * scale);
        float const length = scale == 1e-44f ? 0.05f : 1e-6f; // denormals hold few digits
        EXPECT_EQ(D3DXVec3Normalize(&v, &v), &v);
        expectNear(v, D3DXVECTOR3(0.6f, 0, -0.8f), length);
    }
    D3DXVECTOR3 zero(0, 0, 0);
    D3DXPLANE plane(0, 0, 0, 5);
    EXPECT_TRUE(*D3DXVec3Normalize(&zero, &zero) == D3DXVECTOR3(0, 0, 0));
    EXPECT_TRUE(*D3DXPlaneNormalize(&plane, &plane) == D3DXPLANE(0, 0, 0, 0));
}

TEST(D3dxVectors, RunThroughArraysWithAnyStride)
{
    std::mt19937 random(3);
    D3DXMATRIX const m = randomMatrix(random);
    std::tuple<unsigned, unsigned, bool> const rows[] = {{12, 16, false}, {20, 36, false}, {12, 16, true},
                                                         {16, 16, true},  {40, 16, true},  {16, 40, true}};
    for (auto const &[inStride, outStride, inPlace] : rows) {
        SCOPED_TRACE(testing::Message() << inStride << " to " << outStride << (inPlace ? " in place" : ""));
        constexpr unsigned n = 9;
        std::vector<float> in(n * 10 + 4), out(n * 10 + 4);
        std::vector<D3DXVECTOR4> expected;
        for (unsigned i = 0; i < n; ++i) {
            D3DXVECTOR3 const p(static_cast<float>(i), 1.5f - static_cast<float>(i * i), 0.25f);
            std::memcpy(&in[i * inStride / 4], &p, sizeof p);
            D3DXVECTOR4 const wide(p, 1);
            D3DXVECTOR4 &result = expected.emplace_back();
            D3DXVec4Transform(&result, &wide, &m);
        }
        float *const to = inPlace ? in.data() : out.data();
        D3DXVec3TransformArray(reinterpret_cast<D3DXVECTOR4 *>(to), outStride,
                               reinterpret_cast<D3DXVECTOR3 *>(in.data()), inStride, &m, n);
        for (unsigned i = 0; i < n; ++i) {
            EXPECT_TRUE(D3DXVECTOR4(to + i * outStride / 4) == expected[i]) << i;
        }
    }
}

TEST(D3dxVectors, TransformAsRowsAndDivideByW)
{
    D3DXMATRIX const m(1, 0, 0, 0, 0, 2, 0, 0, 0, 0, 3, 1, 10, 20, 30, 0); // w' is z
    D3DXVECTOR3 p(1, 1, 2);
    EXPECT_TRUE(*D3DXVec3TransformCoord(&p, &p, &m) == D3DXVECTOR3(5.5f, 11, 18));
    D3DXVECTOR4 v(1, 1, 2, 3);
    EXPECT_TRUE(*D3DXVec4Transform(&v, &v, &m) == D3DXVECTOR4(31, 62, 96, 2));
}

TEST(D3dxMatrices, RotateByTheRightHandAboutAnyAxis)
{
    for (auto const &row : reference::rotationRows) {
        D3DXVECTOR3 const axis(row);
        D3DXMATRIX m;
        D3DXMatrixRotationAxis(&m, &axis, row[3]);
        for (unsigned i = 0; i < 9; ++i) {
            EXPECT_NEAR(m(i / 3, i % 3), row[4 + i], 1e-5f) << i;
        }
    }
    // A quarter turn takes the next axis to the one after it.
    float const quarter = 1.5707963f;
    D3DXMATRIX m;
    expectNear(D3DXVECTOR3(D3DXMatrixRotationX(&m, quarter)->m[1]), D3DXVECTOR3(0, 0, 1), 1e-6f);
    expectNear(D3DXVECTOR3(D3DXMatrixRotationY(&m, quarter)->m[2]), D3DXVECTOR3(1, 0, 0), 1e-6f);
    expectNear(D3DXVECTOR3(D3DXMatrixRotationZ(&m, quarter)->m[0]), D3DXVECTOR3(0, 1, 0), 1e-6f);
}

TEST(D3dxMatrices, LookAlongNegativeZ)
{
    for (auto const &row : reference::lookAtRows) {
        D3DXVECTOR3 const eye(row), at(row + 3), up(row + 6);
        D3DXMATRIX view;
        expectNear(*D3DXMatrixLookAtRH(&view, &eye, &at, &up), row + 9, 16, 2e-5f);
    }
}

TEST(D3dxMatrices, InvertInPlaceAndTellTheDeterminant)
{
    for (auto const &row : reference::inverseRows) {
        D3DXMATRIX m(row);
        float determinant;
        ASSERT_EQ(D3DXMatrixInverse(&m, &determinant, &m), &m);
        EXPECT_FLOAT_EQ(determinant, row[16]);
        for (unsigned i = 0; i < 16; ++i) {
            EXPECT_FLOAT_EQ(m[i], row[17 + i]) << i;
        }
    }
    D3DXMATRIX const singular(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16);
    D3DXMATRIX untouched = singular;
    float determinant = 7;
    EXPECT_EQ(D3DXMatrixInverse(&untouched, &determinant, &singular), nullptr);
    EXPECT_EQ(determinant, 0.0f);
    EXPECT_TRUE(untouched == singular);
}

TEST(D3dxMatrices, TakeTheirOwnArgumentsAsResult)
{
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        D3DXMATRIX const a = randomMatrix(random), b = randomMatrix(random);
        D3DXMATRIX product, left = a, right = b, square = a, expectedSquare;
        D3DXMatrixMultiply(&product, &a, &b);
        EXPECT_TRUE(*D3DXMatrixMultiply(&left, &left, &b) == product);
        EXPECT_TRUE(*D3DXMatrixMultiply(&right, &a, &right) == product);
        D3DXMatrixMultiply(&expectedSquare, &a, &a);
        EXPECT_TRUE((square *= square) == expectedSquare);
        for (unsigned r = 0; r < 4; ++r) {
            for (unsigned c = 0; c < 4; ++c) {
                double sum = 0;
                for (unsigned k = 0; k < 4; ++k) {
                    sum += static_cast<double>(a(r, k)) * static_cast<double>(b(k, c));
                }
                EXPECT_NEAR(product(r, c), sum, 1e-4);
            }
        }
        D3DXMATRIX turned = a;
        D3DXMatrixTranspose(&turned, &turned);
        EXPECT_EQ(turned(0, 3), a(3, 0));
        EXPECT_TRUE(*D3DXMatrixTranspose(&turned, &turned) == a);
    }
}

TEST(D3dxPlanes, GoThroughPointsAndMeetLines)
{
    for (auto const &row : reference::planeRows) {
        D3DXVECTOR3 const a(row), b(row + 3), c(row + 6);
        D3DXPLANE plane;
        expectNear(*D3DXPlaneFromPoints(&plane, &a, &b, &c), row + 9, 4, 2e-5f);
    }
    for (auto const &row : reference::lineRows) {
        D3DXPLANE const plane(row);
        D3DXVECTOR3 a(row + 4);
        D3DXVECTOR3 const b(row + 7);
        ASSERT_EQ(D3DXPlaneIntersectLine(&a, &plane, &a, &b), &a);
        float const size = std::fabs(row[10]) + std::fabs(row[11]) + std::fabs(row[12]);
        expectNear(a, D3DXVECTOR3(row + 10), 1e-5f * (1 + size));
    }
    D3DXPLANE const floor(0, 1, 0, -2);
    D3DXVECTOR3 const a(0, 5, 0), b(1, 5, 0);
    D3DXVECTOR3 untouched(7, 7, 7);
    EXPECT_EQ(D3DXPlaneIntersectLine(&untouched, &floor, &a, &b), nullptr);
    EXPECT_TRUE(untouched == D3DXVECTOR3(7, 7, 7));
}

// A point keeps its value at a plane when both go through the matrix.
TEST(D3dxPlanes, FollowPointsThroughTheInverseTranspose)
{
    std::mt19937 random(9);
    for (int round = 0; round < 50; ++round) {
        D3DXMATRIX m = randomMatrix(random);
        m._14 = m._24 = m._34 = 0;
        m._44 = 1;
        D3DXMATRIX carry;
        if (float det; D3DXMatrixInverse(&carry, &det, &m) == nullptr || std::fabs(det) < 1) {
            continue;
        }
        D3DXMatrixTranspose(&carry, &carry);
        D3DXVECTOR3 const point(1, -2, 0.5f);
        D3DXPLANE const plane(0.6f, 0, -0.8f, 3);
        D3DXVECTOR3 moved;
        D3DXPLANE movedPlane;
        D3DXVec3TransformCoord(&moved, &point, &m);
        D3DXPlaneTransform(&movedPlane, &plane, &carry);
        EXPECT_NEAR(D3DXPlaneDotCoord(&movedPlane, &moved), D3DXPlaneDotCoord(&plane, &point), 2e-3f);
    }
}

TEST(D3dxLevels, AllGiveTheSameBits)
{
    std::mt19937 random(13);
    os::eProcessorLevel const before = os::processorLevel();
    constexpr unsigned n = 23;
    std::vector<D3DXMATRIX> matrices;
    for (unsigned i = 0; i < n; ++i) {
        matrices.push_back(randomMatrix(random));
    }
    matrices[3] *= 1e38f;
    matrices[4] *= 1e-40f;
    std::vector<D3DXMATRIX> expected(n);
    std::vector<float> points(n * 7), expectedPoints(n * 9);
    for (float &f : points) {
        f = matrices[1][static_cast<unsigned>(&f - points.data()) % 16] * 3;
    }
    for (std::uint32_t level = 0; level <= os::processorLevelMax(); ++level) {
        SCOPED_TRACE(level);
        ASSERT_TRUE(os::setProcessorLevel(static_cast<os::eProcessorLevel>(level)));
        std::vector<D3DXMATRIX> products(n);
        for (unsigned i = 0; i < n; ++i) {
            D3DXMatrixMultiply(&products[i], &matrices[i], &matrices[n - 1 - i]);
        }
        std::vector<float> results(n * 9);
        for (unsigned const outStride : {16u, 36u}) {
            D3DXVec3TransformArray(reinterpret_cast<D3DXVECTOR4 *>(results.data()), outStride,
                                   reinterpret_cast<D3DXVECTOR3 const *>(points.data()),
                                   outStride == 16 ? 12 : 28, matrices.data(), n);
        }
        if (level == os::PROCESSOR_PLAIN) {
            expected = products;
            expectedPoints = results;
        }
        EXPECT_EQ(std::memcmp(products.data(), expected.data(), n * sizeof(D3DXMATRIX)), 0);
        EXPECT_EQ(std::memcmp(results.data(), expectedPoints.data(), n * 9 * sizeof(float)), 0);
    }
    os::setProcessorLevel(before);
}

TEST(ProcessorLevel, ChangesTheKernelsInUseAndRefusesWhatIsNotThere)
{
    EXPECT_EQ(os::processorLevel(), os::processorLevelMax()) << "the widest after loading";
    auto *const widest = d3dxMatrixMultiplyForm;
    ASSERT_TRUE(os::setProcessorLevel(os::PROCESSOR_PLAIN));
    EXPECT_EQ(os::processorLevel(), os::PROCESSOR_PLAIN);
    EXPECT_EQ(d3dxMatrixMultiplyForm == widest, os::processorLevelMax() < os::PROCESSOR_AVX2);
    EXPECT_FALSE(os::setProcessorLevel(static_cast<os::eProcessorLevel>(os::processorLevelMax() + 1)));
    EXPECT_EQ(os::processorLevel(), os::PROCESSOR_PLAIN);
    ASSERT_TRUE(os::setProcessorLevel(os::processorLevelMax()));
    EXPECT_EQ(d3dxMatrixMultiplyForm, widest);
}

} // namespace
