#include "Support/D3DX/d3dx9math.h"

#include "Support/D3DX/d3dx9kernels.h"
#include "Support/OS/processorKernels.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace {

#if defined(__x86_64__)
D3dxKernels const *const sets[] = {&d3dxKernelsBase, &d3dxKernelsBase, &d3dxKernelsAvx2, &d3dxKernelsAvx512};
#else
D3dxKernels const *const sets[] = {&d3dxKernelsBase};
#endif

constinit D3dxKernels const *kernels = &d3dxKernelsBase;

float widened(std::uint16_t half)
{
    std::uint32_t const sign = static_cast<std::uint32_t>(half & 0x8000) << 16;
    std::uint32_t const exponent = half >> 10 & 0x1F;
    std::uint32_t const fraction = half & 0x3FF;
    if (exponent == 0) {
        float const magnitude = static_cast<float>(fraction) * 0x1p-24f;
        return sign != 0 ? -magnitude : magnitude;
    }
    // A half's exponent is biased by 15, a float's by 127; the top value stands for infinity and NaN.
    std::uint32_t const wideExponent = exponent == 31 ? 255 : exponent + 127 - 15;
    return std::bit_cast<float>(sign | wideExponent << 23 | fraction << 13);
}

std::uint16_t narrowed(float f)
{
    auto const bits = std::bit_cast<std::uint32_t>(f);
    std::uint32_t const sign = bits >> 16 & 0x8000;
    std::uint32_t magnitude = bits & 0x7FFFFFFF;
    if (magnitude > 0x7F800000) {
        return static_cast<std::uint16_t>(sign | 0x7E00);
    }
    if (magnitude >= std::bit_cast<std::uint32_t>(65520.0f)) {
        return static_cast<std::uint16_t>(sign | 0x7C00);
    }
    if (magnitude >= std::bit_cast<std::uint32_t>(0x1p-14f)) {
        magnitude -= std::uint32_t{127 - 15} << 23;
        magnitude += 0xFFF + (magnitude >> 13 & 1);
        return static_cast<std::uint16_t>(sign | magnitude >> 13);
    }
    // A float from 0.5 on counts in the same steps as the denormal halves do, so the sum rounds for them.
    std::uint32_t const steps = std::bit_cast<std::uint32_t>(std::bit_cast<float>(magnitude) + 0.5f) -
                                std::bit_cast<std::uint32_t>(0.5f);
    return static_cast<std::uint16_t>(sign | steps);
}

// In double, so that neither a large nor a small vector loses its length to the square.
double length(float x, float y, float z)
{
    double const dx = x;
    double const dy = y;
    double const dz = z;
    return std::sqrt(dx * dx + dy * dy + dz * dz);
}

float scaled(float value, double factor)
{
    return static_cast<float>(value * factor);
}

// What the functions here call among themselves, so that the compiler can inline it.
D3DXVECTOR3 normalized(D3DXVECTOR3 const &v)
{
    double const norm = length(v.x, v.y, v.z);
    double const factor = norm == 0 ? 0 : 1 / norm;
    return {scaled(v.x, factor), scaled(v.y, factor), scaled(v.z, factor)};
}

D3DXVECTOR3 cross(D3DXVECTOR3 const &a, D3DXVECTOR3 const &b)
{
    D3DXVECTOR3 result;
    return *D3DXVec3Cross(&result, &a, &b);
}

D3DXVECTOR4 product(float x, float y, float z, float w, D3DXMATRIX const &m)
{
    return {x * m._11 + y * m._21 + z * m._31 + w * m._41, x * m._12 + y * m._22 + z * m._32 + w * m._42,
            x * m._13 + y * m._23 + z * m._33 + w * m._43, x * m._14 + y * m._24 + z * m._34 + w * m._44};
}

} // namespace

void (*d3dxMatrixMultiplyForm)(D3DXMATRIX *, D3DXMATRIX const *, D3DXMATRIX const *) = d3dxMultiplyBase;

namespace {

[[gnu::init_priority(101)]] os::ProcessorKernels const choice([](os::eProcessorLevel level) {
    kernels = sets[level];
    d3dxMatrixMultiplyForm = kernels->multiply;
});

} // namespace

D3DXFLOAT16::D3DXFLOAT16(float f) : value(narrowed(f))
{
}

D3DXFLOAT16::operator float() const
{
    return widened(value);
}

float *D3DXFloat16To32Array(float *out, D3DXFLOAT16 const *in, unsigned n)
{
    // From the end, so that the floats may take the halves' own place.
    auto const *const halves = reinterpret_cast<std::byte const *>(in);
    for (std::size_t i = n; i-- > 0;) {
        std::uint16_t half;
        std::memcpy(&half, halves + i * sizeof half, sizeof half);
        out[i] = widened(half);
    }
    return out;
}

