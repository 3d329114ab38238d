#pragma once

#include "Support/D3DX/d3dx9math.h"
#include "System/System/export.h"
#include "System/math/3D/boundingBoxAA.h"
#include "System/math/3D/boundingSphere.h"
#include "System/math/3D/intersection.h"
#include "System/math/3D/ray.h"
#include "System/math/lanes.h"

#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Qel {

class cBoundingBox;
class cBoundingCylinder;
class cBoxRay;
class cOBB;
class cRectRay;
class Frustum;
class PolygonObject;

/// The identity matrix once cMath::init() has run, and zeros until then.
extern QEL_API D3DXMATRIX matrixIdentity;

/// Scalar mathematics, and the tests between volumes.
///
/// Angles are in degrees where a name says 360, 180 or deg, and in radians elsewhere. sqrt, rsqrt, cos and
/// sincos are pointers that are called like functions; init() switches them to the processor's faster forms.
///
/// @par Threads  Call init() before any other thread uses the pointers. All else has no state.
class QEL_API cMath {
public:
    /// @name Set-up
    /// @{

    /// Fills matrixIdentity and picks the forms behind the four pointers. The host calls it once, at start.
    /// @param sse   switches sqrt, rsqrt, cos and sincos to their sse forms
    /// @param sse2  then switches cos and sincos to their sse2 forms
    /// The other features make no difference.
    static void init(bool sse, bool sse2, bool, bool, bool);

    static float (*sqrt)(float);  ///< at first sqrt_base
    static float (*rsqrt)(float); ///< 1 / sqrt(x), approximate; at first rsqrt_base
    static float (*cos)(float);   ///< at first cos_base
    static void (*sincos)(float angle, float *sine, float *cosine); ///< at first sincos_asm
    /// @}

    /// @name The forms behind the pointers
    /// The polynomial of cos_sse and sincos_sse keeps within 1.6e-4 of a quarter turn's sine. Large arguments
    /// add their own rounding, and those of 3e9 and above, and NaN, give a number from -1 to 1 that means
    /// nothing.
    /// @{
    static float sqrt_base(float x);  ///< x times cMath::rsqrt(x), whatever that is set to
    static float sqrt_sse(float x);   ///< correctly rounded
    static float rsqrt_base(float x); ///< from the bits of x and one and a half steps of Newton's
    static float rsqrt_q3(float x);   ///< a shorter one, which no pointer selects
    static float rsqrt_sse(float x);  ///< the processor's estimate, good to 12 bits
    static float cos_base(float x);   ///< exact to float below 1e7, in hardware
    static float cos_sse(float x);
    static float cos_sse2(float x); ///< the values of cos_sse
    static void sincos_asm(float angle, float *sine,
                           float *cosine); ///< exact to float below 1e7, in hardware
    static void sincos_base(float angle, float *sine, float *cosine); ///< the same; no pointer selects it
    static void sincos_sse(float angle, float *sine, float *cosine);
    static void sincos_sse2(float angle, float *sine, float *cosine); ///< the values of sincos_sse
    /// @}

    /// @name Angles
    /// @{
    static float deg2rad(float degrees) { return degrees * 0.017453292f; }
    static float rad2deg(float radians) { return radians * 57.29578f; }
    /// The argument itself from 0 to pi/2; otherwise a quarter of |x| modulo 2 pi, below pi/2.
    static float rad2range0_piDiv2(float x);
    /// The direction of (x, y): in radians, but exactly 90 or 270 where x is 0 (270 for the zero vector).
    static float getAngle(float x, float y);
    static float angleNormalize360(float degrees); ///< 0 to below 360, up to rounding
    static float angleNormalize180(float degrees); ///< above -180, to 180
    static float radNormalize(float radians);      ///< 0 to 2 pi
    /// Whether @p value lies in the arc from @p b up to @p a, or from @p a up to @p b if @p flag is set. An
    /// arc whose end is below its start runs through zero. All three are normalised, as radNormalize() gives
    /// them.
    static bool radNormalized_IsIn(float value, float a, float b, bool flag);
    static float sin(float x);                                        ///< exact to float below 1e7
    static float tan(float x);                                        ///< exact to float below 1e7
    static float isin(float x) { return std::asin(x); }               ///< arc sine
    static float icos(float x) { return std::acos(x); }               ///< arc cosine
    static float itan(float x) { return std::atan(x); }               ///< arc tangent
    static float atan2(float y, float x) { return std::atan2(y, x); } ///< in the right quadrant
    /// @}

