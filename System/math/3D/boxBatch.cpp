#include "System/math/3D/boxBatch.h"

#include "System/math/3D/Frustum.h"
#include "System/math/3D/beamView.h"
#include "System/math/3D/boundingSphere.h"
#include "System/math/3D/boxKernels.h"
#include "System/math/3D/boxRay.h"
#include "System/math/3D/ray.h"
#include "System/math/3D/rectRay.h"
#include "System/math/3D/rectRayHitTest.h"

#include <atomic>
#include <cstring>

namespace Qel {

namespace {

static_assert(sizeof(cBoundingBoxAA) == 8 * sizeof(float) && sizeof(D3DXPLANE) == 4 * sizeof(float));

// Null where the processor lacks the level.
BoxKernels const *kernelsOf(eSimdLevel level)
{
    switch (level) {
    case SIMD_BASE:
        return &boxKernelsBase;
#if defined(__x86_64__)
    case SIMD_AVX2:
        return __builtin_cpu_supports("avx2") ? &boxKernelsAvx2 : nullptr;
    case SIMD_AVX512:
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") ? &boxKernelsAvx512
                                                                                       : nullptr;
#endif
    default:
        return nullptr;
    }
}

// Usable from the start, and as wide as the processor once the library is loaded.
constinit std::atomic<eSimdLevel> currentLevel{SIMD_BASE};
constinit std::atomic<BoxKernels const *> current{&boxKernelsBase};

[[maybe_unused]] bool const widest = cBoxBatch::setLevel(SIMD_AVX512) || cBoxBatch::setLevel(SIMD_AVX2);

BoxKernels const &kernels()
{
    return *current.load(std::memory_order_relaxed);
}

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
    return kernels().beam(query, floatsOf(boxes), count, hits);
}

} // namespace

std::size_t cBoxBatch::intersects(cRay const &ray, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits, float *t)
{
    RayQuery query;
    copy(query.origin, ray.origin);
    copy(query.direction, ray.direction);
    query.t = t;
    return kernels().ray(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(cBoundingSphere const &sphere, cBoundingBoxAA const *boxes,
                                  std::size_t count, std::uint32_t *hits)
{
    SphereQuery query;
    copy(query.center, sphere.center);
    query.radiusSq = sphere.radius * sphere.radius;
    return kernels().sphere(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(cBoundingBoxAA const &box, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    BoxQuery query;
    copy(query.center, box.center3());
    copy(query.half, box.size3() * 0.5f);
    return kernels().box(query, floatsOf(boxes), count, hits);
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
    return kernels().view(query, floatsOf(boxes), count, hits);
}

std::size_t cBoxBatch::intersects(Frustum const &frustum, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits)
{
    FrustumQuery query{nullptr, frustum.getActiveCount()};
    if (query.count > 0) {
        frustum.getPlane(static_cast<unsigned>(query.count) - 1);
        query.planes = frustum.planes.front();
    }
    return kernels().frustum(query, floatsOf(boxes), count, hits);
}

eSimdLevel cBoxBatch::getLevel()
{
    return currentLevel.load(std::memory_order_relaxed);
}

bool cBoxBatch::setLevel(eSimdLevel level)
{
    BoxKernels const *const table = kernelsOf(level);
    if (table == nullptr) {
        return false;
    }
    current.store(table, std::memory_order_relaxed);
    currentLevel.store(level, std::memory_order_relaxed);
    return true;
}

} // namespace Qel
