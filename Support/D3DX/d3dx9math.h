#pragma once

#include "Support/export.h"

#include <cmath>
#include <cstdint>
#include <cstring>

// The value types of the library's geometry, and the functions over them.
//
// All types are plain records of 32-bit floats: no virtual operations, no invariants, and default
// constructors that leave the floats as they are. Vectors are rows, so a point goes through a matrix as
// p * M, and A * B applies A first. Angles are in radians; a positive angle turns counter-clockwise when
// the axis points at the viewer of a right-handed system.
//
// Every function takes its result first and gives that pointer back. The result may be the same object as
// an argument. No pointer may be null unless it says so. Division by zero and NaN give what IEEE 754
// arithmetic gives; nothing traps.
//
// Constructors from pointers and base records are implicit on purpose: callers pass arrays as vectors.

// Volumes hand out their rows as vectors of three or four floats and are read as matrices in place, so the
// compiler must not take two of these types for different storage.
#define QEL_SHARES_STORAGE __attribute__((__may_alias__))

/// A half-precision float (IEEE 754 binary16): sign, 5 bits of exponent, 10 bits of fraction.
struct D3DXFLOAT16 {
    std::uint16_t value; ///< the bits

    D3DXFLOAT16() = default; // leaves the bits as they are
    /// Rounds to the nearest half, ties to even; from 65520 on that is infinity. A NaN stays one.
    QEL_API D3DXFLOAT16(float f);
    QEL_API operator float() const; ///< exact
};

/// Widens @p n halves. Exact, with denormals, infinities and NaN.
/// @param out  @p n floats; may start where @p in starts
/// @return @p out
QEL_API float *D3DXFloat16To32Array(float *out, D3DXFLOAT16 const *in, unsigned n);

/// A vector of two floats.
struct D3DXVECTOR2 {
    float x;
    float y;

    D3DXVECTOR2() {} // leaves the floats as they are
    D3DXVECTOR2(float const *f) : x(f[0]), y(f[1]) {}
    D3DXVECTOR2(D3DXFLOAT16 const *f) { D3DXFloat16To32Array(*this, f, 2); }
    D3DXVECTOR2(float fx, float fy) : x(fx), y(fy) {}

    operator float *() { return reinterpret_cast<float *>(this); }
    operator float const *() const { return reinterpret_cast<float const *>(this); }

    D3DXVECTOR2 &operator+=(D3DXVECTOR2 const &v) { return *this = *this + v; }
    D3DXVECTOR2 &operator-=(D3DXVECTOR2 const &v) { return *this = *this - v; }
    D3DXVECTOR2 &operator*=(float s) { return *this = *this * s; }
    D3DXVECTOR2 &operator/=(float s) { return *this *= 1.0f / s; }

    D3DXVECTOR2 operator+() const { return *this; }
    D3DXVECTOR2 operator-() const { return {-x, -y}; }
    D3DXVECTOR2 operator+(D3DXVECTOR2 const &v) const { return {x + v.x, y + v.y}; }
    D3DXVECTOR2 operator-(D3DXVECTOR2 const &v) const { return {x - v.x, y - v.y}; }
    D3DXVECTOR2 operator*(float s) const { return {x * s, y * s}; }
    D3DXVECTOR2 operator/(float s) const { return *this * (1.0f / s); } ///< by the reciprocal, taken once

    int operator==(D3DXVECTOR2 const &v) const { return x == v.x && y == v.y; } ///< exact, element by element
    int operator!=(D3DXVECTOR2 const &v) const { return x != v.x || y != v.y; }
};

inline D3DXVECTOR2 operator*(float s, D3DXVECTOR2 const &v)
{
    return v * s;
}

/// Three floats, x, y, z.
struct QEL_SHARES_STORAGE _D3DVECTOR {
    float x;
    float y;
    float z;
};

/// A vector of three floats.
struct QEL_SHARES_STORAGE D3DXVECTOR3 : _D3DVECTOR {
    D3DXVECTOR3() {} // leaves the floats as they are
    D3DXVECTOR3(float const *f) : _D3DVECTOR{f[0], f[1], f[2]} {}
    D3DXVECTOR3(D3DXFLOAT16 const *f) { D3DXFloat16To32Array(*this, f, 3); }
    D3DXVECTOR3(float fx, float fy, float fz) : _D3DVECTOR{fx, fy, fz} {}
    D3DXVECTOR3(_D3DVECTOR const &v) : _D3DVECTOR(v) {}

