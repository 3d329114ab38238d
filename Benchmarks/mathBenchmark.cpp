#include "Support/OS/processorLevel.h"
#include "System/math/3D/Frustum.h"
#include "System/math/3D/boxBatch.h"
#include "System/math/3D/rectRay.h"
#include "System/math/3D/rectRayHitTest.h"
#include "System/math/math.h"

#include <benchmark/benchmark.h>

#include <Eigen/Geometry>
#include <LinearMath/btAabbUtil2.h>
#include <LinearMath/btTransform.h>
#include <glm/glm.hpp>
#include <glm/gtc/matrix_transform.hpp>

#include <array>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

// One box test against Bullet, Eigen and glm, each on its own array of structures; many boxes at a time
// against the best of those; matrices, arrays of points and sine with cosine against glm and the C library.
//
// Each pass runs one of 64 queries over all boxes, so that no branch can be learnt by heart.

namespace {

using namespace Qel;

constexpr std::size_t boxCount = 4096;
constexpr std::size_t queryCount = 64;

struct BulletBox {
    btVector3 min, max;
};

struct GlmBox {
    glm::vec3 min, max;
};

glm::vec3 toGlm(D3DXVECTOR3 const &v)
{
    return {v.x, v.y, v.z};
}

btVector3 toBullet(D3DXVECTOR3 const &v)
{
    return {v.x, v.y, v.z};
}

Eigen::Vector3f toEigen(D3DXVECTOR3 const &v)
{
    return {v.x, v.y, v.z};
}

/// The same boxes for everybody.
struct Scene {
    std::vector<cBoundingBoxAA> boxes;
    std::vector<BulletBox> bullet;
    std::vector<GlmBox> glm;
    std::vector<Eigen::AlignedBox3f> eigen;

    Scene()
    {
        std::mt19937 random(1);
        std::uniform_real_distribution<float> at(-10, 10), size(0.1f, 3);
        for (std::size_t i = 0; i < boxCount; ++i) {
            D3DXVECTOR3 const middle(at(random), at(random), at(random));
            D3DXVECTOR3 const half(size(random), size(random), size(random));
            cBoundingBoxAA const &box = boxes.emplace_back(middle - half, middle + half);
            bullet.push_back({toBullet(box.min3()), toBullet(box.max3())});
            glm.push_back({toGlm(box.min3()), toGlm(box.max3())});
            eigen.emplace_back(toEigen(box.min3()), toEigen(box.max3()));
        }
    }
};

Scene const &scene()
{
    static Scene const made;
    return made;
}

/// Runs test(query, box) over all boxes. The peers must find about what we find: their bounds differ where
/// boxes only touch.
template <class Test>
void eachBox(benchmark::State &state, Test const &test)
{
    scene();
    std::size_t query = 0;
    for (auto _ : state) {
        query = (query + 1) % queryCount;
        int hits = 0;
        for (std::size_t i = 0; i < boxCount; ++i) {
            hits += test(query, i) ? 1 : 0;
        }
        benchmark::DoNotOptimize(hits);
    }
    double total = 0;
    for (query = 0; query < queryCount; ++query) {
        for (std::size_t i = 0; i < boxCount; ++i) {
            total += test(query, i) ? 1 : 0;
        }
    }
    state.counters["hits"] = total / queryCount;
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(boxCount));
}

/// Runs a batch over all boxes at the level of the argument.
template <class Batch>
void allBoxes(benchmark::State &state, Batch const &batch)
{
    os::eProcessorLevel const before = os::processorLevel();
    if (!os::setProcessorLevel(static_cast<os::eProcessorLevel>(state.range(0)))) {
        state.SkipWithError("this processor lacks the level");
        return;
    }
    scene();
    std::array<std::uint32_t, boxCount / 32> hits;
    std::size_t query = 0;
    for (auto _ : state) {
        query = (query + 1) % queryCount;
        benchmark::DoNotOptimize(batch(query, hits.data()));
    }
    os::setProcessorLevel(before);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(boxCount));
}

#define LEVELS ->Arg(os::PROCESSOR_PLAIN)->Arg(os::PROCESSOR_AVX2)->Arg(os::PROCESSOR_AVX512)

// ---- a box against a box

void BM_Box_qel(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) { return cMath::intersects(s.boxes[q], s.boxes[i]); });
}

