#include "System/math/3D/boundingBox.h"
#include "System/math/3D/boundingCylinder.h"
#include "System/math/3D/boxRay.h"
#include "System/math/3D/obb.h"
#include "System/math/3D/rectRay.h"
#include "System/math/3D/rectRayHitTest.h"
#include "System/math/math.h"

#include "Tests/math/near.h"
#include "Tests/math/referenceTable.inc"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace Qel {
namespace {

template <class Shape>
void expectRay(cRay const &ray, Shape const &shape, bool isHit, float t, float tolerance = 0)
{
    sIntersection hit;
    hit.t = -77; // no result leaves it
    EXPECT_EQ(cMath::intersects(ray, shape, &hit), isHit);
    EXPECT_NEAR(hit.t, t, tolerance);
}

TEST(Intersect, ARayMeetsAPlaneAheadOfItOnly)
{
    D3DXPLANE const plane(0, 0, 1, 0);
    struct {
        float z;
        D3DXVECTOR3 direction;
        bool hit;
        float t;
    } const rows[] = {{-5, {0, 0, 1}, true, 5}, {-5, {0, 0, -1}, false, -5}, {-5, {1, 0, 0}, false, 0},
                      {0, {0, 0, 1}, true, 0},  {-5, {3, 0, 2}, true, 2.5f}, {-5, {0, 0, 1e-7f}, false, 0}};
    for (auto const &row : rows) {
        expectRay(cRay({0, 0, row.z}, row.direction), plane, row.hit, row.t);
    }
}

TEST(Intersect, RaysAgreeWithTheReference)
{
    for (auto const &row : reference::rayBoxRows) {
        SCOPED_TRACE(testing::Message() << "box row " << (&row - reference::rayBoxRows));
        cBoundingBoxAA const box(D3DXVECTOR3(row + 6), D3DXVECTOR3(row + 9));
        expectRay(cRay(row, row + 3), box, row[12] != 0, row[13], std::fabs(row[13]) * 2e-7f);
    }
    auto *const before = cMath::sqrt;
    cMath::sqrt = cMath::sqrt_sse;
    for (auto const &row : reference::raySphereRows) {
        SCOPED_TRACE(testing::Message() << "sphere row " << (&row - reference::raySphereRows));
        expectRay(cRay(row, row + 3), cBoundingSphere(row + 6, row[9]), row[10] != 0, row[11], 1e-4f);
    }
    cBoundingSphere const unit({0, 0, 0}, 1);
    expectRay(cRay({-5, 1, 0}, {1, 0, 0}), unit, true, 5); // a tangent
    expectRay(cRay({1, 0, 0}, {1, 0, 0}), unit, true, 0);  // from the surface, away
    cMath::sqrt = before;
    for (auto const &row : reference::rayTriangleRows) {
        SCOPED_TRACE(testing::Message() << "triangle row " << (&row - reference::rayTriangleRows));
        cRay const ray(row, row + 3);
        D3DXVECTOR3 const a(row + 6), b(row + 9), c(row + 12);
        sTriangleIntersection hit;
        hit.t = hit.u = hit.v = 0;
        hit.backFacing = 1;
        EXPECT_EQ(cMath::intersects(ray, a, b, c, &hit), row[15] != 0);
        EXPECT_NEAR(hit.t, row[16], 1e-4f);
        EXPECT_NEAR(hit.u, row[17], 1e-4f);
        EXPECT_NEAR(hit.v, row[18], 1e-4f);
        EXPECT_EQ(hit.backFacing, row[15] != 0 ? 0 : 1);
    }
}

TEST(Intersect, ARayEntersABoxFromOutsideOnly)
{
    cBoundingBoxAA const box({-1, -1, -1}, {1, 1, 1});
    struct {
        char const *what;
        cRay ray;
        bool hit;
        float t;
    } const rows[] = {
        {"inside", {{0, 0, 0}, {1, 2, 3}}, true, 0},
        {"on a face, inward", {{-1, 0, 0}, {1, 0, 0}}, false, 0},
        {"along a face", {{-3, 1, 0}, {1, 0, 0}}, true, 2},
        {"on an edge line", {{-3, 1, 1}, {2, 0, 0}}, true, 1},
        {"past the edge", {{-3, 1.0001f, 0}, {1, 0, 0}}, false, 0},
        {"away", {{-3, 0, 0}, {-1, 0, 0}}, false, 0},
        {"a corner, three faces at once", {{-2, -2, -2}, {1, 1, 1}}, true, 1},
        {"no direction", {{-3, 0, 0}, {0, 0, 0}}, false, 0},
        {"parallel, beside", {{-3, 2, 0}, {1, 0, 0}}, false, 0},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        expectRay(row.ray, box, row.hit, row.t);
    }
}

TEST(Intersect, ATriangleIsHitFromItsFrontWithItsEdges)
{
    D3DXVECTOR3 const a(0, 0, 0), b(0, 1, 0), c(1, 0, 0); // the front shows toward -z
    EXPECT_TRUE(cMath::intersects(cRay({0, 0, -5}, {0, 0, 1}), a, b, c)) << "vertex";
    EXPECT_TRUE(cMath::intersects(cRay({0.5f, 0.5f, -5}, {0, 0, 1}), a, b, c)) << "edge";
    EXPECT_FALSE(cMath::intersects(cRay({0.2f, 0.2f, 5}, {0, 0, -1}), a, b, c)) << "back";
    EXPECT_FALSE(cMath::intersects(cRay({0.2f, 0.2f, -5}, {1, 0, 0}), a, b, c)) << "parallel";
    sTriangleIntersection hit;
    EXPECT_TRUE(cMath::intersects(cRay({0.25f, 0.5f, 5}, {0, 0, 1}), a, b, c, &hit)) << "behind the origin";
    EXPECT_EQ(hit.t, -5.0f);
    EXPECT_EQ(hit.u, 0.5f);
    EXPECT_EQ(hit.v, 0.25f);
    EXPECT_FALSE(cMath::intersects(cRay({0, 0, -5}, {0, 0, 1}), a, a, a)) << "degenerate";
}

TEST(Intersect, SpheresAgainstTheRest)
{
    for (auto const &row : reference::sphereTriangleRows) {
        SCOPED_TRACE(testing::Message() << "row " << (&row - reference::sphereTriangleRows));
        D3DXVECTOR3 const triangle[3] = {row + 4, row + 7, row + 10};
        EXPECT_EQ(cMath::intersects(cBoundingSphere(row, row[3]), triangle), row[13] != 0);
    }
    // Beside the edge, as far off the plane as it reaches: the tolerance decides.
    D3DXVECTOR3 const corner[3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    EXPECT_TRUE(cMath::intersects(cBoundingSphere({2, -0.00005f, 1}, 1), corner));
    EXPECT_FALSE(cMath::intersects(cBoundingSphere({2, -0.0005f, 1}, 1), corner));
    cBoundingSphere const sphere({0, 0, 0}, 1);
    cBoundingBox const box({-1, -1, -1}, {1, 1, 1});
    cBoundingBoxAA const boxAA({-1, -1, -1}, {1, 1, 1});
    EXPECT_TRUE(cMath::intersects(sphere, D3DXPLANE(0, 1, 0, -1)));
    EXPECT_FALSE(cMath::intersects(sphere, D3DXPLANE(0, 1, 0, -1.01f)));
    EXPECT_TRUE(cMath::intersects(sphere, cBoundingSphere({3, 0, 0}, 2)));
    EXPECT_FALSE(cMath::intersects(sphere, cBoundingSphere({3.01f, 0, 0}, 2)));
    EXPECT_TRUE(cMath::intersects(sphere, D3DXVECTOR3(0, 0, -1)));
    struct {
        D3DXVECTOR3 center;
        float radius;
        bool box, boxAA;
    } const rows[] = {
        {{2, 0, 0}, 1, false, true}, // touching a face
        {{2, 0, 0}, 1.01f, true, true},
        {{2, 2, 2}, 1.5f, true, false}, // near a corner: within each plane's reach, but not the box's
        {{4, 5, 1}, 5, true, true},     // 3 and 4 away: touching
        {{4, 5.01f, 1}, 5, true, false},
        {{0, 0, 0}, 0, true, true},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.center.x << ' ' << row.center.y << ' ' << row.radius);
        cBoundingSphere const s(row.center, row.radius);
        EXPECT_EQ(cMath::intersects(s, box), row.box);
        EXPECT_EQ(cMath::intersects(box, s), row.box);
        EXPECT_EQ(cMath::intersects(s, boxAA), row.boxAA);
    }
    cOBB oriented;
    cMath::convert(oriented, box);
    EXPECT_TRUE(cMath::intersects(cBoundingSphere({2.99f, 0, 0}, 1), oriented))
        << "less than one away counts";
    EXPECT_FALSE(cMath::intersects(cBoundingSphere({3, 0, 0}, 1), oriented));
    EXPECT_FALSE(cMath::intersects(cBoundingSphere({0, -3, 0}, 1), oriented));
    EXPECT_TRUE(cMath::intersects(cBoundingSphere({0, 0, 0}, 3e9f), oriented));

    cBoundingCylinder const cylinder({1, 1, 0}, 2, 1);
    EXPECT_TRUE(cMath::intersects(cylinder, cBoundingCylinder({1, 1, 2}, 9, 1)));
    EXPECT_FALSE(cMath::intersects(cylinder, cBoundingCylinder({1, 1, 2.01f}, 9, 1)));
    EXPECT_TRUE(cMath::intersects(cylinder, D3DXVECTOR3(1, 1.9f, 0)));
    EXPECT_FALSE(cMath::intersects(cylinder, D3DXVECTOR3(1, 2, 1))) << "on the side";
    EXPECT_FALSE(cMath::intersects(cylinder, D3DXVECTOR3(1, 1, 2))) << "at the top";
    EXPECT_FALSE(cMath::intersects(cylinder, D3DXVECTOR3(1, 1, -0.01f))) << "below";
}

TEST(Intersect, BoxesAgainstBoxesAndPlanes)
{
    cBoundingBoxAA const unit({0, 0, 0}, {1, 1, 1});
    struct {
        cBoundingBoxAA other;
        bool overlap;
    } const rows[] = {
        {{{1, 0, 0}, {2, 1, 1}}, false}, // a shared face
        {{{0.99f, 0, 0}, {2, 1, 1}}, true},
        {{{-1, -1, 0.25f}, {2, 2, 0.5f}}, true}, // crossing without a corner inside
        {{{-9, -9, -9}, {9, 9, 9}}, true},
    };
    for (auto const &row : rows) {
        EXPECT_EQ(cMath::intersects(unit, row.other), row.overlap);
        EXPECT_EQ(cMath::intersects(row.other, unit), row.overlap);
    }
    EXPECT_TRUE(cMath::intersects(unit, D3DXVECTOR3(1, 0.5f, 0)));
    EXPECT_TRUE(cMath::intersects(D3DXPLANE(1, 0, 0, -1), unit)) << "touching from the negative side";
    EXPECT_FALSE(cMath::intersects(D3DXPLANE(1, 0, 0, 0), unit)) << "touching from the positive side";
    D3DXVECTOR3 point;
    EXPECT_TRUE(cMath::intersects(D3DXPLANE(0, 1, 0, -2), {0, 0, 0}, {1, 1, 0}, &point));
    EXPECT_TRUE(point == D3DXVECTOR3(2, 2, 0));

    // Corner 6 of the one order is corner 0 of the other.
    cBoundingBox const planes({0, 0, 0}, {1, 1, 1});
    cBoundingBox const shifted({0.5f, 0.5f, 0.5f}, {2, 2, 2});
    cBoundingBoxAA const shiftedAA({0.5f, 0.5f, 0.5f}, {2, 2, 2});
    cBoundingBoxAA const around({-9, -9, -9}, {9, 9, 9});
    auto const expectCorners = [](auto const &a, auto const &b, int corners) {
        sIntersection hit;
        EXPECT_EQ(cMath::intersects(a, b, &hit), corners != 0);
        EXPECT_EQ(hit.corners, corners);
        EXPECT_EQ(hit.t, 0.0f);
    };
    expectCorners(planes, shifted, 1 << 6);
    expectCorners(planes, shiftedAA, 1 << 0);
    expectCorners(unit, shifted, 1 << 6);
    expectCorners(planes, around, 0); // no corner inside
    expectCorners(around, planes, 255);
}

TEST(Intersect, BeamsAgainstPoints)
{
    cBoxRay const beam({0, 0, 0}, {0, 0, -2}, {0, 1, 0}, 1);
    cRectRay const rect({0, 0, 0}, {0, 0, -2}, {0, 1, 0}, {2, 0, 0}, 10);
    cRectRayHitTest const prepared(rect);
    using Points = std::vector<D3DXVECTOR3>;
    struct {
        char const *what;
        Points points;
        bool box, rect, prepared;
    } const rows[] = {
        {"none", {}, false, false, false},
        {"one inside", {{0.5f, 0.5f, -5}}, true, true, true},
        {"on the side", {{1, 0, -5}}, false, true, true},
        {"on the other side", {{-1, 0, -5}}, false, true, true},
        {"above", {{0, 1.5f, -5}}, false, false, false},
        {"level with the origin", {{0.5f, 0, 0}}, false, false, true},
        {"on both sides of it", {{-9, 9, -5}, {9, -9, -5}}, true, true, true},
        {"behind", {{0, 0, 5}}, false, false, true},
        {"beyond the end", {{0, 0, -10}}, true, false, false},
        {"one behind, one beyond", {{0, 0, 5}, {0, 0, -20}}, true, true, true},
        {"beside on x", {{3, 0, -5}, {4, 0, -5}}, false, false, false},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(row.what);
        auto const count = static_cast<unsigned>(row.points.size());
        EXPECT_EQ(cMath::intersects(beam, row.points.data(), count), row.box);
        EXPECT_EQ(cMath::intersects(rect, row.points.data(), count), row.rect);
        EXPECT_EQ(prepared.intersects(row.points.data(), count), row.prepared);
    }
    EXPECT_TRUE(cMath::intersects(beam, D3DXVECTOR3(1, -1, 0)) &&
                cMath::intersects(beam, D3DXVECTOR3(-1, 1, 0)))
        << "the single point may touch";
    EXPECT_FALSE(cMath::intersects(beam, D3DXVECTOR3(0, 0, 0.1f)));
    EXPECT_TRUE(cMath::intersects(rect, cBoundingBox({1, 0, -5}, {9, 1, -4})));
}

// The forms that form no corners against those that do, over boxes of every kind.
TEST(Intersect, BeamsGiveABoxTheAnswerOfItsCorners)
{
    std::mt19937 random(21);
    std::uniform_real_distribution<float> at(-6, 6);
    std::uniform_int_distribution<int> odd(0, 40);
    float const special[] = {HUGE_VALF, -HUGE_VALF, 3e38f, -3e38f, std::nanf("")};
    int hits = 0;
    for (int round = 0; round < 20000; ++round) {
        D3DXVECTOR3 const origin(at(random), at(random), at(random)),
            direction(at(random), at(random), at(random));
        cRectRay const rect(origin, direction, {0, 0.3f, at(random)}, {at(random), 1, 0}, 4);
        cBoxRay const beam(origin, direction, {0, 1, 0.1f}, 0.5f);
        cBoundingBoxAA box({at(random), at(random), at(random)}, {at(random), at(random), at(random)});
        if (int const i = odd(random); i < 8) {
            (i < 4 ? box.min : box.max)[i % 4] = special[round % 5];
        }
        D3DXVECTOR3 corners[8];
        box.extractEdges(corners);
        bool const expected = cMath::intersects(rect, corners, 8);
        hits += expected ? 1 : 0;
        ASSERT_EQ(cMath::intersects(rect, box), expected) << round;
        ASSERT_EQ(cMath::intersects(beam, box), cMath::intersects(beam, corners, 8)) << round;
    }
    EXPECT_GT(hits, 500);
}

TEST(RectRayHitTest, AllFormsAgreeAwayFromTheLimits)
{
    std::mt19937 random(22);
    std::uniform_real_distribution<float> at(-6, 6), angle(0, 3);
    int hits = 0, near = 0;
    for (int round = 0; round < 5000; ++round) {
        cRectRay const ray({at(random), at(random), at(random)}, {at(random), at(random), at(random)},
                           {0, 0.3f, at(random)}, {at(random), 1, 0}, 8);
        cRectRayHitTest const test(ray);
        D3DXVECTOR3 const axis(1, at(random), at(random));
        alignas(16) D3DXMATRIX m;
        D3DXMatrixRotationAxis(&m, &axis, angle(random));
        cOBB box = cOBB::fromMatrix(m);
        box.move(D3DXVECTOR3(at(random), at(random), at(random)));
        cBoundingBoxAA boxAA;
        cMath::convert(boxAA, box);

        // A beam that is a little wider or narrower tells whether this one is at a limit.
        auto const answers = [&](float grow, auto const &volume) {
            cRectRayHitTest other = test;
            D3DXVECTOR4 const by(grow, grow, grow, 0);
            other.posLimit += by;
            other.negLimit -= by;
            return other.intersects(volume);
        };
        if (answers(1e-4f, box) != answers(-1e-4f, box) || answers(1e-4f, boxAA) != answers(-1e-4f, boxAA)) {
            ++near;
            continue;
        }
        D3DXVECTOR3 corners[8], cornersAA[8];
        box.extractEdges(corners);
        boxAA.extractEdges(cornersAA);
        cBoundingBox general({-1, -1, -1}, {1, 1, 1});
        general.transform(reinterpret_cast<D3DXMATRIX const &>(box));
        bool const expected = test.intersects(corners, 8);
        bool const expectedAA = test.intersects(cornersAA, 8);
        hits += expected ? 1 : 0;
        for (bool const answer : {test.intersects(box), test.intersects_sse(box),
                                  test.intersects8_sse(corners), test.intersects(general)}) {
            ASSERT_EQ(answer, expected) << round;
        }
        ASSERT_EQ(test.intersects(boxAA), expectedAA) << round;
        ASSERT_EQ(test.intersects_sse(boxAA), expectedAA) << round;
    }
    EXPECT_GT(hits, 300);
    EXPECT_LT(near, 50);
}

TEST(PointInTriangle, LooksAlongTheNormalAndWidensByTheTolerance)
{
    D3DXVECTOR3 const triangle[3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    struct {
        D3DXVECTOR3 p;
        float tolerance;
        bool in;
    } const rows[] = {
        {{1, 1, 0}, 0, true},           {{1, 1, 9}, 0, true},        {{0, 0, 0}, 0, true},
        {{2, -0.1f, 0}, 0, false},      {{2, -0.1f, 0}, 0.2f, true}, {{2.1f, 2.1f, 0}, 0.2f, true},
        {{2.2f, 2.2f, 0}, 0.2f, false}, {{1, 1, 0}, -1.5f, false},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.p.x << ' ' << row.tolerance);
        EXPECT_EQ(cMath::pointInTriangle(row.p, triangle, row.tolerance), row.in);
        EXPECT_EQ(cMath::pointInTriangle(row.p, triangle, D3DXPLANE(0, 0, 1, 55), row.tolerance), row.in);
    }
    EXPECT_FALSE(cMath::pointInTriangle({1, 1, 0}, triangle, D3DXPLANE(0, 0, -1, 0), 0))
        << "wound the other way";
}

TEST(MinAreaRect, FindsTheSmallRectangle)
{
    D3DXVECTOR2 center(7, 7), axes[2] = {{7, 7}, {7, 7}};
    EXPECT_EQ(cMath::minAreaRect({}, center, axes), 3.4028235e38f);
    EXPECT_EQ(cMath::minAreaRect({{2, 2}, {2, 2}}, center, axes), 3.4028235e38f);
    EXPECT_TRUE(center == D3DXVECTOR2(7, 7) && axes[1] == D3DXVECTOR2(7, 7));

    EXPECT_FLOAT_EQ(cMath::minAreaRect({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, center, axes), 1);
    EXPECT_TRUE(center == D3DXVECTOR2(0.5f, 0.5f));
    // Half sides against the edge from the last kept point to the first, and against its left.
    EXPECT_TRUE(axes[0] == D3DXVECTOR2(0, 0.5f) && axes[1] == D3DXVECTOR2(-0.5f, 0));
    // The origin is compared once it is kept, not before; level points are below.
    EXPECT_NEAR(cMath::minAreaRect({{2, 3}, {0, 1}, {1, 4}, {3, -3}, {0, 0}}, center, axes), 20, 1e-4f);
    EXPECT_NEAR(cMath::minAreaRect({{4, 3}, {3, -2}, {-2, -1}, {0, -1}, {0, -3}}, center, axes), 34, 1e-4f);

    // A turned rectangle of 10 by 5 in the outline's order, with points inside that must not matter.
    std::vector<D3DXVECTOR2> const turned = {{1, 1}, {9, 7}, {6, 11}, {-2, 5}, {4, 6}, {3, 5}};
    EXPECT_NEAR(cMath::minAreaRect(turned, center, axes), 50, 1e-4f);
    EXPECT_NEAR(center.x, 3.5f, 1e-5f);
    EXPECT_NEAR(center.y, 6, 1e-5f);
}

} // namespace
} // namespace Qel
