#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"

namespace Qel {

/// An oriented box: a matrix whose first three rows are the half-extent vectors along the box's own axes, and
/// whose last row is its middle. In a well-formed box the w are 0, 0, 0 and 1.
///
/// The rows are not unit vectors, so a box from -1 to 1 that goes through the matrix becomes this box.
/// Corners run as in cBoundingBox, with + for plus an axis row: 0 + + +, 1 + + -, 2 - + -, 3 - + +, 4 + - +,
/// 5 + - -, 6 - - -, 7 - - +.
class QEL_API QEL_SHARES_STORAGE cOBB {
public:
    alignas(16) D3DXVECTOR4 xaxis;
    D3DXVECTOR4 yaxis;
    D3DXVECTOR4 zaxis;
    D3DXVECTOR4 origin;

    cOBB() {} // leaves the fields as they are

    /// The matrix itself, seen as a box: nothing is copied.
    /// @param m  on a 16-byte boundary, checked in debug builds
    static cOBB &fromMatrix(D3DXMATRIX &m);
    static cOBB const &fromMatrix(D3DXMATRIX const &m);

    D3DXVECTOR3 &xaxis3() { return reinterpret_cast<D3DXVECTOR3 &>(xaxis); }
    D3DXVECTOR3 const &xaxis3() const { return reinterpret_cast<D3DXVECTOR3 const &>(xaxis); }
    D3DXVECTOR3 &yaxis3() { return reinterpret_cast<D3DXVECTOR3 &>(yaxis); }
    D3DXVECTOR3 const &yaxis3() const { return reinterpret_cast<D3DXVECTOR3 const &>(yaxis); }
    D3DXVECTOR3 &zaxis3() { return reinterpret_cast<D3DXVECTOR3 &>(zaxis); }
    D3DXVECTOR3 const &zaxis3() const { return reinterpret_cast<D3DXVECTOR3 const &>(zaxis); }
    D3DXVECTOR3 &origin3() { return reinterpret_cast<D3DXVECTOR3 &>(origin); }
    D3DXVECTOR3 const &origin3() const { return reinterpret_cast<D3DXVECTOR3 const &>(origin); }
    D3DXVECTOR4 &xaxis4() { return xaxis; }
    D3DXVECTOR4 const &xaxis4() const { return xaxis; }
    D3DXVECTOR4 &yaxis4() { return yaxis; }
    D3DXVECTOR4 const &yaxis4() const { return yaxis; }
    D3DXVECTOR4 &zaxis4() { return zaxis; }
    D3DXVECTOR4 const &zaxis4() const { return zaxis; }
    D3DXVECTOR4 &origin4() { return origin; }
    D3DXVECTOR4 const &origin4() const { return origin; }

    /// @name Along the diagonal from corner 6 to corner 0
    /// @{
    D3DXVECTOR3 ext3() const { return xaxis3() + yaxis3() + zaxis3(); } ///< the sum of the three rows
    D3DXVECTOR4 ext4() const { return xaxis + yaxis + zaxis; }
    D3DXVECTOR3 size3() const { return ext3() * 2; }
    D3DXVECTOR4 size4() const { return ext4() * 2; }
    D3DXVECTOR3 min3() const { return origin3() - xaxis3() - yaxis3() - zaxis3(); }
    D3DXVECTOR4 min4() const { return origin - xaxis - yaxis - zaxis; }
    D3DXVECTOR3 max3() const { return origin3() + xaxis3() + yaxis3() + zaxis3(); }
    D3DXVECTOR4 max4() const { return origin + xaxis + yaxis + zaxis; }
    /// @}

    void transform(D3DXMATRIX const &m);                  ///< this becomes this times @p m
    void transform(cOBB &out, D3DXMATRIX const &m) const; ///< @p out becomes this times @p m
    void move(D3DXVECTOR3 const &by) { origin3() += by; }
    void move(D3DXVECTOR4 const &by) { origin += by; } ///< all four lanes

    /// @name The eight corners
    /// @{
    void extractEdges(D3DXVECTOR3 *out) const;
    void extractEdges(D3DXVECTOR4 *out) const;
    void extractEdges_sse(D3DXVECTOR4 *out) const;
    void transformEdges(D3DXVECTOR3 *out, D3DXMATRIX const &m) const; ///< those of this box times @p m
    void transformEdges(D3DXVECTOR4 *out, D3DXMATRIX const &m) const;
    void transformEdges_sse(D3DXVECTOR4 *out, D3DXMATRIX const &m) const;
    /// @}

    /// @name The axis-aligned box round it
    /// @{
    void aabbExt3(D3DXVECTOR3 &out) const; ///< its half-size: the sum of the rows' absolute values
    void aabbExt4(D3DXVECTOR4 &out) const;
    void aabbExt4_sse(D3DXVECTOR4 &out) const;
    void toAABB(D3DXVECTOR3 &min, D3DXVECTOR3 &max) const;
    void toAABB(D3DXVECTOR4 &min, D3DXVECTOR4 &max) const;
    void toAABB_sse(D3DXVECTOR4 &min, D3DXVECTOR4 &max) const;
    /// @}
};

static_assert(sizeof(cOBB) == sizeof(D3DXMATRIX));

} // namespace Qel
