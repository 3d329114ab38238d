#include "System/math/math.h"

#include <limits>

namespace Qel {

namespace {

constexpr float twoPi = 6.2831855f;

} // namespace

D3DXMATRIX matrixIdentity;

float cMath::rad2range0_piDiv2(float x)
{
    return 0 <= x && x <= 1.5707964f ? x : std::fmod(std::fabs(x), twoPi) * 0.25f;
}

float cMath::getAngle(float x, float y)
{
    if (x == 0) {
        return y > 0 ? 90.0f : 270.0f;
    }
    return atan2(y, x);
}

float cMath::angleNormalize360(float degrees)
{
    return 0 <= degrees && degrees < 360 ? degrees : degrees - std::floor(degrees * 0.0027777778f) * 360.0f;
}

float cMath::angleNormalize180(float degrees)
{
    float const full = angleNormalize360(degrees);
    return full > 180 ? full - 360.0f : full;
}

float cMath::radNormalize(float radians)
{
    if (radians < 0) {
        float const rest = std::fmod(radians, twoPi);
        return rest < 0 ? rest + twoPi : rest;
    }
    return radians > twoPi ? std::fmod(radians, twoPi) : radians;
}

bool cMath::radNormalized_IsIn(float value, float a, float b, bool flag)
{
    float const start = flag ? a : b;
    float const end = flag ? b : a;
    if (end >= start) {
        return start <= value && value <= end;
    }
    return (start <= value && value <= twoPi) || (0 <= value && value <= end);
}

float cMath::fraction(float x)
{
    return std::fabs(x) < 0x1p31f ? x - static_cast<float>(static_cast<std::int32_t>(x)) : x - x;
}

float cMath::machine_epsilon()
{
    return std::numeric_limits<float>::epsilon();
}

void cMath::perpendicular(D3DXVECTOR3 *out, D3DXVECTOR3 *in)
{
    *out = {in->y, -in->x, 0};
}

D3DXMATRIX cMath::buildRotMatrixFromNormals(D3DXVECTOR3 const *a, D3DXVECTOR3 const *b)
{
    D3DXVECTOR3 axis;
    D3DXVec3Normalize(&axis, D3DXVec3Cross(&axis, a, b));
    // Rounding can take the product of two unit vectors past 1, where there is no arc cosine.
    float const dot = (a->x * b->x + a->z * b->z) + a->y * b->y;
    float const angle = icos(dot > 1 ? 1 : dot < -1 ? -1 : dot);
    D3DXMATRIX result;
    if (std::fabs(angle) < 1e-12f || std::fabs(angle - 3.1415927f) < 1e-12f) {
        D3DXMatrixIdentity(&result);
    } else {
        D3DXMatrixRotationAxis(&result, &axis, angle);
    }
    return result;
}

} // namespace Qel
