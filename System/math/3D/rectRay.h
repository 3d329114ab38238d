#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// A beam of rectangular cross-section along a ray, with a length.
///
/// It reaches `sizeUp` to each side along the unit vector `upNrm` and `sizeLeft` along `leftNrm`.
/// The direction is kept as it is given. To widen a beam by many points whose order must not matter, run
/// blowUpInit(), blowUpAddPoint() for each and blowUpFinish().
class QEL_API cRectRay {
public:
    /// How far the points of a blow-up sequence reach.
    struct sBlowUp {
        D3DXPLANE planeUp;   ///< through the beam's axis, across up
        D3DXPLANE planeLeft; ///< through the beam's axis, across left
        float minUp, maxUp;
        float minLeft, maxLeft;
        D3DXVECTOR3 origin; ///< of the beam at the start
    };

    D3DXVECTOR3 origin;
    D3DXVECTOR3 direction;
    D3DXVECTOR3 upNrm;
    D3DXVECTOR3 leftNrm;
    float sizeUp;
    float sizeLeft;
    float rayLen;

    cRectRay();
    /// @param up, left  from the axis to the sides, neither of length 0 (the unit vectors would be NaN)
    cRectRay(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
             D3DXVECTOR3 const &left, float newRayLen);

    void set(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
             D3DXVECTOR3 const &left, float newRayLen);
    void set(D3DXVECTOR3 const &newOrigin, D3DXVECTOR3 const &newDirection, D3DXVECTOR3 const &up,
             D3DXVECTOR3 const &left); ///< leaves the length

    D3DXVECTOR3 getOrigin() const { return origin; }
    D3DXVECTOR3 getDirection() const { return direction; }
    float getRayLen() const { return rayLen; }
    D3DXVECTOR3 getUp() const { return upNrm * sizeUp; }
    D3DXVECTOR3 getUpNrm() const { return upNrm; }
    float getSizeUp() const { return sizeUp; }
    D3DXVECTOR3 getLeft() const { return leftNrm * sizeLeft; }
    D3DXVECTOR3 getLeftNrm() const { return leftNrm; }
    float getSizeLeft() const { return sizeLeft; }
    float getArea() const { return sizeLeft * sizeUp * 4; } ///< of the whole cross-section

    void translate(D3DXVECTOR3 const &by) { origin += by; }

    /// Widens the beam to take the point in.
    /// @param moveCenter  false: both sides move alike; true: only the side that the point passes moves, and
    /// the
    ///                    origin follows into the middle
    void addPoint(D3DXVECTOR3 const &p, bool moveCenter);

    void blowUpInit(sBlowUp &s) const;
    static void blowUpAddPoint(sBlowUp &s, D3DXVECTOR3 const &p);
    static void blowUpAddPoints(sBlowUp &s, D3DXVECTOR3 const *points, unsigned int count);
    /// Takes the sequence's extent over. @param moveCenter  as for addPoint()
    void blowUpFinish(sBlowUp const &s, bool moveCenter);
};

} // namespace Qel
