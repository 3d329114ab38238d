#include "System/math/3D/boundingBox.h"
#include "System/math/3D/boundingCylinder.h"
#include "System/math/3D/obb.h"
#include "System/math/math.h"

namespace Qel {

namespace {

float distanceSq(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 const between = a - b;
    return D3DXVec3LengthSq(&between);
}

// Whether the foot of the sphere's centre on the edge lies between its ends and strictly within the radius.
bool touchesEdge(cBoundingSphere const &sphere, D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 const edge = b - a;
    D3DXPLANE across;
    D3DXPlaneFromPointNormal(&across, &sphere.center, &edge);
    float const atA = D3DXPlaneDotCoord(&across, &a);
    float const atB = D3DXPlaneDotCoord(&across, &b);
    if ((atA >= 0 && atB >= 0) || (atA <= 0 && atB <= 0)) {
        return false;
    }
    float const share = std::fabs(atA) / (std::fabs(atA) + std::fabs(atB));
    D3DXVECTOR3 const foot = a + edge * share;
    return sphere.radius * sphere.radius > distanceSq(foot, sphere.center);
}

} // namespace

bool cMath::intersects(cBoundingSphere const &sphere, D3DXPLANE const &plane)
{
    return std::fabs(D3DXPlaneDotCoord(&plane, &sphere.center)) <= sphere.radius;
}

bool cMath::intersects(cBoundingSphere const &sphere, cBoundingBox const &box)
{
    for (D3DXPLANE const &plane : box.planes) {
        if (D3DXPlaneDotCoord(&plane, &sphere.center) <= -sphere.radius) {
            return false;
        }
    }
    return true;
}

bool cMath::intersects(cBoundingBox const &box, cBoundingSphere const &sphere)
{
    return intersects(sphere, box);
}

bool cMath::intersects(cBoundingSphere const &sphere, cOBB const &box)
{
    for (D3DXVECTOR3 const *axis : {&box.xaxis3(), &box.yaxis3(), &box.zaxis3()}) {
        float const inverse = 1 / D3DXVec3Length(axis);
        for (D3DXVECTOR3 const &n : {*axis, -*axis}) {
            D3DXVECTOR3 const face = box.origin3() + n;
            float const outside = (D3DXVec3Dot(&sphere.center, &n) - D3DXVec3Dot(&face, &n)) * inverse;
            // The room left is counted in whole units, cut toward zero.
            if (!(sphere.radius - outside > -1)) {
                return false;
            }
        }
    }
    return true;
}

bool cMath::intersects(cBoundingSphere const &a, cBoundingSphere const &b)
{
    float const reach = a.radius + b.radius;
    return reach * reach >= distanceSq(a.center, b.center);
}

bool cMath::intersects(cBoundingSphere const &sphere, D3DXVECTOR3 const &point)
{
    return sphere.radius * sphere.radius >= distanceSq(sphere.center, point);
}

bool cMath::intersects(cBoundingSphere const &sphere, D3DXVECTOR3 const *triangle)
{
    D3DXPLANE plane;
    D3DXPlaneNormalize(&plane, D3DXPlaneFromPoints(&plane, &triangle[0], &triangle[1], &triangle[2]));
    float const distance = D3DXPlaneDotCoord(&plane, &sphere.center);
    if (std::fabs(distance) > sphere.radius) {
        return false;
    }
    for (int i = 0; i < 3; ++i) {
        if (intersects(sphere, triangle[i])) {
            return true;
        }
    }
    D3DXVECTOR3 const onPlane = sphere.center - D3DXVECTOR3(plane.a, plane.b, plane.c) * distance;
    if (pointInTriangle(onPlane, triangle, plane, 0.0001f)) {
        return true;
    }
    for (int i = 0; i < 3; ++i) {
        if (touchesEdge(sphere, triangle[i], triangle[(i + 1) % 3])) {
            return true;
        }
    }
    return false;
}

bool cMath::intersects(cBoundingCylinder const &a, cBoundingCylinder const &b)
{
    float const reach = a.radius + b.radius;
    return reach * reach >= distanceSq(a.baseLocation, b.baseLocation);
}

bool cMath::intersects(cBoundingCylinder const &cylinder, D3DXVECTOR3 const &point)
{
    D3DXVECTOR3 const d = point - cylinder.baseLocation;
    return d.z >= 0 && d.z < cylinder.height && cylinder.radius * cylinder.radius > d.x * d.x + d.y * d.y;
}

bool cMath::pointInTriangle(D3DXVECTOR3 const &p, D3DXVECTOR3 const *triangle, D3DXPLANE const &plane,
                            float tolerance)
{
    D3DXVECTOR3 const normal(plane.a, plane.b, plane.c);
    for (int i = 0; i < 3; ++i) {
        D3DXVECTOR3 const edge = triangle[(i + 1) % 3] - triangle[i];
        D3DXVECTOR3 inward;
        D3DXVec3Normalize(&inward, D3DXVec3Cross(&inward, &normal, &edge));
        if (D3DXVec3Dot(&inward, &p) - D3DXVec3Dot(&inward, &triangle[i]) + tolerance < 0) {
            return false;
        }
    }
    return true;
}

bool cMath::pointInTriangle(D3DXVECTOR3 const &p, D3DXVECTOR3 const *triangle, float tolerance)
{
    D3DXPLANE plane;
    D3DXPlaneNormalize(&plane, D3DXPlaneFromPoints(&plane, &triangle[0], &triangle[1], &triangle[2]));
    return pointInTriangle(p, triangle, plane, tolerance);
}

} // namespace Qel
