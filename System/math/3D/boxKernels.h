#pragma once

#include <cstddef>
#include <cstdint>

// What the kernels of each level take and give: plain floats, so that no inline function is compiled for a
// wider processor than the rest of the library.

namespace Qel {

struct RayQuery {
    float origin[3];
    float direction[3];
    float *t; ///< one for each box; may be null
};

struct SphereQuery {
    float center[3];
    float radiusSq;
};

struct BoxQuery {
    float center[3];
    float half[3];
};

/// The limits of a prepared beam in its own view.
struct ViewQuery {
    float view[4][4];
    float negLimit[3];
    float posLimit[2];
};

/// A beam whose answers are those of a box's eight corners.
struct BeamQuery {
    float view[4][4];
    float origin[3];
    float direction[3];
    float size[2];
    float length;
    bool limited;
    /// The answer for a box whose corners are not all finite.
    bool (*single)(void const *beam, float const *box);
    void const *beam;
};

struct FrustumQuery {
    float const *planes; ///< four floats each
    std::size_t count;
};

/// The kernels of one level. A box is eight floats, min and max. All return the number of hits.
struct BoxKernels {
    template <class Query>
    using Kernel = std::size_t (*)(Query const &query, float const *boxes, std::size_t count,
                                   std::uint32_t *hits);

    Kernel<RayQuery> ray;
    Kernel<SphereQuery> sphere;
    Kernel<BoxQuery> box;
    Kernel<ViewQuery> view;
    Kernel<BeamQuery> beam;
    Kernel<FrustumQuery> frustum;
};

extern BoxKernels const boxKernelsBase;
#if defined(__x86_64__)
extern BoxKernels const boxKernelsAvx2;
extern BoxKernels const boxKernelsAvx512;
#endif

} // namespace Qel
