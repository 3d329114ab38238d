#pragma once

#include <cstdint>

namespace Qel {

/// Where a test hit. A ray test fills @ref t, a test of a box's corners fills @ref corners.
struct sIntersection {
    float t = 0;              ///< along the ray, in lengths of its direction
    std::uint8_t corners = 0; ///< bit i is set if corner i of the second box lies inside the first
};

/// Where a ray hit a triangle.
struct sTriangleIntersection {
    float t;                   ///< along the ray, in lengths of its direction
    float u;                   ///< share of the second vertex at the hit
    float v;                   ///< share of the third vertex at the hit
    std::uint32_t reserved[6]; ///< the application's own; the library copies them and nothing else
    std::uint8_t backFacing;   ///< 0: only the front of a triangle is hit

    sTriangleIntersection() {} // leaves the fields as they are
};

static_assert(sizeof(sIntersection) == 8 && sizeof(sTriangleIntersection) == 40);

} // namespace Qel