void BM_Box_bullet(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        return TestAabbAgainstAabb2(s.bullet[q].min, s.bullet[q].max, s.bullet[i].min, s.bullet[i].max);
    });
}

void BM_Box_eigen(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) { return s.eigen[q].intersects(s.eigen[i]); });
}

void BM_Box_glm(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        return glm::all(glm::lessThan(s.glm[q].min, s.glm[i].max)) &&
               glm::all(glm::lessThan(s.glm[i].min, s.glm[q].max));
    });
}

void BM_Box_batch(benchmark::State &state)
{
    allBoxes(state, [&](std::size_t q, std::uint32_t *hits) {
        return cBoxBatch::intersects(scene().boxes[q], scene().boxes.data(), boxCount, hits);
    });
}

// ---- a sphere against a box

constexpr float radius = 2;

void BM_Sphere_qel(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        return cMath::intersects(cBoundingSphere(s.boxes[q].min3(), radius), s.boxes[i]);
    });
}

void BM_Sphere_bullet(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        btVector3 const center = s.bullet[q].min;
        btVector3 nearest = center;
        nearest.setMax(s.bullet[i].min);
        nearest.setMin(s.bullet[i].max);
        return (nearest - center).length2() <= radius * radius;
    });
}

void BM_Sphere_eigen(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        return s.eigen[i].squaredExteriorDistance(s.eigen[q].min()) <= radius * radius;
    });
}

void BM_Sphere_glm(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        glm::vec3 const center = s.glm[q].min;
        glm::vec3 const d = glm::clamp(center, s.glm[i].min, s.glm[i].max) - center;
        return glm::dot(d, d) <= radius * radius;
    });
}

void BM_Sphere_batch(benchmark::State &state)
{
    allBoxes(state, [&](std::size_t q, std::uint32_t *hits) {
        return cBoxBatch::intersects(cBoundingSphere(scene().boxes[q].min3(), radius), scene().boxes.data(),
                                     boxCount, hits);
    });
}

// ---- a ray against a box; the peers get the reciprocal direction ready made

struct Rays {
    std::vector<cRay> qel;
    std::vector<glm::vec3> from, inverse;
    std::vector<btVector3> fromBullet, inverseBullet;
    std::vector<std::array<unsigned, 3>> signs;

    Rays()
    {
        std::mt19937 random(2);
        std::uniform_real_distribution<float> at(-12, 12), along(-1, 1);
        for (std::size_t i = 0; i < queryCount; ++i) {
            D3DXVECTOR3 const o(at(random), at(random), at(random)),
                d(along(random), along(random), along(random));
            D3DXVECTOR3 const reciprocal(1 / d.x, 1 / d.y, 1 / d.z);
            qel.emplace_back(o, d);
            from.push_back(toGlm(o));
            inverse.push_back(toGlm(reciprocal));
            fromBullet.push_back(toBullet(o));
            inverseBullet.push_back(toBullet(reciprocal));
            signs.push_back({d.x < 0 ? 1u : 0u, d.y < 0 ? 1u : 0u, d.z < 0 ? 1u : 0u});
        }
    }
};

Rays const &rays()
{
    static Rays const made;
    return made;
}

void BM_Ray_qel(benchmark::State &state)
{
    Scene const &s = scene();
    Rays const &r = rays();
    eachBox(state, [&](std::size_t q, std::size_t i) { return cMath::intersects(r.qel[q], s.boxes[i]); });
}

void BM_Ray_bullet(benchmark::State &state)
{
    Scene const &s = scene();
    Rays const &r = rays();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        btVector3 const bounds[2] = {s.bullet[i].min, s.bullet[i].max};
        btScalar t;
        return btRayAabb2(r.fromBullet[q], r.inverseBullet[q], r.signs[q].data(), bounds, t, 0, 1e30f);
    });
}

void BM_Ray_eigen(benchmark::State &state)
{
    Scene const &s = scene();
    Rays const &r = rays();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        Eigen::Array3f const from(r.from[q].x, r.from[q].y, r.from[q].z);
        Eigen::Array3f const inverse(r.inverse[q].x, r.inverse[q].y, r.inverse[q].z);
        Eigen::Array3f const a = (s.eigen[i].min().array() - from) * inverse;
        Eigen::Array3f const b = (s.eigen[i].max().array() - from) * inverse;
        float const leave = a.max(b).minCoeff();
        return a.min(b).maxCoeff() <= leave && leave >= 0;
    });
}

