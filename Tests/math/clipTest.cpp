#include "System/System/exception.h"
#include "System/math/3D/Frustum.h"
#include "System/math/3D/polygonObject.h"
#include "System/math/math.h"

#include "Tests/math/near.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace Qel {
namespace {

Frustum onePlane(D3DXPLANE const &inward)
{
    Frustum frustum;
    frustum.planes = {inward};
    frustum.setActiveCount(1);
    return frustum;
}

// Six times the volume; each face counts by its outward winding, so a body with a hole or a wrong face shows.
float volumeOf(PolygonObject const &body)
{
    float sum = 0;
    for (auto const &polygon : body.polygons) {
        for (std::size_t i = 2; i < polygon.size(); ++i) {
            D3DXVECTOR3 normal;
            D3DXVec3Cross(&normal, &polygon[i - 1], &polygon[i]);
            sum += D3DXVec3Dot(&polygon[0], &normal);
        }
    }
    return sum / 6;
}

TEST(Clip, KeepsOrRemovesAWholeBody)
{
    PolygonObject const cube(cBoundingBoxAA({-1, -1, -1}, {1, 1, 1}));
    PolygonObject body;
    for (float const distance : {1.0f, 5.0f}) { // touching, away
        body = cube;
        cMath::clip(onePlane({0, -1, 0, distance}), body);
        ASSERT_EQ(body.polygons.size(), 7u) << "one empty closing polygon";
        for (std::size_t i = 0; i < 7; ++i) {
            EXPECT_EQ(body.polygons[i].size(), i < 6 ? 4u : 0u);
        }
        EXPECT_FLOAT_EQ(volumeOf(body), 8);
    }
    cMath::clip(onePlane({0, -1, 0, -5}), body);
    EXPECT_TRUE(body.polygons.empty());

    body = cube;
    body.polygons = {{{0, 0, 0}, {1, 0, 0}}};
    cMath::clip(onePlane({0, -1, 0, 5}), body);
    EXPECT_TRUE(body.polygons.empty()) << "two points are no face";
}

TEST(Clip, LeavesWhatTwoBoxesShare)
{
    std::mt19937 random(31);
    std::uniform_real_distribution<float> at(-4, 4);
    int cut = 0;
    for (int round = 0; round < 300; ++round) {
        cBoundingBoxAA const a({at(random), at(random), at(random)}, {at(random), at(random), at(random)});
        cBoundingBoxAA const b({at(random), at(random), at(random)}, {at(random), at(random), at(random)});
        PolygonObject body(a);
        cMath::clip(b, body);
        float expected = 1;
        for (int axis = 0; axis < 3; ++axis) {
            expected *=
                std::max(0.0f, std::min(a.max[axis], b.max[axis]) - std::max(a.min[axis], b.min[axis]));
        }
        if (expected > 0 && expected < 0.05f) {
            continue; // slivers fall under the tolerance that joins cut points
        }
        ASSERT_NEAR(volumeOf(body), expected, 1e-3f * (1 + expected)) << round;
        cBoundingBoxAA bounds;
        if (body.getBounds(bounds)) {
            ++cut;
            for (int axis = 0; axis < 3; ++axis) {
                ASSERT_GE(bounds.min[axis], b.min[axis] - 1e-4f);
                ASSERT_LE(bounds.max[axis], b.max[axis] + 1e-4f);
            }
        }
    }
    EXPECT_GT(cut, 50);
}

TEST(Clip, StaysWholeUnderSlantedPlanes)
{
    std::mt19937 random(32);
    std::uniform_real_distribution<float> at(-1, 1);
    for (int round = 0; round < 300; ++round) {
        PolygonObject body(cBoundingBoxAA({-2, -2, -2}, {2, 2, 2}));
        for (int cuts = 0; cuts < 3; ++cuts) {
            D3DXPLANE plane(at(random), at(random), at(random), at(random));
            D3DXPlaneNormalize(&plane, &plane);
            PolygonObject rest = body;
            float const before = volumeOf(body);
            cMath::clip(onePlane(-plane), rest);
            cMath::clip(onePlane(plane), body);
            for (auto const &polygon : body.polygons) {
                for (D3DXVECTOR3 const &p : polygon) {
                    ASSERT_GT(D3DXPlaneDotCoord(&plane, &p), -1e-4f);
                }
            }
            ASSERT_NEAR(volumeOf(body) + volumeOf(rest), before, 0.02f) << "the two parts make the whole";
        }
    }
}

D3DXMATRIX projection(float nearZ, float farZ)
{
    // A view of 90 degrees both ways along negative z, depth 0 to 1.
    float const range = farZ / (nearZ - farZ);
    return {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, range, -1, 0, 0, range * nearZ, 0};
}

TEST(Frustum, HoldsWhatTheProjectionShows)
{
    Frustum frustum;
    EXPECT_TRUE(frustum.contains({9, 9, 9})) << "no planes";
    D3DXMATRIX const m = projection(1, 100);
    frustum.setFromMatrix(m);
    EXPECT_EQ(frustum.activeMask, 0x3Fu);
    std::mt19937 random(33);
    std::uniform_real_distribution<float> at(-120, 120);
    int seen = 0;
    for (int round = 0; round < 4000; ++round) {
        D3DXVECTOR3 const p(at(random), at(random), at(random));
        D3DXVECTOR4 clip(p, 1);
        D3DXVec4Transform(&clip, &clip, &m);
        bool const expected =
            std::fabs(clip.x) <= clip.w && std::fabs(clip.y) <= clip.w && 0 <= clip.z && clip.z <= clip.w;
        seen += expected ? 1 : 0;
        ASSERT_EQ(frustum.contains(p), expected);
        cBoundingBoxAA const box(p - D3DXVECTOR3(5, 5, 5), p + D3DXVECTOR3(5, 5, 5));
        PlaneSide const side = frustum.getSide(box);
        ASSERT_EQ(frustum.intersects(box), side != PLANE_NEGATIVE);
        ASSERT_TRUE(!expected || frustum.intersects(box));
        if (side == PLANE_POSITIVE) {
            for (unsigned i = 0; i < 8; ++i) {
                ASSERT_TRUE(frustum.contains(box.getCorner(i)));
            }
        }
    }
    EXPECT_GT(seen, 100);
    EXPECT_TRUE(frustum.intersects(cBoundingSphere({0, 0, 2}, 3.0f)));
    EXPECT_FALSE(frustum.intersects(cBoundingSphere({0, 0, 2}, 2.9f)));
}

TEST(Frustum, UsesAsManyPlanesAsTheMaskHasBits)
{
    Frustum frustum;
    frustum.planes = {{1, 0, 0, 0}, {0, 1, 0, 0}};
    frustum.activeMask = 0x80000000u;
    EXPECT_TRUE(frustum.isActive(0));
    EXPECT_FALSE(frustum.isActive(1));
    EXPECT_TRUE(frustum.contains({1, -1, 0}));

    frustum.activeMask = 7;
    PolygonObject body(cBoundingBoxAA({-1, -1, -1}, {1, 1, 1}));
    try {
        cMath::clip(frustum, body);
        FAIL() << "the third plane is missing";
    } catch (Exception const &e) {
        EXPECT_EQ(e.getNumber(), 0);
        EXPECT_EQ(e.line, 83);
        std::string const text(e.getFullDescription().c_str());
        EXPECT_NE(text.find("Invalid Plane"), std::string::npos) << text;
        EXPECT_NE(text.find("Frustum::isActive"), std::string::npos) << text;
        EXPECT_NE(text.find("system\\math\\3D/Frustum"), std::string::npos) << text;
    }
    EXPECT_FLOAT_EQ(volumeOf(body), 2) << "the two that there are have cut";
    EXPECT_THROW(frustum.contains({1, 1, 1}), Exception);
}

} // namespace
} // namespace Qel