D3DXVECTOR3 *D3DXVec3Normalize(D3DXVECTOR3 *out, D3DXVECTOR3 const *v)
{
    *out = normalized(*v);
    return out;
}

D3DXVECTOR3 *D3DXVec3TransformCoord(D3DXVECTOR3 *out, D3DXVECTOR3 const *v, D3DXMATRIX const *m)
{
    D3DXVECTOR4 const p = product(v->x, v->y, v->z, 1, *m);
    *out = {p.x / p.w, p.y / p.w, p.z / p.w};
    return out;
}

D3DXVECTOR4 *D3DXVec3TransformArray(D3DXVECTOR4 *out, unsigned outStride, D3DXVECTOR3 const *v,
                                    unsigned vStride, D3DXMATRIX const *m, unsigned n)
{
    float *const results = *out;
    float const *const points = *v;
    std::size_t const resultFloats = outStride / sizeof(float);
    std::size_t const pointFloats = vStride / sizeof(float);
    D3DXMATRIX const matrix = *m; // may lie in out
    if (results != points || outStride <= vStride) {
        kernels->transform(results, resultFloats, points, pointFloats, matrix, n);
        return out;
    }
    // In place and growing: a result covers points that lie behind it, so the last one goes first.
    for (std::size_t i = n; i-- > 0;) {
        D3DXVECTOR3 const p(points + i * pointFloats);
        D3DXVECTOR4 const result = product(p.x, p.y, p.z, 1, matrix);
        std::memcpy(results + i * resultFloats, &result, sizeof result);
    }
    return out;
}

D3DXVECTOR4 *D3DXVec4Transform(D3DXVECTOR4 *out, D3DXVECTOR4 const *v, D3DXMATRIX const *m)
{
    *out = product(v->x, v->y, v->z, v->w, *m);
    return out;
}

D3DXPLANE *D3DXPlaneFromPointNormal(D3DXPLANE *out, D3DXVECTOR3 const *point, D3DXVECTOR3 const *normal)
{
    *out = {normal->x, normal->y, normal->z, -D3DXVec3Dot(point, normal)};
    return out;
}

D3DXPLANE *D3DXPlaneFromPoints(D3DXPLANE *out, D3DXVECTOR3 const *a, D3DXVECTOR3 const *b,
                               D3DXVECTOR3 const *c)
{
    D3DXVECTOR3 const normal = normalized(cross(*b - *a, *c - *a));
    return D3DXPlaneFromPointNormal(out, a, &normal);
}

D3DXVECTOR3 *D3DXPlaneIntersectLine(D3DXVECTOR3 *out, D3DXPLANE const *p, D3DXVECTOR3 const *a,
                                    D3DXVECTOR3 const *b)
{
    D3DXVECTOR3 const direction = *b - *a;
    float const slope = D3DXPlaneDotNormal(p, &direction);
    if (slope == 0) {
        return nullptr;
    }
    *out = *a - direction * (D3DXPlaneDotCoord(p, a) / slope);
    return out;
}

D3DXPLANE *D3DXPlaneNormalize(D3DXPLANE *out, D3DXPLANE const *p)
{
    double const norm = length(p->a, p->b, p->c);
    double const factor = norm == 0 ? 0 : 1 / norm;
    *out = {scaled(p->a, factor), scaled(p->b, factor), scaled(p->c, factor), scaled(p->d, factor)};
    return out;
}

D3DXPLANE *D3DXPlaneTransform(D3DXPLANE *out, D3DXPLANE const *p, D3DXMATRIX const *m)
{
    D3DXVECTOR4 const transformed = product(p->a, p->b, p->c, p->d, *m);
    *out = {transformed.x, transformed.y, transformed.z, transformed.w};
    return out;
}