void BM_Ray_glm(benchmark::State &state)
{
    Scene const &s = scene();
    Rays const &r = rays();
    eachBox(state, [&](std::size_t q, std::size_t i) {
        glm::vec3 const a = (s.glm[i].min - r.from[q]) * r.inverse[q];
        glm::vec3 const b = (s.glm[i].max - r.from[q]) * r.inverse[q];
        glm::vec3 const low = glm::min(a, b), high = glm::max(a, b);
        float const enter = glm::max(low.x, glm::max(low.y, low.z));
        float const leave = glm::min(high.x, glm::min(high.y, high.z));
        return enter <= leave && leave >= 0;
    });
}

void BM_Ray_batch(benchmark::State &state)
{
    allBoxes(state, [&](std::size_t q, std::uint32_t *hits) {
        return cBoxBatch::intersects(rays().qel[q], scene().boxes.data(), boxCount, hits);
    });
}

// ---- a beam against a box. Prepared: the view is ready made, and the absolute matrix of the peers too

cRectRay const &beam()
{
    static cRectRay const made({-20, 1, 2}, {1, 0.05f, -0.1f}, {0, 0, 4}, {0, 4, 0}, 100);
    return made;
}

struct Beams {
    cRectRayHitTest qel{beam()};
    glm::mat4 view;
    glm::mat3 sizes;
    Eigen::Matrix3f viewEigen, sizesEigen;
    Eigen::Vector3f moveEigen;
    btMatrix3x3 viewBullet, sizesBullet;
    btVector3 moveBullet;

    Beams()
    {
        D3DXMATRIX const &v = qel.view;
        for (int r = 0; r < 4; ++r) {
            for (int c = 0; c < 4; ++c) {
                view[r][c] = v.m[r][c];
                if (r < 3 && c < 3) {
                    sizes[r][c] = std::fabs(v.m[r][c]);
                    viewEigen(c, r) = v.m[r][c];
                    sizesEigen(c, r) = std::fabs(v.m[r][c]);
                    viewBullet[c][r] = v.m[r][c];
                }
            }
        }
        moveEigen = {v._41, v._42, v._43};
        moveBullet = {v._41, v._42, v._43};
        sizesBullet = viewBullet.absolute();
    }

    /// @p at and @p reach  middle and half-size of a box in the view
    template <class Vector>
    bool holds(Vector const &at, Vector const &reach) const
    {
        D3DXVECTOR4 const &limit = qel.posLimit;
        return at[0] - reach[0] < limit.x && at[0] + reach[0] > -limit.x && at[1] - reach[1] < limit.y &&
               at[1] + reach[1] > -limit.y && at[2] + reach[2] > -limit.z;
    }
};

Beams const &beams()
{
    static Beams const made;
    return made;
}

void BM_Beam_qel(benchmark::State &state)
{
    Scene const &s = scene();
    Beams const &b = beams();
    eachBox(state, [&](std::size_t, std::size_t i) { return b.qel.intersects_sse(s.boxes[i]); });
}

void BM_Beam_qelEightPoints(benchmark::State &state)
{
    Scene const &s = scene();
    Beams const &b = beams();
    eachBox(state, [&](std::size_t, std::size_t i) { return b.qel.intersects(s.boxes[i]); });
}

void BM_Beam_bullet(benchmark::State &state)
{
    Scene const &s = scene();
    Beams const &b = beams();
    eachBox(state, [&](std::size_t, std::size_t i) {
        btVector3 const half = (s.bullet[i].max - s.bullet[i].min) * 0.5f;
        btVector3 const middle = s.bullet[i].min + half;
        return b.holds<btVector3>(b.viewBullet * middle + b.moveBullet, b.sizesBullet * half);
    });
}

void BM_Beam_eigen(benchmark::State &state)
{
    Scene const &s = scene();
    Beams const &b = beams();
    eachBox(state, [&](std::size_t, std::size_t i) {
        Eigen::Vector3f const half = s.eigen[i].sizes() * 0.5f;
        Eigen::Vector3f const middle = s.eigen[i].min() + half;
        return b.holds<Eigen::Vector3f>(b.viewEigen * middle + b.moveEigen, b.sizesEigen * half);
    });
}

void BM_Beam_glm(benchmark::State &state)
{
    Scene const &s = scene();
    Beams const &b = beams();
    eachBox(state, [&](std::size_t, std::size_t i) {
        glm::vec3 const half = (s.glm[i].max - s.glm[i].min) * 0.5f;
        glm::vec3 const middle = s.glm[i].min + half;
        return b.holds<glm::vec3>(glm::vec3(b.view * glm::vec4(middle, 1)), b.sizes * half);
    });
}

