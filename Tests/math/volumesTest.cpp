#include "System/math/3D/boundingBox.h"
#include "System/math/3D/boundingBoxAA.h"
#include "System/math/3D/obb.h"
#include "System/math/3D/rectRay.h"
#include "System/math/math.h"

#include "Tests/math/near.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <random>
#include <string>
#include <vector>

namespace Qel {
namespace {

// The signs of a corner against the middle of its box, as the tables of the volumes write them.
std::string signsOf(D3DXVECTOR3 const &corner, D3DXVECTOR3 const &middle)
{
    D3DXVECTOR3 const d = corner - middle;
    return {d.x > 0 ? '+' : '-', d.y > 0 ? '+' : '-', d.z > 0 ? '+' : '-'};
}

D3DXMATRIX placement(float angle, D3DXVECTOR3 const &move)
{
    D3DXVECTOR3 const axis(1, 2, -0.5f);
    D3DXMATRIX m;
    D3DXMatrixRotationAxis(&m, &axis, angle);
    m._41 = move.x;
    m._42 = move.y;
    m._43 = move.z;
    return m;
}

TEST(BoundingBoxAA, CornersRunInTheirTwoOrders)
{
    char const *const order[8] = {"---", "-+-", "++-", "+--", "+++", "-++", "--+", "+-+"};
    char const *const orderSse[8] = {"---", "+--", "-+-", "++-", "--+", "+-+", "-++", "+++"};
    cBoundingBoxAA box({-1, -2, -3}, {5, 6, 7});
    box.min.w = 0.25f;
    box.max.w = 0.5f;
    D3DXVECTOR3 edges[8];
    D3DXVECTOR4 edges4[8], edgesSse[8];
    box.extractEdges(edges);
    box.extractEdges(edges4);
    box.extractEdges_sse(edgesSse);
    for (unsigned i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(signsOf(box.getCorner(i), box.getCenter()), order[i]);
        EXPECT_TRUE(box.getCorner3(i) == edges[i]);
        EXPECT_TRUE(edges4[i] == D3DXVECTOR4(edges[i], 1));
        EXPECT_TRUE(box.getCorner4(i) == D3DXVECTOR4(edges[i], i == 0 ? 0.25f : i == 4 ? 0.5f : 1));
        EXPECT_EQ(signsOf(D3DXVECTOR3(edgesSse[i]), box.getCenter()), orderSse[i]);
        EXPECT_EQ(edgesSse[i].w, 0.25f);
    }
    box.max.x = -7;
    box.extractEdges_sse(edgesSse);
    EXPECT_EQ(edgesSse[1].x, 5.0f) << "the size without its sign";
    EXPECT_TRUE(box.getCorner(8) == D3DXVECTOR3(0, 0, 0));
    EXPECT_TRUE(box.getCorner4(8) == D3DXVECTOR4(0, 0, 0, 1));
}

TEST(BoundingBoxAA, FacesPointOutAndTellTheSide)
{
    cBoundingBoxAA const box({-1, -2, -3}, {5, 6, 7});
    D3DXVECTOR3 const onFace[6] = {{0, -2, 0}, {0, 6, 0}, {-1, 0, 0}, {5, 0, 0}, {0, 0, -3}, {0, 0, 7}};
    for (unsigned i = 0; i < 6; ++i) {
        SCOPED_TRACE(i);
        D3DXPLANE plane = box.getPlane(i);
        D3DXVECTOR3 const center = box.getCenter();
        EXPECT_EQ(D3DXPlaneDotCoord(&plane, &onFace[i]), 0.0f);
        EXPECT_LT(D3DXPlaneDotCoord(&plane, &center), 0.0f);
        EXPECT_EQ(box.getPlaneSide(plane), PLANE_BOTH) << "touching";
        plane.d -= 0.5f;
        EXPECT_EQ(box.getPlaneSide(plane), PLANE_NEGATIVE);
        EXPECT_EQ(box.getPlaneSide(-plane), PLANE_POSITIVE);
        plane.d += 1;
        EXPECT_EQ(box.getPlaneSide(plane), PLANE_BOTH);
    }
    EXPECT_TRUE(box.getPlane(6) == D3DXPLANE(0, 0, 0, 0));
}

TEST(BoundingBoxAA, SortsItsExtentsAndLeavesW)
{
    cBoundingBoxAA box;
    box.min.w = 3;
    box.setMinMax(5, -1, 2, 4, 9, 8);
    EXPECT_TRUE(box.min == D3DXVECTOR4(-1, 2, 8, 3));
    EXPECT_TRUE(box.max == D3DXVECTOR4(5, 4, 9, 1));
    box.setMinMax(D3DXVECTOR4(1, 1, 1, 7), D3DXVECTOR4(0, 2, 0, 8));
    EXPECT_TRUE(box.min == D3DXVECTOR4(0, 1, 0, 7));
    EXPECT_TRUE(box.max == D3DXVECTOR4(1, 2, 1, 8));
    box.setExtents(box.max3(), box.min3()); // its own members, swapped
    EXPECT_TRUE(box.min == D3DXVECTOR4(0, 1, 0, 7));
    EXPECT_TRUE(box.max == D3DXVECTOR4(1, 2, 1, 8));

    D3DXMATRIX mirror;
    D3DXMatrixIdentity(&mirror);
    mirror._11 = -1;
    mirror._44 = 2;
    mirror._41 = 10;
    box.transform(mirror);
    EXPECT_TRUE(box.min == D3DXVECTOR4(10, 1, 0, 7));
    EXPECT_TRUE(box.max == D3DXVECTOR4(9, 2, 1, 8));
    box.correctMinMax();
    EXPECT_EQ(box.min.x, 9.0f);
    box.transformAndProject(mirror);
    EXPECT_TRUE(box.min == D3DXVECTOR4(0.5f, 0.5f, 0, 7));
}

TEST(BoundingBoxAA, GrowsAlikeInEveryForm)
{
    std::mt19937 random(11);
    std::uniform_real_distribution<float> value(-5, 5);
    cBoundingBoxAA a, b, c, sum;
    for (int i = 0; i < 100; ++i) {
        D3DXVECTOR4 const p(value(random), value(random), value(random), 100);
        a.addPoint(D3DXVECTOR3(p));
        b.addPoint(p);
        c.addPoint_sse(p);
        ASSERT_TRUE(a.min == b.min && a.max == b.max && a.min == c.min && a.max == c.max);
        ASSERT_TRUE(cMath::intersects(a, D3DXVECTOR3(p)));
        ASSERT_TRUE(cMath::intersects(a, D3DXVECTOR3(0, 0, 0)));
        sum += cBoundingBoxAA(D3DXVECTOR3(p), D3DXVECTOR3(p));
        ASSERT_TRUE(a.min == sum.min && a.max == sum.max);
    }
    EXPECT_EQ(a.min.w, 1.0f);
}

// Memory layouts, and the boundary that containers keep.
static_assert(sizeof(cBoundingBoxAA) == 32 && alignof(cBoundingBoxAA) == 16 && alignof(cOBB) == 16);
static_assert(sizeof(cBoundingBox) == 48 * sizeof(float));

TEST(BoundingBox, PlanesPointInAndCornersRunInOrder)
{
    char const *const order[8] = {"+++", "++-", "-+-", "-++", "+-+", "+--", "---", "--+"};
    cBoundingBox const box({1, 5, 2}, {0, 6, 3});
    EXPECT_TRUE(box.getCorner(6) == D3DXVECTOR3(0, 5, 2));
    EXPECT_TRUE(box.getCorner(0) == D3DXVECTOR3(1, 6, 3));
    for (unsigned short i = 0; i < 8; ++i) {
        EXPECT_EQ(signsOf(box.getCorner(i), box.getCenter()), order[i]) << i;
    }
    D3DXPLANE const expected[6] = {{0, 0, 1, -2}, {1, 0, 0, 0},  {-1, 0, 0, 1},
                                   {0, 1, 0, -5}, {0, 0, -1, 3}, {0, -1, 0, 6}};
    for (unsigned short i = 0; i < 6; ++i) {
        EXPECT_TRUE(box.getPlane(i) == expected[i]) << i;
    }
}

// Each corner lies on three planes and inside the other three, whatever the box went through.
TEST(BoundingBox, CornersAndPlanesStayTogether)
{
    cBoundingBox box({-1, -2, -3}, {2, 1, 4});
    D3DXMATRIX m = placement(0.8f, {5, -2, 1});
    m._11 *= 2;
    box.transform(m);
    for (D3DXVECTOR3 const &corner : box.corners) {
        int touching = 0;
        for (D3DXPLANE const &plane : box.planes) {
            float const value = D3DXPlaneDotCoord(&plane, &corner);
            EXPECT_GT(value, -1e-4f);
            touching += value < 1e-4f ? 1 : 0;
        }
        EXPECT_EQ(touching, 3);
    }
    cBoundingBox copy = box;
    float minX, maxX, minY, maxY, minZ, maxZ;
    copy.getExtents(minX, maxX, minY, maxY, minZ, maxZ);
    EXPECT_TRUE(copy.getPlane(1) == D3DXPLANE(1, 0, 0, -minX));
    for (D3DXVECTOR3 const &corner : box.corners) {
        EXPECT_TRUE(minX <= corner.x && corner.x <= maxX && minZ <= corner.z && corner.z <= maxZ);
    }
    copy += cBoundingBox({50, 50, 50}, {51, 51, 51});
    EXPECT_TRUE(copy.getCorner(0) == D3DXVECTOR3(51, 51, 51));
    EXPECT_EQ(copy.getCorner(6).y, minY);
}

TEST(BoundingBox, ASingularMatrixLeavesAnAxisAlignedHull)
{
    D3DXMATRIX flat = placement(0.5f, {0, 0, 3});
    flat._13 = flat._23 = flat._33 = 0;
    cBoundingBox box({-1, -1, -1}, {1, 1, 1});
    box.transform(flat);
    for (D3DXVECTOR3 const &corner : box.corners) {
        EXPECT_EQ(corner.z, 3.0f);
        EXPECT_TRUE(cMath::intersects(box, corner));
    }
    EXPECT_TRUE(box.getPlane(0) == D3DXPLANE(0, 0, 1, -3));
    EXPECT_FALSE(cMath::intersects(box, D3DXVECTOR3(0, 0, 3.01f)));
}

TEST(BoundingBox, TakesListsOfPoints)
{
    cBoundingBox box = {};
    EXPECT_TRUE(box.getCorner(0) == D3DXVECTOR3(0, 0, 0));
    box = cBoundingBox({1, 2, 3}, {4, 5, 6});
    box.computeAxisAligned(std::vector<D3DXVECTOR3>{});
    EXPECT_TRUE(box.getCorner(0) == D3DXVECTOR3(4, 5, 6));
    box.computeAxisAligned(nullptr, 0);
    EXPECT_TRUE(box.getCorner(6) == D3DXVECTOR3(FLT_MAX, FLT_MAX, FLT_MAX));
    EXPECT_TRUE(box.getCorner(0) == D3DXVECTOR3(-FLT_MAX, -FLT_MAX, -FLT_MAX));
    box += cBoundingBox({1, 1, 1}, {2, 2, 2});
    EXPECT_TRUE(box.getCorner(0) == D3DXVECTOR3(FLT_MAX, FLT_MAX, FLT_MAX))
        << "its corners are points like any other";
}

TEST(BoundingBox, KnowsTheUnityCube)
{
    struct {
        D3DXVECTOR3 a, b;
        bool in;
    } const rows[] = {
        {{-0.5f, -0.5f, -0.5f}, {0.5f, 0.5f, 0.5f}, true},
        {{-9, -9, -9}, {9, 9, 9}, true},
        {{1, -1, -1}, {1, 1, 1}, false},
        {{1, -1, -1}, {2, 1, 1}, false},
        {{0, -3, 0}, {0, -1, 0}, false},
        {{0, 0, -3}, {0, 0, -1}, false},
        {{0, 0, 0.99f}, {0, 0, 5}, true},
    };
    for (auto const &row : rows) {
        EXPECT_EQ(cBoundingBox(row.a, row.b).isInUnitySpace(), row.in) << row.a.x << ' ' << row.b.x;
    }
    D3DXMATRIX halved(1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 2);
    cBoundingBox box({2, 2, 2}, {4, 4, 4});
    box.transformAndProject(halved);
    EXPECT_TRUE(box.getCenter() == D3DXVECTOR3(1.5f, 1.5f, 1.5f));
}

TEST(Obb, ThreeFormsGiveTheSameCornersAndHull)
{
    cBoundingBox corners({-1, -2, -3}, {3, 2, 1});
    cOBB box;
    cMath::convert(box, corners);
    EXPECT_TRUE(box.origin4() == D3DXVECTOR4(1, 0, -1, 1));
    EXPECT_TRUE(box.size3() == D3DXVECTOR3(4, 4, 4));
    D3DXMATRIX const m = placement(-2.5f, {4, 5, -6}); // each axis has a lane below 0
    D3DXVECTOR3 moved3[8], edges3[8];
    D3DXVECTOR4 moved4[8], movedSse[8];
    box.transformEdges(moved3, m);
    box.transformEdges(moved4, m);
    box.transformEdges_sse(movedSse, m);
    box.transform(m);
    box.extractEdges(edges3);
    corners.transform(m);
    D3DXVECTOR3 min3, max3;
    box.toAABB(min3, max3);
    for (int i = 0; i < 8; ++i) {
        SCOPED_TRACE(i);
        expectNear(edges3[i], corners.corners[i], 1e-5f);
        EXPECT_TRUE(moved3[i] == edges3[i]);
        EXPECT_TRUE(D3DXVECTOR3(moved4[i]) == edges3[i]);
        EXPECT_TRUE(movedSse[i] == moved4[i]);
        EXPECT_EQ(moved4[i].w, 1.0f);
        for (int axis = 0; axis < 3; ++axis) {
            EXPECT_GE(edges3[i][axis], min3[axis] - 1e-5f);
            EXPECT_LE(edges3[i][axis], max3[axis] + 1e-5f);
        }
    }
    expectNear(box.max3(), edges3[0], 1e-5f);
    expectNear(box.min3(), edges3[6], 1e-5f);
    alignas(16) D3DXMATRIX same = placement(1, {1, 2, 3});
    cOBB &view = cOBB::fromMatrix(same);
    view.move(D3DXVECTOR3(1, 1, 1));
    EXPECT_EQ(same._41, 2.0f);
    same._12 = 9;
    EXPECT_EQ(view.xaxis3().y, 9.0f) << "the matrix's own storage";
    cBoundingBoxAA hull, hullSse;
    cMath::convert(hull, box);
    cMath::convert_sse(hullSse, box);
    EXPECT_TRUE(hull.min3() == min3 && hull.max3() == max3);
    EXPECT_TRUE(hull.min == hullSse.min && hull.max == hullSse.max);
    cBoundingBox around;
    around.computeAxisAligned(edges3, 8);
    expectNear(hull.getSize(), around.getSize(), 1e-5f);
}

void expectBeam(cRectRay const &beam, D3DXVECTOR3 const &origin, float up, float left)
{
    EXPECT_TRUE(beam.getOrigin() == origin) << beam.origin.x << ' ' << beam.origin.y;
    EXPECT_EQ(beam.getSizeUp(), up);
    EXPECT_EQ(beam.getSizeLeft(), left);
}

TEST(RectRay, WidensOnOneSideOrOnBoth)
{
    cRectRay const beam({0, 0, 0}, {0, 0, -2}, {0, 2, 0}, {1, 0, 0}, 50);
    EXPECT_EQ(cRectRay().getArea(), 4.0f);
    EXPECT_EQ(beam.getArea(), 8.0f);
    struct {
        D3DXVECTOR3 p;
        bool moveCenter;
        D3DXVECTOR3 origin;
        float up, left;
    } const rows[] = {
        {{1.5f, 0, -7}, false, {0, 0, 0}, 2, 1.5f}, {{-3, 0, 7}, true, {-1, 0, 0}, 2, 2},
        {{0, 3, 0}, true, {0, 0.5f, 0}, 2.5f, 1},   {{0.5f, 1, 9}, true, {0, 0, 0}, 2, 1},
        {{5, -4, 1}, false, {0, 0, 0}, 4, 5},       {{5, -4, 1}, true, {2, -1, 0}, 3, 3},
    };
    for (auto const &row : rows) {
        SCOPED_TRACE(testing::Message() << row.p.x << ' ' << row.p.y << ' ' << row.moveCenter);
        cRectRay wide = beam;
        wide.addPoint(row.p, row.moveCenter);
        expectBeam(wide, row.origin, row.up, row.left);
    }
}

// The beam starts away from the origin, so that its planes have a distance of their own.
TEST(RectRay, ABlowUpTakesAllPointsIn)
{
    D3DXVECTOR3 const points[] = {{13, 5, 0}, {8, 7, -3}, {10, -4, 9}};
    for (bool const moveCenter : {false, true}) {
        cRectRay beam({10, 1, 0}, {0, 0, -2}, {0, 2, 0}, {1, 0, 0}, 50);
        cRectRay::sBlowUp s;
        beam.blowUpInit(s);
        cRectRay::blowUpAddPoint(s, points[0]);
        cRectRay::blowUpAddPoints(s, points + 1, 2);
        beam.blowUpFinish(s, moveCenter);
        moveCenter ? expectBeam(beam, {10.5f, 1.5f, 0}, 5.5f, 2.5f) : expectBeam(beam, {10, 1, 0}, 6, 3);
    }
}

} // namespace
} // namespace Qel
