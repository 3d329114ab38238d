#include "System/math/3D/beamView.h"
#include "System/math/3D/boundingBox.h"
#include "System/math/3D/boxRay.h"
#include "System/math/3D/rectRay.h"
#include "System/math/lanes.h"
#include "System/math/math.h"

#include <limits>

namespace Qel {

namespace {

// A product with either end of a range, put in order. Where one of the two is NaN it stays in one of the
// ends.
struct Range {
    Lanes low;
    Lanes high;

    Range(Lanes a, Lanes b) : low(Lanes::min(a, b)), high(Lanes::max(b, a)) {}
};

D3DXVECTOR4 seen(D3DXVECTOR3 const &p, D3DXMATRIX const &view)
{
    D3DXVECTOR4 result;
    transformedPoint(lanesOf(p, 1), view).store(result);
    return result;
}

} // namespace

BeamView::BeamView(cBoxRay const &beam)
    : origin(beam.origin), direction(beam.direction), sizeX(beam.size), sizeY(beam.size), length(0),
      limited(false)
{
    look(beam.up);
}

BeamView::BeamView(cRectRay const &beam)
    : origin(beam.origin), direction(beam.direction), sizeX(beam.sizeLeft), sizeY(beam.sizeUp),
      length(beam.rayLen), limited(true)
{
    look(beam.upNrm);
}

void BeamView::look(D3DXVECTOR3 const &up)
{
    D3DXVECTOR3 const at = origin + direction;
    D3DXMatrixLookAtRH(&view, &origin, &at, &up);
}

bool BeamView::inFront(D3DXVECTOR3 const *points, unsigned count) const
{
    for (unsigned i = 0; i < count; ++i) {
        D3DXVECTOR3 const d = points[i] - origin;
        if (D3DXVec3Dot(&direction, &d) > 0) {
            return true;
        }
    }
    return false;
}

bool BeamView::intersects(D3DXVECTOR3 const *points, unsigned count) const
{
    if (!inFront(points, count)) {
        return false;
    }
    unsigned mask = limited ? 0 : 16;
    for (unsigned i = 0; i < count; ++i) {
        D3DXVECTOR4 const p = seen(points[i], view);
        mask |= (sizeX > p.x ? 1u : 0u) | (p.x > -sizeX ? 2u : 0u) | (sizeY > p.y ? 4u : 0u) |
                (p.y > -sizeY ? 8u : 0u) | (p.z > -length ? 16u : 0u);
    }
    return mask == 31;
}

bool BeamView::intersects(cBoundingBoxAA const &box) const
{
    // Rounded sums rise with each of their terms. So the least and the greatest of the eight corners'
    // coordinates come from the least and the greatest term of each axis, to the bit, and no corner needs to
    // be formed.
    Lanes const low = Lanes::load(box.min);
    Lanes const high = Lanes::load(box.max);
    Range const x(low.splat<0>() * Lanes::load(view.m[0]), high.splat<0>() * Lanes::load(view.m[0]));
    Range const y(low.splat<1>() * Lanes::load(view.m[1]), high.splat<1>() * Lanes::load(view.m[1]));
    Range const z(low.splat<2>() * Lanes::load(view.m[2]), high.splat<2>() * Lanes::load(view.m[2]));
    Lanes const least = x.low + y.low + z.low + Lanes::load(view.m[3]);
    Lanes const most = x.high + y.high + z.high + Lanes::load(view.m[3]);
    Lanes const from = lanesOf(origin, 0);
    Lanes const along = lanesOf(direction, 0);
    Range const ahead((low - from) * along, (high - from) * along);
    Lanes const farthest = ahead.high + ahead.high.splat<1>() + ahead.high.splat<2>();
    Lanes const nearest = ahead.low + ahead.low.splat<1>() + ahead.low.splat<2>();

    // That holds for numbers only; with infinities and NaN about, each corner speaks for itself.
    Lanes const infinity = Lanes::all(std::numeric_limits<float>::infinity());
    auto const finiteView = (least.abs() < infinity) & (most.abs() < infinity);
    auto const finiteFront = (farthest.abs() < infinity) & (nearest.abs() < infinity);
    if ((finiteView.bits() & 7) != 7 || (finiteFront.bits() & 1) != 1) {
        D3DXVECTOR3 corners[8];
        box.extractEdges(corners);
        return intersects(corners, 8);
    }

    int const needed = limited ? 7 : 3;
    Lanes const limit(sizeX, sizeY, length, 0);
    Lanes const negated(-sizeX, -sizeY, -length, 0);
    return (Lanes::all(0) < farthest).bits() % 2 == 1 && ((least < limit).bits() & 3) == 3 &&
           ((negated < most).bits() & needed) == needed;
}

bool cMath::intersects(cBoxRay const &beam, D3DXVECTOR3 const &point)
{
    D3DXVECTOR3 const d = point - beam.origin;
    if (D3DXVec3Dot(&beam.direction, &d) < 0) {
        return false;
    }
    D3DXVECTOR4 const p = seen(point, BeamView(beam).view);
    return -beam.size <= p.x && p.x <= beam.size && -beam.size <= p.y && p.y <= beam.size;
}

bool cMath::intersects(cBoxRay const &beam, D3DXVECTOR3 const *points, unsigned int count)
{
    return BeamView(beam).intersects(points, count);
}

bool cMath::intersects(cBoxRay const &beam, cBoundingBoxAA const &box)
{
    return BeamView(beam).intersects(box);
}

bool cMath::intersects(cRectRay const &beam, D3DXVECTOR3 const *points, unsigned int count)
{
    return BeamView(beam).intersects(points, count);
}

bool cMath::intersects(cRectRay const &beam, cBoundingBox const &box)
{
    return intersects(beam, box.corners, 8);
}

bool cMath::intersects(cRectRay const &beam, cBoundingBoxAA const &box)
{
    return BeamView(beam).intersects(box);
}

} // namespace Qel
