#include "System/math/3D/boxBatch.h"

#include "Support/OS/processorKernels.h"
#include "System/math/3D/Frustum.h"
#include "System/math/3D/beamView.h"
#include "System/math/3D/boundingSphere.h"
#include "System/math/3D/boxKernels.h"
#include "System/math/3D/boxRay.h"
#include "System/math/3D/ray.h"
#include "System/math/3D/rectRay.h"
#include "System/math/3D/rectRayHitTest.h"

#include <cstring>

namespace Qel {

namespace {

static_assert(sizeof(cBoundingBoxAA) == 8 * sizeof(float) && sizeof(D3DXPLANE) == 4 * sizeof(float));

#if defined(__x86_64__)
BoxKernels const *const sets[] = {&boxKernelsBase, &boxKernelsBase, &boxKernelsAvx2, &boxKernelsAvx512};
#else
BoxKernels const *const sets[] = {&boxKernelsBase};
#endif

constinit BoxKernels const *boxKernels = &boxKernelsBase;

[[gnu::init_priority(101)]] os::ProcessorKernels const choice([](os::eProcessorLevel level) {
    boxKernels = sets[level];
});

float const *floatsOf(cBoundingBoxAA const *boxes)
{
    return reinterpret_cast<float const *>(boxes);
}

void copy(float (&to)[3], float const *from)
{
    std::memcpy(to, from, sizeof to);
}

bool singleBeam(void const *beam, float const *box)
{
    D3DXVECTOR4 const min(box);
    D3DXVECTOR4 const max(box + 4);
    cBoundingBoxAA copied;
    copied.min = min;
    copied.max = max;
    return static_cast<BeamView const *>(beam)->intersects(copied);
}

std::size_t beamAgainst(BeamView const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                        std::uint32_t *hits)
{
    BeamQuery query;
    std::memcpy(query.view, beam.view.m, sizeof query.view);
    copy(query.origin, beam.origin);
    copy(query.direction, beam.direction);
    query.size[0] = beam.sizeX;
    query.size[1] = beam.sizeY;
    query.length = beam.length;
    query.limited = beam.limited;
    query.single = singleBeam;
    query.beam = &beam;
    return boxKernels->beam(query, floatsOf(boxes), count, hits);
}

} // namespace

std::size_t cBoxBatch::intersects(cRay const &ray, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits, float *t)
{
    RayQuery query;
    copy(query.origin, ray.origin);
    copy(query.direction, ray.direction);
    query.t = t;
    return boxKernels->ray(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(cBoundingSphere const &sphere, cBoundingBoxAA const *boxes,
                                  std::size_t count, std::uint32_t *hits)
{
    SphereQuery query;
    copy(query.center, sphere.center);
    query.radiusSq = sphere.radius * sphere.radius;
    return boxKernels->sphere(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(cBoundingBoxAA const &box, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    BoxQuery query;
    copy(query.center, box.center3());
    copy(query.half, box.size3() * 0.5f);
    return boxKernels->box(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(cBoxRay const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    return beamAgainst(BeamView(beam), boxes, count, hits);
}

std::size_t cBoxBatch::intersects(cRectRay const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    return beamAgainst(BeamView(beam), boxes, count, hits);
}

std::size_t cBoxBatch::intersects(cRectRayHitTest const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    ViewQuery query;
    std::memcpy(query.view, beam.view.m, sizeof query.view);
    copy(query.negLimit, beam.negLimit);
    query.posLimit[0] = beam.posLimit.x;
    query.posLimit[1] = beam.posLimit.y;
    return boxKernels->view(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(Frustum const &frustum, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    FrustumQuery query{nullptr, frustum.getActiveCount()};
    if (query.count > 0) {
        frustum.getPlane(static_cast<unsigned>(query.count) - 1);
        query.planes = frustum.planes.front();
    }
    return boxKernels->frustum(query, floatsOf(boxes), count, hits);
}

} // namespace Qel
