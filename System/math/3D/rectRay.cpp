#include "System/math/3D/rectRay.h"

#include <algorithm>

namespace Qel {

namespace {

// The side that the projection @p at passes moves out to it, and the origin follows by half the way.
void growToward(float at, D3DXVECTOR3 const &axis, float &size, D3DXVECTOR3 &origin)
{
    if (at > size) {
        float const half = (at - size) * 0.5f;
        origin += axis * half;
        size += half;
    }
    if (-size > at) {
        float const half = (-at - size) * 0.5f;
        origin -= axis * half;
        size += half;
    }
}

void growBoth(float at, float &size)
{
    if (at > size) {
        size = at;
    }
    if (-size > at) {
        size = -at;
    }
}

void widen(float at, float &low, float &high)
{
    low = std::min(low, at);
    high = std::max(high, at);
}

} // namespace

cRectRay::cRectRay()
    : origin(0, 0, 0), direction(0, 0, 0), upNrm(0, 0, 1), leftNrm(1, 0, 0), sizeUp(1), sizeLeft(1),
      rayLen(2.1267647e37f)
{
}

cRectRay::cRectRay(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
                   D3DXVECTOR3 const &left, float newRayLen)
{
    set(newOrigin, newDirection, up, left, newRayLen);
}

void cRectRay::set(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
                   D3DXVECTOR3 const &left, float newRayLen)
{
    set(newOrigin, newDirection, up, left);
    rayLen = newRayLen;
}

void cRectRay::set(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
                   D3DXVECTOR3 const &left)
{
    origin = newOrigin;
    direction = newDirection;
    sizeUp = D3DXVec3Length(&up);
    upNrm = up * (1.0f / sizeUp);
    sizeLeft = D3DXVec3Length(&left);
    leftNrm = left * (1.0f / sizeLeft);
}

void cRectRay::addPoint(D3DXVECTOR3 const &p, bool moveCenter)
{
    D3DXVECTOR3 along;
    D3DXVec3Normalize(&along, &direction);
    D3DXVECTOR3 const d = p - origin;
    D3DXVECTOR3 const across = d - along * D3DXVec3Dot(&d, &along);
    float const u = D3DXVec3Dot(&across, &upNrm);
    float const l = D3DXVec3Dot(&across, &leftNrm);
    if (moveCenter) {
        growToward(u, upNrm, sizeUp, origin);
        growToward(l, leftNrm, sizeLeft, origin);
    } else {
        growBoth(u, sizeUp);
        growBoth(l, sizeLeft);
    }
}

void cRectRay::blowUpInit(sBlowUp &s) const
{
    D3DXPlaneFromPointNormal(&s.planeUp, &origin, &upNrm);
    D3DXPlaneFromPointNormal(&s.planeLeft, &origin, &leftNrm);
    s.origin = origin;
    s.minUp = -sizeUp;
    s.maxUp = sizeUp;
    s.minLeft = -sizeLeft;
    s.maxLeft = sizeLeft;
}

void cRectRay::blowUpAddPoint(sBlowUp &s, D3DXVECTOR3 const &p)
{
    widen(D3DXPlaneDotCoord(&s.planeUp, &p), s.minUp, s.maxUp);
    widen(D3DXPlaneDotCoord(&s.planeLeft, &p), s.minLeft, s.maxLeft);
}

void cRectRay::blowUpAddPoints(sBlowUp &s, D3DXVECTOR3 const *points, unsigned int count)
{
    for (unsigned int i = 0; i < count; ++i) {
        blowUpAddPoint(s, points[i]);
    }
}

void cRectRay::blowUpFinish(sBlowUp const &s, bool moveCenter)
{
    if (!moveCenter) {
        sizeUp = std::max(-s.minUp, s.maxUp);
        sizeLeft = std::max(-s.minLeft, s.maxLeft);
        return;
    }
    sizeUp = (s.maxUp - s.minUp) * 0.5f;
    sizeLeft = (s.maxLeft - s.minLeft) * 0.5f;
    origin += upNrm * (s.maxUp - sizeUp);
    origin += leftNrm * (s.maxLeft - sizeLeft);
}

} // namespace Qel