    operator float *() { return reinterpret_cast<float *>(this); }
    operator float const *() const { return reinterpret_cast<float const *>(this); }

    D3DXVECTOR3 &operator+=(D3DXVECTOR3 const &v) { return *this = *this + v; }
    D3DXVECTOR3 &operator-=(D3DXVECTOR3 const &v) { return *this = *this - v; }
    D3DXVECTOR3 &operator*=(float s) { return *this = *this * s; }
    D3DXVECTOR3 &operator/=(float s) { return *this *= 1.0f / s; }

    D3DXVECTOR3 operator+() const { return *this; }
    D3DXVECTOR3 operator-() const { return {-x, -y, -z}; }
    D3DXVECTOR3 operator+(D3DXVECTOR3 const &v) const { return {x + v.x, y + v.y, z + v.z}; }
    D3DXVECTOR3 operator-(D3DXVECTOR3 const &v) const { return {x - v.x, y - v.y, z - v.z}; }
    D3DXVECTOR3 operator*(float s) const { return {x * s, y * s, z * s}; }
    D3DXVECTOR3 operator/(float s) const { return *this * (1.0f / s); } ///< by the reciprocal, taken once

    /// Exact, element by element.
    int operator==(D3DXVECTOR3 const &v) const { return x == v.x && y == v.y && z == v.z; }
    int operator!=(D3DXVECTOR3 const &v) const { return x != v.x || y != v.y || z != v.z; }
};

inline D3DXVECTOR3 operator*(float s, D3DXVECTOR3 const &v)
{
    return v * s;
}

/// A vector of four floats.
struct QEL_SHARES_STORAGE D3DXVECTOR4 {
    float x;
    float y;
    float z;
    float w;

    D3DXVECTOR4() {} // leaves the floats as they are
    D3DXVECTOR4(float const *f) : x(f[0]), y(f[1]), z(f[2]), w(f[3]) {}
    D3DXVECTOR4(D3DXFLOAT16 const *f) { D3DXFloat16To32Array(*this, f, 4); }
    D3DXVECTOR4(_D3DVECTOR const &v, float fw) : x(v.x), y(v.y), z(v.z), w(fw) {}
    D3DXVECTOR4(float fx, float fy, float fz, float fw) : x(fx), y(fy), z(fz), w(fw) {}

    operator float *() { return reinterpret_cast<float *>(this); }
    operator float const *() const { return reinterpret_cast<float const *>(this); }

    D3DXVECTOR4 &operator+=(D3DXVECTOR4 const &v) { return *this = *this + v; }
    D3DXVECTOR4 &operator-=(D3DXVECTOR4 const &v) { return *this = *this - v; }
    D3DXVECTOR4 &operator*=(float s) { return *this = *this * s; }
    D3DXVECTOR4 &operator/=(float s) { return *this *= 1.0f / s; }

    D3DXVECTOR4 operator+() const { return *this; }
    D3DXVECTOR4 operator-() const { return {-x, -y, -z, -w}; }
    D3DXVECTOR4 operator+(D3DXVECTOR4 const &v) const { return {x + v.x, y + v.y, z + v.z, w + v.w}; }
    D3DXVECTOR4 operator-(D3DXVECTOR4 const &v) const { return {x - v.x, y - v.y, z - v.z, w - v.w}; }
    D3DXVECTOR4 operator*(float s) const { return {x * s, y * s, z * s, w * s}; }
    D3DXVECTOR4 operator/(float s) const { return *this * (1.0f / s); } ///< by the reciprocal, taken once

    /// Exact, element by element.
    int operator==(D3DXVECTOR4 const &v) const { return x == v.x && y == v.y && z == v.z && w == v.w; }
    int operator!=(D3DXVECTOR4 const &v) const { return x != v.x || y != v.y || z != v.z || w != v.w; }
};

inline D3DXVECTOR4 operator*(float s, D3DXVECTOR4 const &v)
{
    return v * s;
}