    /// @name Numbers
    /// @{
    static float abs(float const &x) { return std::fabs(x); }
    static double abs(double const &x) { return std::fabs(x); }
    /// What stands behind the point, with the sign of x; 0 for numbers of 2 to the 31 and above, which are
    /// whole.
    static float fraction(float x);
    static float saturate(float x) { return x < 0 ? 0 : x > 1 ? 1 : x; } ///< clamped to 0 to 1; NaN stays
    static bool isInteger(float x, float tolerance)
    {
        return std::floor(x + tolerance) == std::ceil(x - tolerance);
    }
    /// Rounds by the current rounding mode, by default to the nearest and ties to even. What no int can hold,
    /// NaN too, gives the smallest int.
    static void floatToInt(float x, int *out);
    static bool isPowerOfTwo(unsigned x) { return x > 1 && std::has_single_bit(x); } ///< not for 0, nor for 1
    /// The smallest power of two that is not below x. 1 for 0, and 1 above 2147483648, where it does not fit.
    static unsigned nextPowerOfTwo(unsigned x) { return x > 0x80000000u ? 1u : std::bit_ceil(x); }
    /// The index of the lowest bit; 0 if x is below 2 or odd.
    static unsigned bitsPowerOfTwo(unsigned x)
    {
        return x < 2 ? 0u : static_cast<unsigned>(std::countr_zero(x));
    }
    static float machine_epsilon(); ///< 2 to the -23: the step from 1 to the next float
    /// @}

    /// @name Vectors
    /// @{
    /// @p in crossed with (0, 0, 1). @p out may be @p in.
    static void perpendicular(D3DXVECTOR3 *out, D3DXVECTOR3 *in);
    /// The rotation that turns the unit vector @p a into the unit vector @p b the short way. Equal and
    /// opposite vectors give the identity.
    static D3DXMATRIX buildRotMatrixFromNormals(D3DXVECTOR3 const *a, D3DXVECTOR3 const *b);
    /// Turns @p v about z by @p angle degrees, counter-clockwise with x to the right and y up. z stays.
    static void rotate2D(D3DXVECTOR3 &v, float angle);
    /// @}

    /// @name Conversions between volumes
    /// @{
    static void convert(cBoundingBoxAA &out, cOBB const &box); ///< the axis-aligned box round @p box
    static void convert_sse(cBoundingBoxAA &out, cOBB const &box);
    static void convert(cOBB &out, cBoundingBox const &box);
    /// @}

    /// @name A ray against something
    /// @p hit may be null; otherwise t is always written, 0 where nothing was hit.
    /// @{

    /// False also for a plane behind the origin; t is then negative. t is 0 for a parallel plane.
    static bool intersects(cRay const &ray, D3DXPLANE const &plane, sIntersection *hit = nullptr);
    /// t is 0 for an origin inside the sphere, and negative for a sphere wholly behind the origin, which
    /// counts as a hit.
    static bool intersects(cRay const &ray, cBoundingSphere const &sphere, sIntersection *hit = nullptr);
    /// t is 0 for an origin strictly inside. A face is hit from outside only, so an origin on a face misses
    /// it.
    static bool intersects(cRay const &ray, cBoundingBoxAA const &box, sIntersection *hit = nullptr);
    /// Hits the front only: the side from which (b - a) x (c - a) points against the ray. A negative t is a
    /// hit. On a miss @p hit is untouched.
    static bool intersects(cRay const &ray, D3DXVECTOR3 const &a, D3DXVECTOR3 const &b, D3DXVECTOR3 const &c,
                           sTriangleIntersection *hit = nullptr);
    /// @}

    /// @name A plane against something
    /// @{

    /// Whether the corners lie on both sides; a corner on the plane belongs to the positive one.
    static bool intersects(D3DXPLANE const &plane, cBoundingBoxAA const &box);
    /// Where the infinite line through @p a and @p b meets the plane.
    /// @param out  takes the point; may be null. Untouched if the line is parallel to the plane.
    static bool intersects(D3DXPLANE const &plane, D3DXVECTOR3 const &a, D3DXVECTOR3 const &b,
                           D3DXVECTOR3 *out = nullptr);
    /// @}

