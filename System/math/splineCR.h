#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

#include <vector>

namespace Qel {

/// Catmull-Rom spline through points in space, walked as a cubic Hermite curve from stored tangents.
///
/// @code
/// cSplineCR path;
/// path.setAutoCalculate(false); // each addValue() would compute every tangent anew
/// for (D3DXVECTOR3 const &stop : stops) {
///     path.addValue(stop);
/// }
/// path.recalcTangents();
/// D3DXVECTOR3 const halfWay = path.interpolate(0.5F);
/// @endcode
///
/// A parameter runs from 0 at the first point to 1 at the last, and every segment takes an equal part of it,
/// however long it is. A spline is closed if its first and last point are equal.
///
/// Parameters outside 0 to 1 count as the nearer end (a NaN as 0), an index beyond the last point as the last
/// point, and a spline without points is at the origin.
///
/// @par Threads  Takes no lock. References that it gives out end with the next addValue().
class QEL_API cSplineCR {
public:
    static float const mCoeffs[4][4]; ///< the cubic Hermite basis, row by row

    /// Appends a point, with a zero tangent; then recalcTangents() if they are calculated automatically.
    void addValue(D3DXVECTOR3 const &point);

    /// Replaces a point; then recalcTangents() if they are calculated automatically.
    /// @param index  of a point; otherwise nothing happens
    void updatePoint(unsigned short index, D3DXVECTOR3 const &point);

    D3DXVECTOR3 const &getValue(unsigned short index) const;   ///< a point
    D3DXVECTOR3 const &getTangent(unsigned short index) const; ///< a point's tangent
    D3DXVECTOR3 const &getTangent(unsigned int index) const;   ///< a point's tangent
    /// A point's tangent; below 0, that of the first.
    D3DXVECTOR3 const &getTangent(int index) const
    {
        return getTangent(index < 0 ? 0U : static_cast<unsigned int>(index));
    }

    /// Sets one tangent, which lasts until tangents are calculated again.
    /// @param index  of a point; otherwise nothing happens
    void setTangent(unsigned int index, D3DXVECTOR3 const &tangent);

    /// The number of points modulo 65536.
    unsigned short getNumPoints() const { return static_cast<unsigned short>(points.size()); }

    void clear(); ///< drops all points; automatic calculation stays as it is

    /// Says whether addValue() and updatePoint() calculate the tangents; true at first. Calculates nothing.
    void setAutoCalculate(bool automatic) { autoCalculate = automatic; }

    /// Sets every tangent to half the way from the point before to the point after. At the ends of an open
    /// spline it is half the way to or from the one neighbour. Does nothing for fewer than two points.
    void recalcTangents();

    D3DXVECTOR3 interpolate(float t) const; ///< the position on the whole curve

    /// The position on the segment from a point to the next: exactly the points at 0 and at 1.
    D3DXVECTOR3 interpolate(unsigned int index, float t) const;

    /// The position on the Hermite segment from @p p0 with tangent @p t0 to @p p1 with tangent @p t1.
    /// @param t  0 to 1; beyond, the curve goes on
    static D3DXVECTOR3 interpolate(D3DXVECTOR3 const &p0, D3DXVECTOR3 const &t0, D3DXVECTOR3 const &p1,
                                   D3DXVECTOR3 const &t1, float t);

    /// The direction of the curve: a unit vector inside a segment, the stored tangent as it is at a point.
    D3DXVECTOR3 getTangentVector(float t) const;

    /// The length of the chords between positions at steps of the parameter, from the first point on.
    ///
    /// The parameter adds up in single precision, so that rounding may leave out the last chord. A step that
    /// no longer moves the parameter ends with one chord to the last point.
    /// @param steps  0 gives 0
    float approximateLength(unsigned int steps) const;

    static D3DXMATRIX getCoeffMatrix(); ///< mCoeffs

private:
    /// A place on the whole curve.
    struct Place {
        std::size_t index; // the segment's first point
        float t;           // 0 to 1 within the segment
    };
    Place placeAt(float t) const;
    D3DXVECTOR3 const &at(std::vector<D3DXVECTOR3> const &values, std::size_t index) const;

    bool autoCalculate = true;
    std::vector<D3DXVECTOR3> points;
    std::vector<D3DXVECTOR3> tangents; // one for each point
};

} // namespace Qel
