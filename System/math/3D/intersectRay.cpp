#include "System/math/math.h"

#include <cfloat>

namespace Qel {

namespace {

bool missed(sIntersection *hit)
{
    if (hit != nullptr) {
        hit->t = 0;
    }
    return false;
}

} // namespace

bool cMath::intersects(cRay const &ray, D3DXPLANE const &plane, sIntersection *hit)
{
    float const slope = D3DXPlaneDotNormal(&plane, &ray.direction);
    if (std::fabs(slope) < FLT_EPSILON) {
        return missed(hit);
    }
    float const t = -D3DXPlaneDotCoord(&plane, &ray.origin) / slope;
    if (hit != nullptr) {
        hit->t = t;
    }
    return t >= 0;
}

bool cMath::intersects(cRay const &ray, cBoundingSphere const &sphere, sIntersection *hit)
{
    D3DXVECTOR3 const o = ray.origin - sphere.center;
    float const distance = D3DXVec3LengthSq(&o);
    float const reach = sphere.radius * sphere.radius;
    if (reach >= distance) {
        missed(hit);
        return true;
    }
    float const a = D3DXVec3LengthSq(&ray.direction);
    float const b = 2 * D3DXVec3Dot(&ray.direction, &o);
    float const c = distance - reach;
    float const discriminant = b * b - 4 * a * c;
    if (discriminant < 0) {
        return missed(hit);
    }
    if (hit != nullptr) {
        hit->t = (-b - sqrt(discriminant)) / (a + a);
    }
    return true;
}

bool cMath::intersects(cRay const &ray, D3DXVECTOR3 const &a, D3DXVECTOR3 const &b, D3DXVECTOR3 const &c,
                       sTriangleIntersection *hit)
{
    D3DXVECTOR3 const e1 = b - a;
    D3DXVECTOR3 const e2 = c - a;
    D3DXVECTOR3 p, q;
    D3DXVec3Cross(&p, &ray.direction, &e2);
    float const det = D3DXVec3Dot(&e1, &p);
    D3DXVECTOR3 const s = ray.origin - a;
    float const u = D3DXVec3Dot(&s, &p);
    if (u < 0 || u > det) {
        return false;
    }
    D3DXVec3Cross(&q, &s, &e1);
    float const v = D3DXVec3Dot(&ray.direction, &q);
    if (v < 0 || u + v > det) {
        return false;
    }
    if (det == 0) {
        return false;
    }
    if (hit != nullptr) {
        float const i = 1 / det;
        hit->t = D3DXVec3Dot(&e2, &q) * i;
        hit->u = u * i;
        hit->v = v * i;
        hit->backFacing = 0;
    }
    return true;
}

} // namespace Qel
