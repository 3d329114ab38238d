#include "System/math/3D/boxBatch.h"

#include "System/System/exception.h"
#include "System/math/3D/Frustum.h"
#include "System/math/3D/boxRay.h"
#include "System/math/3D/rectRay.h"
#include "System/math/3D/rectRayHitTest.h"
#include "System/math/lanes.h"
#include "System/math/math.h"

#include "Tests/math/atEveryLevel.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <random>
#include <vector>

namespace Qel {
namespace {

constexpr std::size_t boxCount = 203; // whole words and a rest that is no multiple of any width

class BoxBatch : public testing::Test {
protected:
    BoxBatch()
    {
        std::mt19937 random(41);
        std::uniform_real_distribution<float> at(-6, 6), size(0.1f, 3);
        for (std::size_t i = 0; i < boxCount; ++i) {
            D3DXVECTOR3 const middle(at(random), at(random), at(random));
            D3DXVECTOR3 const half(size(random), size(random), size(random));
            boxes.emplace_back(middle - half, middle + half);
        }
        // On the grid, where bounds touch; and what no box should be.
        for (std::size_t i = 0; i < boxCount; i += 3) {
            for (int axis = 0; axis < 4; ++axis) {
                boxes[i].min[axis] = std::round(boxes[i].min[axis]);
                boxes[i].max[axis] = std::round(boxes[i].max[axis]);
            }
        }
        for (std::size_t i = 90; i < 110; ++i) {
            boxes[i].max.x = boxes[i].max.z = HUGE_VALF; // where 0 / 0 and infinities tell
        }
        boxes[7].max.x = HUGE_VALF;
        boxes[20].min.y = -HUGE_VALF;
        boxes[33].max.z = std::nanf("");
        boxes[50].min = boxes[50].max;
        boxes[61].max.x = boxes[61].min.x - 1;
        boxes[202].max.y = HUGE_VALF;
    }

