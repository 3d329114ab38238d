#include "System/Graphics/image/s3tcKernels.h"

#include <immintrin.h>

namespace Qel {

// Colours only. The search for alpha and the decoders are no faster than with AVX2: most candidates of the
// one are cut short, and pixels are seldom so aligned that rows of 64 bytes would not cross a cache line.
namespace {

#define QEL_OP(name) _mm512_##name

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
    _mm512_storeu_si512(to, a);
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

// Blank lines keep the order: each builds on those before it.
#include "System/Graphics/image/s3tcLanes.inl.h"

#include "System/Graphics/image/s3tcColor.inl.h"

} // namespace

S3tcColorKernels const s3tcColorsAvx512 = {encode<codeColors>, encode<codeColorsWithHoles>};

} // namespace Qel
