#include "System/math/math.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cmath>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// The forms behind cMath's four pointers, and what else stands on single instructions. Each has a plain form
// for processors without the instruction.

namespace Qel {

namespace {

constexpr float twoDivPi = 0.63661975f;
constexpr float halfPi = 1.5707964f;

// sin(f pi/2) for f from 0 to 1, without the leading factor f; s is f squared.
float quarterTurn(float s)
{
    return ((-0.004681754f * s + 0.079692625f) * s - 0.6459641f) * s + 1.5707964f;
}

float withSign(float magnitude, std::uint32_t signBit)
{
    return std::bit_cast<float>(std::bit_cast<std::uint32_t>(magnitude) ^ signBit);
}

#if defined(__SSE2__)

// Toward zero; the smallest int for what no int can hold.
int truncated(float x)
{
    return _mm_cvttss_si32(_mm_set_ss(x));
}

int rounded(float x)
{
    return _mm_cvtss_si32(_mm_set_ss(x));
}

float root(float x)
{
    return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x)));
}

float reciprocalRootEstimate(float x)
{
    return _mm_cvtss_f32(_mm_rsqrt_ss(_mm_set_ss(x)));
}

#else

int truncated(float x)
{
    return std::fabs(x) < 0x1p31f ? static_cast<int>(x) : INT_MIN;
}

int rounded(float x)
{
    return truncated(std::nearbyint(x));
}

float root(float x)
{
    return std::sqrt(x);
}

float reciprocalRootEstimate(float x)
{
    return 1.0f / std::sqrt(x);
}

#endif

struct SinCos {
    float sine;
    float cosine;
};

#if defined(__x86_64__) || defined(__i386__)

// The unit leaves arguments of 2 to the 63 and above as they are.
bool inRangeOfUnit(float x)
{
    return std::fabs(x) < 0x1p63f;
}

float hardwareSin(float x)
{
    if (!inRangeOfUnit(x)) {
        return std::sin(x);
    }
    long double result = x;
    __asm__("fsin" : "+t"(result));
    return static_cast<float>(result);
}

float hardwareCos(float x)
{
    if (!inRangeOfUnit(x)) {
        return std::cos(x);
    }
    long double result = x;
    __asm__("fcos" : "+t"(result));
    return static_cast<float>(result);
}

float hardwareTan(float x)
{
    if (!inRangeOfUnit(x)) {
        return std::tan(x);
    }
    long double one, result;
    __asm__("fptan" : "=t"(one), "=u"(result) : "0"(static_cast<long double>(x)));
    return static_cast<float>(result);
}

SinCos hardwareSinCos(float x)
{
    if (!inRangeOfUnit(x)) {
        return {std::sin(x), std::cos(x)};
    }
    long double sine, cosine;
    __asm__("fsincos" : "=t"(cosine), "=u"(sine) : "0"(static_cast<long double>(x)));
    return {static_cast<float>(sine), static_cast<float>(cosine)};
}

#else

float hardwareSin(float x)
{
    return static_cast<float>(std::sin(static_cast<double>(x)));
}

float hardwareCos(float x)
{
    return static_cast<float>(std::cos(static_cast<double>(x)));
}

float hardwareTan(float x)
{
    return static_cast<float>(std::tan(static_cast<double>(x)));
}

SinCos hardwareSinCos(float x)
{
    return {hardwareSin(x), hardwareCos(x)};
}

#endif

} // namespace

float (*cMath::sqrt)(float) = cMath::sqrt_base;
float (*cMath::rsqrt)(float) = cMath::rsqrt_base;
float (*cMath::cos)(float) = cMath::cos_base;
void (*cMath::sincos)(float, float *, float *) = cMath::sincos_asm;

void cMath::init(bool sse, bool sse2, bool, bool, bool)
{
    D3DXMatrixIdentity(&matrixIdentity);
    if (sse) {
        sqrt = sqrt_sse;
        rsqrt = rsqrt_sse;
        cos = cos_sse;
        sincos = sincos_sse;
    }
    if (sse2) {
        cos = cos_sse2;
        sincos = sincos_sse2;
    }
}

float cMath::sqrt_base(float x)
{
    return x * rsqrt(x);
}

float cMath::sqrt_sse(float x)
{
    return root(x);
}

float cMath::rsqrt_base(float x)
{
    static constexpr float _0_47 = 0.47f;
    static constexpr float _1_47 = 1.47f;
    std::uint32_t const difference = 0xBE800000u - std::bit_cast<std::uint32_t>(x);
    float y = std::bit_cast<float>(static_cast<std::int32_t>(difference) >> 1);
    y = std::fabs((_1_47 - _0_47 * x * y * y) * y);
    return y * (3.0f - y * y * x) * 0.5f;
}

float cMath::rsqrt_q3(float x)
{
    std::int32_t const half = std::bit_cast<std::int32_t>(x) >> 1;
    float const y = std::bit_cast<float>(0x5F3759DFu - static_cast<std::uint32_t>(half));
    return (1.5f - 0.5f * x * y * y) * y;
}

float cMath::rsqrt_sse(float x)
{
    return reciprocalRootEstimate(x);
}

float cMath::cos_base(float x)
{
    return hardwareCos(x);
}

float cMath::cos_sse(float x)
{
    float const q = (std::fabs(x) + halfPi) * twoDivPi;
    int const i = truncated(q);
    float const rest = q - static_cast<float>(i);
    float f = rest < 1.0f ? rest : 1.0f;
    f = (i & 1) != 0 ? 1.0f - f : f;
    return withSign(f, static_cast<std::uint32_t>(i) << 30 & 0x80000000u) * quarterTurn(f * f);
}

float cMath::cos_sse2(float x)
{
    return cos_sse(x);
}

void cMath::sincos_asm(float angle, float *sine, float *cosine)
{
    SinCos const both = hardwareSinCos(angle);
    *sine = both.sine;
    *cosine = both.cosine;
}

void cMath::sincos_base(float angle, float *sine, float *cosine)
{
    *sine = hardwareSin(angle);
    *cosine = hardwareCos(angle);
}

void cMath::sincos_sse(float angle, float *sine, float *cosine)
{
    float const q = std::fabs(angle) * twoDivPi;
    int const i = truncated(q);
    float const rest = q - static_cast<float>(i);
    float const f = rest < 1.0f ? rest : 1.0f;
    bool const odd = (i & 1) != 0;
    float const t = odd ? 1.0f - f : f;
    float const u = odd ? f : 1.0f - f;
    std::uint32_t const quadrant = static_cast<std::uint32_t>(i);
    std::uint32_t const sineSign = (std::bit_cast<std::uint32_t>(angle) ^ quadrant << 30) & 0x80000000u;
    std::uint32_t const cosineSign = (quadrant + 1) << 30 & 0x80000000u;
    *sine = withSign(t, sineSign) * quarterTurn(t * t);
    *cosine = withSign(u, cosineSign) * quarterTurn(u * u);
}

void cMath::sincos_sse2(float angle, float *sine, float *cosine)
{
    sincos_sse(angle, sine, cosine);
}

float cMath::sin(float x)
{
    return hardwareSin(x);
}

float cMath::tan(float x)
{
    return hardwareTan(x);
}

void cMath::floatToInt(float x, int *out)
{
    *out = rounded(x);
}

} // namespace Qel