    template <class Volume, class Single>
    void expectSameAs(Volume const &volume, Single const &single)
    {
        for (std::size_t const count : {boxCount, std::size_t{64}, std::size_t{1}, std::size_t{0}}) {
            std::array<std::uint32_t, 8> hits;
            hits.fill(0xAAAAAAAAu);
            std::size_t const total = cBoxBatch::intersects(volume, boxes.data(), count, hits.data());
            std::size_t expected = 0;
            for (std::size_t i = 0; i < count; ++i) {
                bool const hit = single(boxes[i]);
                expected += hit ? 1 : 0;
                ASSERT_EQ(hits[i / 32] >> i % 32 & 1, hit ? 1u : 0u) << "box " << i << " of " << count;
            }
            ASSERT_EQ(total, expected);
            std::size_t const words = (count + 31) / 32;
            if (count % 32 != 0) {
                ASSERT_EQ(hits[words - 1] >> count % 32, 0u);
            }
            ASSERT_EQ(hits[words], 0xAAAAAAAAu) << "a word too many";
            m_hits += total;
        }
    }
    void expectSameDistances(cRay const &ray)
    {
        std::array<std::uint32_t, 7> hits;
        std::array<float, boxCount + 1> t;
        t.fill(-77);
        cBoxBatch::intersects(ray, boxes.data(), boxCount, hits.data(), t.data());
        for (std::size_t i = 0; i < boxCount; ++i) {
            sIntersection hit;
            cMath::intersects(ray, boxes[i], &hit);
            ASSERT_EQ(t[i], hit.t) << i;
        }
        ASSERT_EQ(t[boxCount], -77.0f);
    }
    std::vector<cBoundingBoxAA> boxes;
    std::size_t m_hits = 0;
};

TEST_F(BoxBatch, GivesTheAnswersOfTheSingleTestsAtEveryLevel)
{
    std::mt19937 random;
    std::uniform_real_distribution<float> at(-8, 8), size(0.1f, 4);
    auto const vector = [&](int round) {
        D3DXVECTOR3 v(at(random), at(random), at(random));
        if (round % 3 == 0) {
            v = {std::round(v.x), std::round(v.y), std::round(v.z)};
        }
        if (round % 7 == 0) {
            v.y = 0;
        }
        return v;
    };
    auto const queries = [&](int round) {
        SCOPED_TRACE(round);
        cRay const ray(vector(round), vector(round));
        expectSameAs(ray, [&](auto const &box) { return cMath::intersects(ray, box); });
        expectSameDistances(ray);
        cBoundingSphere const sphere(vector(round), size(random));
        expectSameAs(sphere, [&](auto const &box) { return cMath::intersects(sphere, box); });
        cBoundingBoxAA const other(vector(round), vector(round));
        expectSameAs(other, [&](auto const &box) { return cMath::intersects(other, box); });
        cBoxRay const boxRay(vector(round), vector(round), {0, 1, 0.1f}, size(random));
        expectSameAs(boxRay, [&](auto const &box) { return cMath::intersects(boxRay, box); });
        cRectRay const rectRay(vector(round), vector(round), {0, size(random), 0.5f}, {size(random), 0, 0.1f},
                               9);
        expectSameAs(rectRay, [&](auto const &box) { return cMath::intersects(rectRay, box); });
        cRectRayHitTest const prepared(rectRay);
        expectSameAs(prepared, [&](auto const &box) { return prepared.intersects_sse(box); });
        Frustum frustum;
        for (int i = 0; i < round % 8; ++i) {
            D3DXVECTOR3 const normal = vector(round);
            frustum.planes.emplace_back(normal.x, normal.y, normal.z, 10.0f);
        }
        frustum.setActiveCount(static_cast<unsigned>(round % 8));
        expectSameAs(frustum, [&](auto const &box) { return frustum.intersects(box); });
    };
    atEveryLevel([&] {
        random.seed(42);
        m_hits = 0;
        for (int round = 0; round < 60; ++round) {
            queries(round);
        }
        EXPECT_GT(m_hits, 10000u);
    });
    Frustum broken;
    broken.setActiveCount(1);
    std::uint32_t word;
    EXPECT_THROW(cBoxBatch::intersects(broken, boxes.data(), 1, &word), Exception);
}

// All that lanes can do with two groups of four, as bits; a NaN is any NaN.
template <class L>
std::vector<std::uint32_t> results(float const *f, float const *g)
{
    L const a = L::load(f), b = L::load(g);
    L x, y, z;
    L::transposeXyz(a, b, a + b, b, x, y, z);
    std::vector<std::uint32_t> all{static_cast<std::uint32_t>(((a < b) | (a <= b)).bits()),
                                   static_cast<std::uint32_t>((a.notLess(b) & a.notLessEqual(b)).bits())};
    for (L const &lanes : {a + b, a - b, a * b, a / b, L::min(a, b), L::max(a, b), a.abs(),
                           a.template splat<1>(), (a < b).choose(a, b), L::all(a.sumXyz()), x, y, z}) {
        float values[4];
        lanes.store(values);
        for (float const value : values) {
            all.push_back(std::isnan(value) ? 0x7FC00000u : std::bit_cast<std::uint32_t>(value));
        }
    }
    return all;
}

// The plain form stands in on other processors, so it must give the same bits.
TEST(Lanes, ThePlainFormIsTheSameToTheBit)
{
    std::vector<float> const values = {0.0f,   -0.0f,     1.0f,       -1.5f,        3e38f,
                                       1e-40f, HUGE_VALF, -HUGE_VALF, std::nanf("")};
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            float const f[4] = {values[i], values[j], values[(i + 1) % 9], 2};
            float const g[4] = {values[j], values[i], values[(j + 2) % 9], -3};
            EXPECT_EQ(results<PlainLanes>(f, g), results<Lanes>(f, g)) << values[i] << ' ' << values[j];
        }
    }
}

} // namespace
} // namespace Qel
