#include "System/math/3D/boundingSphere.h"

#include "System/math/lanes.h"

namespace Qel {

void cBoundingSphere::transform(D3DXMATRIX const &m)
{
    D3DXVECTOR4 p;
    transformedPoint(lanesOf(center, 1), m).store(p);
    center = {p.x, p.y, p.z};
}

} // namespace Qel