/// The plane a x + b y + c z + d = 0. A point has a positive value on the side that (a, b, c) points to.
struct D3DXPLANE {
    float a;
    float b;
    float c;
    float d;

    D3DXPLANE() {} // leaves the floats as they are
    D3DXPLANE(float const *f) : a(f[0]), b(f[1]), c(f[2]), d(f[3]) {}
    D3DXPLANE(D3DXFLOAT16 const *f) { D3DXFloat16To32Array(*this, f, 4); }
    D3DXPLANE(float fa, float fb, float fc, float fd) : a(fa), b(fb), c(fc), d(fd) {}

    operator float *() { return reinterpret_cast<float *>(this); }
    operator float const *() const { return reinterpret_cast<float const *>(this); }

    D3DXPLANE &operator*=(float s) { return *this = *this * s; }
    D3DXPLANE &operator/=(float s) { return *this *= 1.0f / s; }

    D3DXPLANE operator+() const { return *this; }
    D3DXPLANE operator-() const { return {-a, -b, -c, -d}; }
    D3DXPLANE operator*(float s) const { return {a * s, b * s, c * s, d * s}; }
    D3DXPLANE operator/(float s) const { return *this * (1.0f / s); } ///< by the reciprocal, taken once

    /// Exact, element by element.
    int operator==(D3DXPLANE const &p) const { return a == p.a && b == p.b && c == p.c && d == p.d; }
    int operator!=(D3DXPLANE const &p) const { return a != p.a || b != p.b || c != p.c || d != p.d; }
};

inline D3DXPLANE operator*(float s, D3DXPLANE const &p)
{
    return p * s;
}

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic" // the two views of a matrix need an unnamed struct

/// Sixteen floats, row by row: _12 is row 1, column 2, and so is m[0][1].
struct QEL_SHARES_STORAGE _D3DMATRIX {
    union {
        struct {
            float _11, _12, _13, _14;
            float _21, _22, _23, _24;
            float _31, _32, _33, _34;
            float _41, _42, _43, _44;
        };
        float m[4][4];
    };
};

#pragma GCC diagnostic pop

struct QEL_SHARES_STORAGE D3DXMATRIX;

/// What D3DXMatrixMultiply() calls: the form that suits the processor, chosen when the library is loaded. Not
/// for direct use.
extern QEL_API void (*d3dxMatrixMultiplyForm)(D3DXMATRIX *out, D3DXMATRIX const *a, D3DXMATRIX const *b);

/// The product @p a @p b: the transformation @p a, followed by @p b.
inline D3DXMATRIX *D3DXMatrixMultiply(D3DXMATRIX *out, D3DXMATRIX const *a, D3DXMATRIX const *b)
{
    d3dxMatrixMultiplyForm(out, a, b);
    return out;
}

/// A matrix of four rows and four columns. A translation stands in the last row.
struct QEL_SHARES_STORAGE D3DXMATRIX : _D3DMATRIX {
    D3DXMATRIX() {} // leaves the floats as they are
    D3DXMATRIX(float const *f);
    D3DXMATRIX(D3DXFLOAT16 const *f) { D3DXFloat16To32Array(*this, f, 16); }
    D3DXMATRIX(_D3DMATRIX const &other) : _D3DMATRIX(other) {}
    D3DXMATRIX(float f11, float f12, float f13, float f14, float f21, float f22, float f23, float f24,
               float f31, float f32, float f33, float f34, float f41, float f42, float f43, float f44);

    float &operator()(unsigned row, unsigned column) { return m[row][column]; } ///< both 0 to 3, not checked
    float operator()(unsigned row, unsigned column) const { return m[row][column]; }

    operator float *() { return reinterpret_cast<float *>(this); }
    operator float const *() const { return reinterpret_cast<float const *>(this); }

    D3DXMATRIX &operator*=(D3DXMATRIX const &other) { return *D3DXMatrixMultiply(this, this, &other); }
    D3DXMATRIX &operator+=(D3DXMATRIX const &other);
    D3DXMATRIX &operator-=(D3DXMATRIX const &other);
    D3DXMATRIX &operator*=(float s);
    D3DXMATRIX &operator/=(float s) { return *this *= 1.0f / s; }

