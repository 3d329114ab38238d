#include "System/math/3D/boundingCylinder.h"

#include "System/math/lanes.h"

namespace Qel {

void cBoundingCylinder::transform(D3DXMATRIX const &m)
{
    D3DXVECTOR4 p;
    transformedPoint(lanesOf(baseLocation, 1), m).store(p);
    baseLocation = {p.x, p.y, p.z};
}

} // namespace Qel