void BM_Beam_batch(benchmark::State &state)
{
    allBoxes(state, [&](std::size_t, std::uint32_t *hits) {
        return cBoxBatch::intersects(beams().qel, scene().boxes.data(), boxCount, hits);
    });
}

// ---- a beam that is not prepared: each test makes the view

void BM_BeamOnce_qel(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t, std::size_t i) { return cMath::intersects(beam(), s.boxes[i]); });
}

[[gnu::noinline]] bool beamOnceGlm(cRectRay const &ray, GlmBox const &box)
{
    glm::vec3 const from = toGlm(ray.origin), along = toGlm(ray.direction);
    glm::mat4 const view = glm::lookAtRH(from, from + along, toGlm(ray.upNrm));
    bool front = false;
    unsigned mask = 0;
    for (unsigned i = 0; i < 8; ++i) {
        glm::vec3 const corner((i & 1) != 0 ? box.max.x : box.min.x, (i & 2) != 0 ? box.max.y : box.min.y,
                               (i & 4) != 0 ? box.max.z : box.min.z);
        front |= glm::dot(along, corner - from) > 0;
        glm::vec3 const p(view * glm::vec4(corner, 1));
        mask |= (p.x < ray.sizeLeft ? 1u : 0u) | (p.x > -ray.sizeLeft ? 2u : 0u) |
                (p.y < ray.sizeUp ? 4u : 0u) | (p.y > -ray.sizeUp ? 8u : 0u) | (p.z > -ray.rayLen ? 16u : 0u);
    }
    return front && mask == 31;
}

void BM_BeamOnce_glm(benchmark::State &state)
{
    Scene const &s = scene();
    eachBox(state, [&](std::size_t, std::size_t i) { return beamOnceGlm(beam(), s.glm[i]); });
}

void BM_BeamOnce_batch(benchmark::State &state)
{
    allBoxes(state, [&](std::size_t, std::uint32_t *hits) {
        return cBoxBatch::intersects(beam(), scene().boxes.data(), boxCount, hits);
    });
}

void BM_Frustum_batch(benchmark::State &state)
{
    Frustum frustum;
    frustum.setFromMatrix({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, -1.01f, -1, 0, 0, -1.01f, 0});
    allBoxes(state, [&](std::size_t, std::uint32_t *hits) {
        return cBoxBatch::intersects(frustum, scene().boxes.data(), boxCount, hits);
    });
}

// ---- matrices and points

constexpr std::size_t matrixCount =
    120; // not a power of two, so that no result lies 4 096 bytes from an argument

std::vector<float> randomFloats(std::size_t count)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<float> value(-2, 2);
    std::vector<float> floats(count);
    for (float &f : floats) {
        f = value(random);
    }
    return floats;
}

void BM_Matrix_multiply(benchmark::State &state)
{
    std::vector<float> const floats = randomFloats(matrixCount * 16);
    auto const *const in = reinterpret_cast<D3DXMATRIX const *>(floats.data());
    std::vector<D3DXMATRIX> out(matrixCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < matrixCount; ++i) {
            D3DXMatrixMultiply(&out[i], &in[i], &in[matrixCount - 1 - i]);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(matrixCount));
}

void BM_Matrix_multiplyGlm(benchmark::State &state)
{
    std::vector<float> const floats = randomFloats(matrixCount * 16);
    auto const *const in = reinterpret_cast<glm::mat4 const *>(floats.data());
    std::vector<glm::mat4> out(matrixCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < matrixCount; ++i) {
            out[i] = in[i] * in[matrixCount - 1 - i];
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(matrixCount));
}

void multiplyPlain(float *__restrict out, float const *__restrict a, float const *__restrict b)
{
    for (int r = 0; r < 4; ++r) {
        for (int c = 0; c < 4; ++c) {
            float sum = a[r * 4] * b[c];
            for (int k = 1; k < 4; ++k) {
                sum += a[r * 4 + k] * b[k * 4 + c];
            }
            out[r * 4 + c] = sum;
        }
    }
}