    D3DXMATRIX operator+() const { return *this; }
    D3DXMATRIX operator-() const;
    D3DXMATRIX operator*(D3DXMATRIX const &other) const { return D3DXMATRIX(*this) *= other; }
    D3DXMATRIX operator+(D3DXMATRIX const &other) const { return D3DXMATRIX(*this) += other; }
    D3DXMATRIX operator-(D3DXMATRIX const &other) const { return D3DXMATRIX(*this) -= other; }
    D3DXMATRIX operator*(float s) const { return D3DXMATRIX(*this) *= s; }
    D3DXMATRIX operator/(float s) const { return D3DXMATRIX(*this) /= s; } ///< by the reciprocal, taken once

    int operator==(D3DXMATRIX const &other) const; ///< exact, element by element
    int operator!=(D3DXMATRIX const &other) const { return !(*this == other); }
};

inline D3DXMATRIX::D3DXMATRIX(float const *f)
{
    std::memcpy(m, f, sizeof m);
}

inline D3DXMATRIX::D3DXMATRIX(float f11, float f12, float f13, float f14, float f21, float f22, float f23,
                              float f24, float f31, float f32, float f33, float f34, float f41, float f42,
                              float f43, float f44)
    : _D3DMATRIX{{{f11, f12, f13, f14, f21, f22, f23, f24, f31, f32, f33, f34, f41, f42, f43, f44}}}
{
}

inline D3DXMATRIX &D3DXMATRIX::operator+=(D3DXMATRIX const &other)
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            m[row][column] += other.m[row][column];
        }
    }
    return *this;
}

inline D3DXMATRIX &D3DXMATRIX::operator-=(D3DXMATRIX const &other)
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            m[row][column] -= other.m[row][column];
        }
    }
    return *this;
}

inline D3DXMATRIX &D3DXMATRIX::operator*=(float s)
{
    for (auto &row : m) {
        for (float &element : row) {
            element *= s;
        }
    }
    return *this;
}

inline D3DXMATRIX D3DXMATRIX::operator-() const
{
    D3DXMATRIX result;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            result.m[row][column] = -m[row][column];
        }
    }
    return result;
}

inline int D3DXMATRIX::operator==(D3DXMATRIX const &other) const
{
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            if (!(m[row][column] == other.m[row][column])) {
                return 0;
            }
        }
    }
    return 1;
}

inline D3DXMATRIX operator*(float s, D3DXMATRIX const &m)
{
    return m * s;
}

// ---- vectors

inline float D3DXVec2Dot(D3DXVECTOR2 const *a, D3DXVECTOR2 const *b)
{
    return a->x * b->x + a->y * b->y;
}

inline float D3DXVec3Dot(D3DXVECTOR3 const *a, D3DXVECTOR3 const *b)
{
    return a->x * b->x + a->y * b->y + a->z * b->z;
}

inline D3DXVECTOR3 *D3DXVec3Cross(D3DXVECTOR3 *out, D3DXVECTOR3 const *a, D3DXVECTOR3 const *b)
{
    *out = {a->y * b->z - a->z * b->y, a->z * b->x - a->x * b->z, a->x * b->y - a->y * b->x};
    return out;
}

inline float D3DXVec3LengthSq(D3DXVECTOR3 const *v)
{
    return D3DXVec3Dot(v, v);
}

inline float D3DXVec3Length(D3DXVECTOR3 const *v)
{
    return std::sqrt(D3DXVec3LengthSq(v));
}

/// The vector with its length made 1, over the whole range of float. A zero vector stays zero.
QEL_API D3DXVECTOR3 *D3DXVec3Normalize(D3DXVECTOR3 *out, D3DXVECTOR3 const *v);

/// The point (x, y, z, 1) times @p m, divided by the w that comes out.
QEL_API D3DXVECTOR3 *D3DXVec3TransformCoord(D3DXVECTOR3 *out, D3DXVECTOR3 const *v, D3DXMATRIX const *m);

