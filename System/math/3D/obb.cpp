#include "System/math/3D/obb.h"

#include "System/math/lanes.h"

#include <cmath>
#include <cstdint>

namespace Qel {

namespace {

D3DXMATRIX const &matrixOf(cOBB const &box)
{
    return reinterpret_cast<D3DXMATRIX const &>(box);
}

[[maybe_unused]] bool isAligned(void const *p)
{
    return reinterpret_cast<std::uintptr_t>(p) % alignof(cOBB) == 0;
}

D3DXVECTOR3 abs3(D3DXVECTOR3 const &v)
{
    return {std::fabs(v.x), std::fabs(v.y), std::fabs(v.z)};
}

D3DXVECTOR4 abs4(D3DXVECTOR4 const &v)
{
    return {std::fabs(v.x), std::fabs(v.y), std::fabs(v.z), std::fabs(v.w)};
}

// Vector is a record of three or four floats, or four lanes. The twice-taken differences fix the rounding of
// each corner.
template <class Vector>
struct Corners {
    Vector corner[8];

    Corners(Vector x, Vector y, Vector z, Vector origin)
    {
        Vector const x2 = x + x;
        Vector const y2 = y + y;
        Vector const z2 = z + z;
        corner[0] = origin + x + y + z;
        corner[1] = corner[0] - z2;
        corner[2] = corner[1] - x2;
        corner[3] = corner[0] - x2;
        for (int i = 0; i < 4; ++i) {
            corner[i + 4] = corner[i] - y2;
        }
    }
};

Lanes halfSize(cOBB const &box)
{
    return Lanes::load(box.xaxis).abs() + Lanes::load(box.yaxis).abs() + Lanes::load(box.zaxis).abs();
}

} // namespace

cOBB &cOBB::fromMatrix(D3DXMATRIX &m)
{
    QEL_ASSERT(isAligned(&m));
    return reinterpret_cast<cOBB &>(m);
}

cOBB const &cOBB::fromMatrix(D3DXMATRIX const &m)
{
    QEL_ASSERT(isAligned(&m));
    return reinterpret_cast<cOBB const &>(m);
}

void cOBB::transform(D3DXMATRIX const &m)
{
    transform(*this, m);
}

void cOBB::transform(cOBB &out, D3DXMATRIX const &m) const
{
    D3DXMatrixMultiply(&reinterpret_cast<D3DXMATRIX &>(out), &matrixOf(*this), &m);
}

void cOBB::extractEdges(D3DXVECTOR3 *out) const
{
    Corners<D3DXVECTOR3> const corners(xaxis3(), yaxis3(), zaxis3(), origin3());
    for (D3DXVECTOR3 const &corner : corners.corner) {
        *out++ = corner;
    }
}

void cOBB::extractEdges(D3DXVECTOR4 *out) const
{
    Corners<D3DXVECTOR4> const corners(xaxis, yaxis, zaxis, origin);
    for (D3DXVECTOR4 const &corner : corners.corner) {
        *out++ = corner;
    }
}

void cOBB::extractEdges_sse(D3DXVECTOR4 *out) const
{
    Corners<Lanes> const corners(Lanes::load(xaxis), Lanes::load(yaxis), Lanes::load(zaxis),
                                 Lanes::load(origin));
    for (Lanes const &corner : corners.corner) {
        corner.store(*out++);
    }
}

void cOBB::transformEdges(D3DXVECTOR3 *out, D3DXMATRIX const &m) const
{
    cOBB box;
    transform(box, m);
    box.extractEdges(out);
}

void cOBB::transformEdges(D3DXVECTOR4 *out, D3DXMATRIX const &m) const
{
    cOBB box;
    transform(box, m);
    box.extractEdges(out);
}

void cOBB::transformEdges_sse(D3DXVECTOR4 *out, D3DXMATRIX const &m) const
{
    cOBB box;
    transform(box, m);
    box.extractEdges_sse(out);
}

void cOBB::aabbExt3(D3DXVECTOR3 &out) const
{
    out = abs3(xaxis3()) + abs3(yaxis3()) + abs3(zaxis3());
}

void cOBB::aabbExt4(D3DXVECTOR4 &out) const
{
    out = abs4(xaxis) + abs4(yaxis) + abs4(zaxis);
}

void cOBB::aabbExt4_sse(D3DXVECTOR4 &out) const
{
    halfSize(*this).store(out);
}

void cOBB::toAABB(D3DXVECTOR3 &min, D3DXVECTOR3 &max) const
{
    D3DXVECTOR3 const middle = origin3();
    D3DXVECTOR3 half;
    aabbExt3(half);
    min = middle - half;
    max = middle + half;
}

void cOBB::toAABB(D3DXVECTOR4 &min, D3DXVECTOR4 &max) const
{
    D3DXVECTOR4 const middle = origin;
    D3DXVECTOR4 half;
    aabbExt4(half);
    min = middle - half;
    max = middle + half;
}

void cOBB::toAABB_sse(D3DXVECTOR4 &min, D3DXVECTOR4 &max) const
{
    Lanes const middle = Lanes::load(origin);
    Lanes const half = halfSize(*this);
    (middle - half).store(min);
    (middle + half).store(max);
}

} // namespace Qel
