#pragma once

#include "System/System/export.h"
#include "System/math/3D/boundingBoxAA.h"

#include <cstddef>
#include <cstdint>

namespace Qel {

class cBoundingSphere;
class cBoxRay;
class cRay;
class cRectRay;
class cRectRayHitTest;
class Frustum;

/// Tests of one volume against many axis-aligned boxes: the answers of the single tests, several boxes at a
/// time.
///
/// Each takes @p count boxes in a row and writes one bit for each into @p hits: box i is bit i % 32 of word i
/// / 32. There must be room for (count + 31) / 32 words; the bits after the last box are 0. All return the
/// number of hits. Nothing is allocated.
///
/// @code
/// std::vector<std::uint32_t> seen((boxes.size() + 31) / 32);
/// cBoxBatch::intersects(frustum, boxes.data(), boxes.size(), seen.data());
/// for (std::size_t word = 0; word < seen.size(); ++word) {
///     for (std::uint32_t bits = seen[word]; bits != 0; bits &= bits - 1) {
///         draw(word * 32 + std::countr_zero(bits));
///     }
/// }
/// @endcode
///
/// @par Threads  May run on several threads at once, on different results.
class QEL_API cBoxBatch {
public:
    /// As cMath::intersects().
    /// @param t  takes for each box what sIntersection::t would; may be null
    static std::size_t intersects(cRay const &ray, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits, float *t = nullptr);
    /// As cMath::intersects().
    static std::size_t intersects(cBoundingSphere const &sphere, cBoundingBoxAA const *boxes,
                                  std::size_t count, std::uint32_t *hits);
    /// As cMath::intersects().
    static std::size_t intersects(cBoundingBoxAA const &box, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits);
    /// As cMath::intersects().
    static std::size_t intersects(cBoxRay const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits);
    /// As cMath::intersects().
    static std::size_t intersects(cRectRay const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits);
    /// As cRectRayHitTest::intersects_sse().
    static std::size_t intersects(cRectRayHitTest const &beam, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits);
    /// As Frustum::intersects().
    /// @throws Exception 0, "Invalid Plane", if there are fewer planes than are in use
    static std::size_t intersects(Frustum const &frustum, cBoundingBoxAA const *boxes, std::size_t count,
                                  std::uint32_t *hits);
};

} // namespace Qel