/// @p n points (x, y, z, 1) times @p m, with the w that comes out and no division by it.
/// @param out        @p n records of four floats
/// @param outStride  bytes from one result to the next, at least 16 and a multiple of 4
/// @param v          @p n records of three floats; may start where @p out starts, whatever the strides are
/// @param vStride    bytes from one point to the next, at least 12 and a multiple of 4
/// @return @p out
QEL_API D3DXVECTOR4 *D3DXVec3TransformArray(D3DXVECTOR4 *out, unsigned outStride, D3DXVECTOR3 const *v,
                                            unsigned vStride, D3DXMATRIX const *m, unsigned n);

/// @p v times @p m.
QEL_API D3DXVECTOR4 *D3DXVec4Transform(D3DXVECTOR4 *out, D3DXVECTOR4 const *v, D3DXMATRIX const *m);

// ---- planes

/// The plane's value at a point.
inline float D3DXPlaneDotCoord(D3DXPLANE const *p, D3DXVECTOR3 const *v)
{
    return p->a * v->x + p->b * v->y + p->c * v->z + p->d;
}

/// The plane's normal times a direction.
inline float D3DXPlaneDotNormal(D3DXPLANE const *p, D3DXVECTOR3 const *v)
{
    return p->a * v->x + p->b * v->y + p->c * v->z;
}

/// The plane through @p point with the normal @p normal, which is taken as it is.
QEL_API D3DXPLANE *D3DXPlaneFromPointNormal(D3DXPLANE *out, D3DXVECTOR3 const *point,
                                            D3DXVECTOR3 const *normal);

/// The plane through three points, with (b - a) x (c - a) made a unit vector as its normal. Points on one
/// line give the zero plane.
QEL_API D3DXPLANE *D3DXPlaneFromPoints(D3DXPLANE *out, D3DXVECTOR3 const *a, D3DXVECTOR3 const *b,
                                       D3DXVECTOR3 const *c);

/// Where the infinite line through @p a and @p b meets the plane.
/// @return null if the line is parallel to the plane (normal . (b - a) is 0); @p out is then untouched
QEL_API D3DXVECTOR3 *D3DXPlaneIntersectLine(D3DXVECTOR3 *out, D3DXPLANE const *p, D3DXVECTOR3 const *a,
                                            D3DXVECTOR3 const *b);

/// All four floats divided by the normal's length. A zero normal gives the zero plane.
QEL_API D3DXPLANE *D3DXPlaneNormalize(D3DXPLANE *out, D3DXPLANE const *p);

/// (a, b, c, d) times @p m. To carry a plane along with points that go through a matrix, pass the transpose
/// of that matrix's inverse.
QEL_API D3DXPLANE *D3DXPlaneTransform(D3DXPLANE *out, D3DXPLANE const *p, D3DXMATRIX const *m);

// ---- matrices

QEL_API D3DXMATRIX *D3DXMatrixIdentity(D3DXMATRIX *out);

/// @param determinant  takes the determinant, also on failure; may be null
/// @return null if the matrix has no inverse (its determinant, taken in double precision, is 0 or no finite
///         number); @p out is then untouched
QEL_API D3DXMATRIX *D3DXMatrixInverse(D3DXMATRIX *out, float *determinant, D3DXMATRIX const *m);

/// A right-handed view: the viewer stands at @p eye, looks at @p at along negative z, and has x to the right
/// and y up. If @p up runs along the line of sight, the axes that it would give are zero.
QEL_API D3DXMATRIX *D3DXMatrixLookAtRH(D3DXMATRIX *out, D3DXVECTOR3 const *eye, D3DXVECTOR3 const *at,
                                       D3DXVECTOR3 const *up);

/// @param axis  of any length but 0
QEL_API D3DXMATRIX *D3DXMatrixRotationAxis(D3DXMATRIX *out, D3DXVECTOR3 const *axis, float angle);
QEL_API D3DXMATRIX *D3DXMatrixRotationX(D3DXMATRIX *out, float angle);
QEL_API D3DXMATRIX *D3DXMatrixRotationY(D3DXMATRIX *out, float angle);
QEL_API D3DXMATRIX *D3DXMatrixRotationZ(D3DXMATRIX *out, float angle);
QEL_API D3DXMATRIX *D3DXMatrixTranspose(D3DXMATRIX *out, D3DXMATRIX const *m);