D3DXMATRIX *D3DXMatrixIdentity(D3DXMATRIX *out)
{
    *out = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixInverse(D3DXMATRIX *out, float *determinant, D3DXMATRIX const *m)
{
    // Laplace expansion over the 2 by 2 minors of the upper and of the lower two rows. Products of two floats
    // are exact in double, so only a matrix that is singular as it stands has the determinant 0.
    double a[4][4];
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            a[row][column] = m->m[row][column];
        }
    }
    auto const minor = [&a](unsigned row, unsigned left, unsigned right) {
        return a[row][left] * a[row + 1][right] - a[row][right] * a[row + 1][left];
    };
    double const u01 = minor(0, 0, 1), u02 = minor(0, 0, 2), u03 = minor(0, 0, 3);
    double const u12 = minor(0, 1, 2), u13 = minor(0, 1, 3), u23 = minor(0, 2, 3);
    double const l01 = minor(2, 0, 1), l02 = minor(2, 0, 2), l03 = minor(2, 0, 3);
    double const l12 = minor(2, 1, 2), l13 = minor(2, 1, 3), l23 = minor(2, 2, 3);
    double const det = u01 * l23 - u02 * l13 + u03 * l12 + u12 * l03 - u13 * l02 + u23 * l01;
    if (determinant != nullptr) {
        *determinant = static_cast<float>(det);
    }
    if (det == 0 || !std::isfinite(det)) {
        return nullptr;
    }

    double const adjugate[4][4] = {
        {a[1][1] * l23 - a[1][2] * l13 + a[1][3] * l12, -a[0][1] * l23 + a[0][2] * l13 - a[0][3] * l12,
         a[3][1] * u23 - a[3][2] * u13 + a[3][3] * u12, -a[2][1] * u23 + a[2][2] * u13 - a[2][3] * u12},
        {-a[1][0] * l23 + a[1][2] * l03 - a[1][3] * l02, a[0][0] * l23 - a[0][2] * l03 + a[0][3] * l02,
         -a[3][0] * u23 + a[3][2] * u03 - a[3][3] * u02, a[2][0] * u23 - a[2][2] * u03 + a[2][3] * u02},
        {a[1][0] * l13 - a[1][1] * l03 + a[1][3] * l01, -a[0][0] * l13 + a[0][1] * l03 - a[0][3] * l01,
         a[3][0] * u13 - a[3][1] * u03 + a[3][3] * u01, -a[2][0] * u13 + a[2][1] * u03 - a[2][3] * u01},
        {-a[1][0] * l12 + a[1][1] * l02 - a[1][2] * l01, a[0][0] * l12 - a[0][1] * l02 + a[0][2] * l01,
         -a[3][0] * u12 + a[3][1] * u02 - a[3][2] * u01, a[2][0] * u12 - a[2][1] * u02 + a[2][2] * u01},
    };
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            out->m[row][column] = static_cast<float>(adjugate[row][column] / det);
        }
    }
    return out;
}

D3DXMATRIX *D3DXMatrixLookAtRH(D3DXMATRIX *out, D3DXVECTOR3 const *eye, D3DXVECTOR3 const *at,
                               D3DXVECTOR3 const *up)
{
    D3DXVECTOR3 const from = *eye;
    D3DXVECTOR3 const z = normalized(from - *at);
    D3DXVECTOR3 const x = normalized(cross(*up, z));
    D3DXVECTOR3 const y = cross(z, x);
    float const tx = -D3DXVec3Dot(&x, &from);
    float const ty = -D3DXVec3Dot(&y, &from);
    float const tz = -D3DXVec3Dot(&z, &from);
    *out = {x.x, y.x, z.x, 0, x.y, y.y, z.y, 0, x.z, y.z, z.z, 0, tx, ty, tz, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixRotationAxis(D3DXMATRIX *out, D3DXVECTOR3 const *axis, float angle)
{
    D3DXVECTOR3 const n = normalized(*axis);
    float const s = std::sin(angle);
    float const c = std::cos(angle);
    float const t = 1 - c;
    D3DXVECTOR3 const x(t * n.x * n.x + c, t * n.x * n.y + s * n.z, t * n.x * n.z - s * n.y);
    D3DXVECTOR3 const y(t * n.x * n.y - s * n.z, t * n.y * n.y + c, t * n.y * n.z + s * n.x);
    D3DXVECTOR3 const z(t * n.x * n.z + s * n.y, t * n.y * n.z - s * n.x, t * n.z * n.z + c);
    *out = {x.x, x.y, x.z, 0, y.x, y.y, y.z, 0, z.x, z.y, z.z, 0, 0, 0, 0, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixRotationX(D3DXMATRIX *out, float angle)
{
    float const s = std::sin(angle);
    float const c = std::cos(angle);
    *out = {1, 0, 0, 0, 0, c, s, 0, 0, -s, c, 0, 0, 0, 0, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixRotationY(D3DXMATRIX *out, float angle)
{
    float const s = std::sin(angle);
    float const c = std::cos(angle);
    *out = {c, 0, -s, 0, 0, 1, 0, 0, s, 0, c, 0, 0, 0, 0, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixRotationZ(D3DXMATRIX *out, float angle)
{
    float const s = std::sin(angle);
    float const c = std::cos(angle);
    *out = {c, s, 0, 0, -s, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    return out;
}

D3DXMATRIX *D3DXMatrixTranspose(D3DXMATRIX *out, D3DXMATRIX const *m)
{
    *out = {m->_11, m->_21, m->_31, m->_41, m->_12, m->_22, m->_32, m->_42,
            m->_13, m->_23, m->_33, m->_43, m->_14, m->_24, m->_34, m->_44};
    return out;
}