void BM_Matrix_multiplyPlain(benchmark::State &state)
{
    std::vector<float> const in = randomFloats(matrixCount * 16);
    std::vector<float> out(matrixCount * 16);
    for (auto _ : state) {
        for (std::size_t i = 0; i < matrixCount; ++i) {
            multiplyPlain(&out[i * 16], &in[i * 16], &in[(matrixCount - 1 - i) * 16]);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(matrixCount));
}

constexpr std::size_t pointCount = 512;

/// @param state  bytes from one point to the next, and from one result to the next
void BM_Points_transformArray(benchmark::State &state)
{
    auto const inStride = static_cast<unsigned>(state.range(0)),
               outStride = static_cast<unsigned>(state.range(1));
    std::vector<float> const in = randomFloats(pointCount * inStride / 4 + 4);
    std::vector<float> out(pointCount * outStride / 4 + 4);
    D3DXMATRIX const m(in.data());
    for (auto _ : state) {
        D3DXVec3TransformArray(reinterpret_cast<D3DXVECTOR4 *>(out.data()), outStride,
                               reinterpret_cast<D3DXVECTOR3 const *>(in.data()), inStride, &m, pointCount);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pointCount));
}

void BM_Points_glm(benchmark::State &state)
{
    std::vector<float> const floats = randomFloats(pointCount * 3 + 16);
    auto const *const in = reinterpret_cast<glm::vec3 const *>(floats.data());
    glm::mat4 const m = *reinterpret_cast<glm::mat4 const *>(floats.data());
    std::vector<glm::vec4> out(pointCount);
    for (auto _ : state) {
        for (std::size_t i = 0; i < pointCount; ++i) {
            out[i] = m * glm::vec4(in[i], 1);
        }
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pointCount));
}

// ---- sine and cosine

template <class SinCos>
void eachAngle(benchmark::State &state, SinCos const &sincos)
{
    std::vector<float> angles = randomFloats(pointCount);
    for (float &angle : angles) {
        angle *= 5;
    }
    float sum = 0;
    for (auto _ : state) {
        for (float const angle : angles) {
            float sine, cosine;
            sincos(angle, &sine, &cosine);
            sum += sine + cosine;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(pointCount));
}

/// Through the pointer, as all code calls it.
void BM_SinCos_sse(benchmark::State &state)
{
    cMath::init(true, true, false, false, false);
    eachAngle(state, [](float angle, float *sine, float *cosine) { cMath::sincos(angle, sine, cosine); });
}

void BM_SinCos_asm(benchmark::State &state)
{
    eachAngle(state, cMath::sincos_asm);
}

void BM_SinCos_c(benchmark::State &state)
{
    eachAngle(state, ::sincosf);
}

BENCHMARK(BM_Box_qel);
BENCHMARK(BM_Box_bullet);
BENCHMARK(BM_Box_eigen);
BENCHMARK(BM_Box_glm);
BENCHMARK(BM_Box_batch) LEVELS;
BENCHMARK(BM_Sphere_qel);
BENCHMARK(BM_Sphere_bullet);
BENCHMARK(BM_Sphere_eigen);
BENCHMARK(BM_Sphere_glm);
BENCHMARK(BM_Sphere_batch) LEVELS;
BENCHMARK(BM_Ray_qel);
BENCHMARK(BM_Ray_bullet);
BENCHMARK(BM_Ray_eigen);
BENCHMARK(BM_Ray_glm);
BENCHMARK(BM_Ray_batch) LEVELS;
BENCHMARK(BM_Beam_qel);
BENCHMARK(BM_Beam_qelEightPoints);
BENCHMARK(BM_Beam_bullet);
BENCHMARK(BM_Beam_eigen);
BENCHMARK(BM_Beam_glm);
BENCHMARK(BM_Beam_batch) LEVELS;
BENCHMARK(BM_BeamOnce_qel);
BENCHMARK(BM_BeamOnce_glm);
BENCHMARK(BM_BeamOnce_batch) LEVELS;
BENCHMARK(BM_Frustum_batch) LEVELS;
BENCHMARK(BM_Matrix_multiply);
BENCHMARK(BM_Matrix_multiplyGlm);
BENCHMARK(BM_Matrix_multiplyPlain);
BENCHMARK(BM_Points_transformArray)->Args({12, 16})->Args({24, 16})->Args({32, 32});
BENCHMARK(BM_Points_glm);
BENCHMARK(BM_SinCos_sse);
BENCHMARK(BM_SinCos_asm);
BENCHMARK(BM_SinCos_c);

} // namespace
