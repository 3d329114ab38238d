#include "System/Graphics/image/s3tcKernels.h"

#include <immintrin.h>

namespace Qel {

namespace {

#define QEL_OP(name) _mm512_##name
#define _mm512_set1_epi64x _mm512_set1_epi64

using Lanes = __m512i;
constexpr std::size_t blocksAtOnce = 4;

Lanes load(void const *from)
{
    return _mm512_loadu_si512(from);
}

Lanes eachBlock(void const *table)
{
    return _mm512_broadcast_i32x4(_mm_load_si128(static_cast<__m128i const *>(table)));
}

void store(void *to, Lanes a)
{
    _mm512_store_si512(to, a);
}

Lanes both(Lanes a, Lanes b)
{
    return _mm512_and_si512(a, b);
}

Lanes either(Lanes a, Lanes b)
{
    return _mm512_or_si512(a, b);
}

Lanes exclusive(Lanes a, Lanes b)
{
    return _mm512_xor_si512(a, b);
}

Lanes without(Lanes a, Lanes b)
{
    return _mm512_andnot_si512(b, a);
}

Lanes same8(Lanes a, Lanes b)
{
    return _mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a, b));
}

Lanes same64(Lanes a, Lanes b)
{
    return _mm512_movm_epi64(_mm512_cmpeq_epi64_mask(a, b));
}

// Of signed bytes.
Lanes over8(Lanes a, Lanes b)
{
    return _mm512_movm_epi8(_mm512_cmpgt_epi8_mask(a, b));
}

Lanes choose(Lanes mask, Lanes yes, Lanes no)
{
    return _mm512_ternarylogic_epi64(mask, yes, no, 0xCA);
}

Lanes swap64(Lanes a)
{
    return _mm512_shuffle_epi32(a, _MM_PERM_BADC);
}

Lanes swap32(Lanes a)
{
    return _mm512_shuffle_epi32(a, _MM_PERM_CDAB);
}

bool isEverywhere(Lanes mask)
{
    return _mm512_movepi8_mask(mask) == ~__mmask64{0};
}

// The least of the 32-bit numbers that begin the blocks, of such below 2^31.
std::uint32_t leastOfBlocks(Lanes a)
{
    __m256i const two = _mm256_min_epi32(_mm512_castsi512_si256(a), _mm512_extracti64x4_epi64(a, 1));
    __m128i const one = _mm_min_epi32(_mm256_castsi256_si128(two), _mm256_extracti128_si256(two, 1));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(one));
}

// Blank lines keep the order: each builds on those before it.
#include "System/Graphics/image/s3tcLanes.inl.h"

#include "System/Graphics/image/s3tcColor.inl.h"

#include "System/Graphics/image/s3tcAlpha.inl.h"

#include "System/Graphics/image/s3tcDecode.inl.h"

} // namespace

S3tcKernels const s3tcKernelsAvx512 = {
    encode<codeColors>,
    encode<codeColorsWithHoles>,
    encode<codeMappedAlpha>,
    interpolatedAlpha,
    decode1,
    decode2or3,
    decode4or5,
};

} // namespace Qel
