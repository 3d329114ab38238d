#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/math/3D/boundingBoxAA.h"

#include <vector>

namespace Qel {

/// A closed convex body, made of its faces. What cMath::clip() cuts.
///
/// The vertices a, b, c of a face run so that (b - a) x (c - a) points out of the body. Clipping can leave
/// empty polygons in the list.
class QEL_API PolygonObject {
public:
    using Polygon = std::vector<D3DXVECTOR3>;

    std::vector<Polygon> polygons;

    PolygonObject() = default;
    explicit PolygonObject(cBoundingBoxAA const &box); ///< the six faces of the box

    bool isEmpty() const; ///< true if no polygon has a vertex
    /// The axis-aligned box round all vertices.
    /// @return false for a body without a vertex; @p out is then untouched
    bool getBounds(cBoundingBoxAA &out) const;
    void transform(D3DXMATRIX const &m);           ///< takes each vertex through @p m, with no division by w
    void transformAndProject(D3DXMATRIX const &m); ///< the same, and each divided by its w
};

} // namespace Qel