    /// @name A sphere against something
    /// Touching counts, unless it says otherwise.
    /// @{
    static bool intersects(cBoundingSphere const &sphere, D3DXPLANE const &plane);
    static bool intersects(cBoundingSphere const &sphere,
                           cBoundingBox const &box); ///< touching does not count
    static bool intersects(cBoundingBox const &box, cBoundingSphere const &sphere); ///< the same test
    static bool intersects(cBoundingSphere const &sphere, cBoundingBoxAA const &box);
    /// A centre must lie at least radius + 1 beyond a face to miss, so a gap below 1 still counts as a hit.
    static bool intersects(cBoundingSphere const &sphere, cOBB const &box);
    static bool intersects(cBoundingSphere const &a, cBoundingSphere const &b);
    static bool intersects(cBoundingSphere const &sphere, D3DXVECTOR3 const &point);
    /// @param triangle  three points
    static bool intersects(cBoundingSphere const &sphere, D3DXVECTOR3 const *triangle);
    /// @}

    /// @name Cylinders
    /// @{

    /// As spheres round the base locations: the heights play no part.
    static bool intersects(cBoundingCylinder const &a, cBoundingCylinder const &b);
    /// From the base, included, up to the height, excluded, and strictly within the radius of the axis.
    static bool intersects(cBoundingCylinder const &cylinder, D3DXVECTOR3 const &point);
    /// @}

    /// @name A box against something
    /// The forms with @p hit test the corners of the second box against the first, one way: swapping the
    /// boxes can change the result, and boxes that cross without a corner inside miss. @p hit may be null;
    /// otherwise its corners tell which lay inside, and t is 0.
    /// @{
    static bool intersects(cBoundingBoxAA const &a, cBoundingBoxAA const &b); ///< touching does not count
    static bool intersects(cBoundingBox const &a, cBoundingBox const &b, sIntersection *hit = nullptr);
    static bool intersects(cBoundingBoxAA const &a, cBoundingBox const &b, sIntersection *hit = nullptr);
    static bool intersects(cBoundingBox const &a, cBoundingBoxAA const &b, sIntersection *hit = nullptr);
    static bool intersects(cBoundingBox const &box, D3DXVECTOR3 const &point);   ///< with the faces
    static bool intersects(cBoundingBoxAA const &box, D3DXVECTOR3 const &point); ///< with the faces
    /// @}

    /// @name A beam against something
    /// A list of points is compared with the beam as ranges, strictly: their extents must overlap the
    /// cross-section on both axes (and a cRectRay's length), and a point must lie in front of the origin. No
    /// single point has to be inside. An empty list misses. To test many volumes against one cRectRay, use
    /// cRectRayHitTest.
    /// @{
    static bool intersects(cBoxRay const &beam,
                           D3DXVECTOR3 const &point); ///< with the sides and the origin's plane
    static bool intersects(cBoxRay const &beam, D3DXVECTOR3 const *points, unsigned int count);
    static bool intersects(cBoxRay const &beam, cBoundingBoxAA const &box);
    static bool intersects(cRectRay const &beam, D3DXVECTOR3 const *points, unsigned int count);
    static bool intersects(cRectRay const &beam, cBoundingBox const &box);
    static bool intersects(cRectRay const &beam, cBoundingBoxAA const &box);
    /// @}

    /// Whether @p p lies over the triangle, seen along the plane's normal.
    /// @param triangle   three points, wound as the plane's normal asks
    /// @param plane      its d is not used, so the point need not lie on it
    /// @param tolerance  a distance; above 0 it widens the triangle
    static bool pointInTriangle(D3DXVECTOR3 const &p, D3DXVECTOR3 const *triangle, D3DXPLANE const &plane,
                                float tolerance);
    static bool pointInTriangle(D3DXVECTOR3 const &p, D3DXVECTOR3 const *triangle, float tolerance);

    /// A small rectangle round the points, with one side along an edge between two neighbouring points that
    /// have nothing in one quadrant around them.
    /// @param points  in the order of their outline
    /// @param axes    two entries: the half sides
    /// @return its area; 3.4028235e38 if no two points differ, and then @p center and @p axes are untouched
    static float minAreaRect(std::vector<D3DXVECTOR2> const &points, D3DXVECTOR2 &center,
                             D3DXVECTOR2 *const axes);

