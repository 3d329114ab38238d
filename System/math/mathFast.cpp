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

struct SinCos {
    float sine;
    float cosine;
};

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

// Lane 0 for the sine and lane 1 for the cosine, without a branch and without leaving the vector unit.
SinCos sinCosByQuarters(float angle)
{
    __m128 const sign = _mm_set1_ps(-0.0f);
    __m128 const x = _mm_set1_ps(angle);
    __m128 const q = _mm_mul_ps(_mm_andnot_ps(sign, x), _mm_set1_ps(twoDivPi));
    __m128i const i = _mm_cvttps_epi32(q);
    __m128 const f = _mm_min_ps(_mm_sub_ps(q, _mm_cvtepi32_ps(i)), _mm_set1_ps(1.0f));

    // f or 1 - f, which is |0 - f| or |1 - f|: the cosine starts at 1, and odd quarters change places.
    __m128 const odd = _mm_castsi128_ps(_mm_srai_epi32(_mm_slli_epi32(i, 31), 31));
    __m128 const from = _mm_xor_ps(_mm_setr_ps(0, 1, 0, 0), _mm_and_ps(odd, _mm_set1_ps(1.0f)));
    __m128 const at = _mm_andnot_ps(sign, _mm_sub_ps(from, f));
    __m128i const half = _mm_slli_epi32(_mm_add_epi32(i, _mm_setr_epi32(0, 1, 0, 0)), 30);
    __m128 const flips = _mm_xor_ps(_mm_castsi128_ps(half), _mm_and_ps(x, _mm_setr_ps(-0.0f, 0, 0, 0)));

    __m128 const s = _mm_mul_ps(at, at);
    __m128 sum = _mm_add_ps(_mm_mul_ps(_mm_set1_ps(-0.004681754f), s), _mm_set1_ps(0.079692625f));
    sum = _mm_add_ps(_mm_mul_ps(sum, s), _mm_set1_ps(-0.6459641f));
    sum = _mm_add_ps(_mm_mul_ps(sum, s), _mm_set1_ps(1.5707964f));
    __m128 const result = _mm_mul_ps(_mm_xor_ps(at, _mm_and_ps(flips, sign)), sum);
    return {_mm_cvtss_f32(result), _mm_cvtss_f32(_mm_shuffle_ps(result, result, 1))};
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

SinCos sinCosByQuarters(float angle)
{
    float const q = std::fabs(angle) * twoDivPi;
    int const i = truncated(q);
    float const rest = q - static_cast<float>(i);
    float const f = rest < 1.0f ? rest : 1.0f;
    bool const odd = (i & 1) != 0;
    float const t = odd ? 1.0f - f : f;
    float const u = odd ? f : 1.0f - f;
    std::uint32_t const quarter = static_cast<std::uint32_t>(i);
    std::uint32_t const sineSign = (std::bit_cast<std::uint32_t>(angle) ^ quarter << 30) & 0x80000000u;
    std::uint32_t const cosineSign = (quarter + 1) << 30 & 0x80000000u;
    return {withSign(t, sineSign) * quarterTurn(t * t), withSign(u, cosineSign) * quarterTurn(u * u)};
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
    SinCos const both = sinCosByQuarters(angle);
    *sine = both.sine;
    *cosine = both.cosine;
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