    /// @name Clipping of convex bodies
    /// Removes what lies outside and closes each cut with a new face, wound like the others. A body that
    /// nothing was cut from gains an empty polygon for each plane.
    /// @{

    /// Uses the first planes of the frustum, as many as its activeMask has bits.
    /// @throws Exception 0, "Invalid Plane", if there are fewer; the body is then clipped by those that there
    /// are
    static void clip(Frustum const &frustum, PolygonObject &body);
    static void clip(cBoundingBoxAA const &box, PolygonObject &body);
    /// @}
};

// The tests that run once for each of many boxes are inline. The lane w of a box takes no part in them.

inline bool cMath::intersects(cBoundingBoxAA const &a, cBoundingBoxAA const &b)
{
    Lanes const half = Lanes::all(0.5f);
    Lanes const minA = Lanes::loadAligned(a.min);
    Lanes const maxA = Lanes::loadAligned(a.max);
    Lanes const minB = Lanes::loadAligned(b.min);
    Lanes const maxB = Lanes::loadAligned(b.max);
    Lanes const apart = ((maxB + minB) * half - (maxA + minA) * half).abs();
    Lanes const reach = (maxA - minA) * half + (maxB - minB) * half;
    return (apart.notLess(reach).bits() & 7) == 0;
}

inline bool cMath::intersects(cBoundingBoxAA const &box, D3DXVECTOR3 const &point)
{
    Lanes const p = lanesOf(point, 0);
    auto const outside =
        Lanes::loadAligned(box.min).notLessEqual(p) | p.notLessEqual(Lanes::loadAligned(box.max));
    return (outside.bits() & 7) == 0;
}

inline bool cMath::intersects(cBoundingSphere const &sphere, cBoundingBoxAA const &box)
{
    // To the nearest point of the box; 0 on an axis on which the centre lies between the two faces.
    Lanes const center = lanesOf(sphere.center, 0);
    Lanes const nearest =
        Lanes::min(Lanes::loadAligned(box.max), Lanes::max(Lanes::loadAligned(box.min), center));
    Lanes const outside = nearest - center;
    return sphere.radius * sphere.radius >= (outside * outside).sumXyz();
}

inline bool cMath::intersects(cRay const &ray, cBoundingBoxAA const &box, sIntersection *hit)
{
    // Without branches and lane operations, so that the compiler can run a loop over boxes several at a time.
    D3DXVECTOR3 const &o = ray.origin;
    D3DXVECTOR3 const &d = ray.direction;
    D3DXVECTOR4 const &low = box.min;
    D3DXVECTOR4 const &high = box.max;
    auto const isWithin = [](float at, float from, float to) -> int { return (from <= at) & (at <= to); };

    // Per axis the one face that the ray can enter by. It does so from outside where t is above 0.
    float const x = ((d.x < 0 ? high.x : low.x) - o.x) / d.x;
    float const y = ((d.y < 0 ? high.y : low.y) - o.y) / d.y;
    float const z = ((d.z < 0 ? high.z : low.z) - o.z) / d.z;
    int const hitsX = (x > 0) & (d.x != 0) & isWithin(o.y + d.y * x, low.y, high.y) &
                      isWithin(o.z + d.z * x, low.z, high.z);
    int const hitsY = (y > 0) & (d.y != 0) & isWithin(o.x + d.x * y, low.x, high.x) &
                      isWithin(o.z + d.z * y, low.z, high.z);
    int const hitsZ = (z > 0) & (d.z != 0) & isWithin(o.x + d.x * z, low.x, high.x) &
                      isWithin(o.y + d.y * z, low.y, high.y);
    int const inside =
        (low.x < o.x) & (o.x < high.x) & (low.y < o.y) & (o.y < high.y) & (low.z < o.z) & (o.z < high.z);
    if (hit != nullptr) {
        float best = hitsX != 0 ? x : 0;
        best = hitsY != 0 && (hitsX == 0 || y < best) ? y : best;
        best = hitsZ != 0 && ((hitsX | hitsY) == 0 || z < best) ? z : best;
        hit->t = best;
    }
    return (inside | hitsX | hitsY | hitsZ) != 0;
}

} // namespace Qel
