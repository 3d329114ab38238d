#include "System/Graphics/image/s3tcKernels.h"

#include <nmmintrin.h>

namespace Qel {

namespace {

#define QEL_OP(name) _mm_##name

using Lanes = __m128i;
constexpr std::size_t blocksAtOnce = 1;

Lanes load(void const *from)
{
    return _mm_loadu_si128(static_cast<__m128i const *>(from));
}

Lanes eachBlock(void const *table)
{
    return _mm_load_si128(static_cast<__m128i const *>(table));
}

void store(void *to, Lanes a)
{
    _mm_storeu_si128(static_cast<__m128i *>(to), a);
}

Lanes both(Lanes a, Lanes b)
{
    return _mm_and_si128(a, b);
}

Lanes either(Lanes a, Lanes b)
{
    return _mm_or_si128(a, b);
}

Lanes exclusive(Lanes a, Lanes b)
{
    return _mm_xor_si128(a, b);
}

Lanes without(Lanes a, Lanes b)
{
    return _mm_andnot_si128(b, a);
}

Lanes same8(Lanes a, Lanes b)
{
    return _mm_cmpeq_epi8(a, b);
}

Lanes same64(Lanes a, Lanes b)
{
    return _mm_cmpeq_epi64(a, b);
}

// Of signed bytes.
Lanes over8(Lanes a, Lanes b)
{
    return _mm_cmpgt_epi8(a, b);
}

Lanes choose(Lanes mask, Lanes yes, Lanes no)
{
    return _mm_blendv_epi8(no, yes, mask);
}

Lanes swap64(Lanes a)
{
    return _mm_shuffle_epi32(a, 0x4E);
}

Lanes swap32(Lanes a)
{
    return _mm_shuffle_epi32(a, 0xB1);
}

bool isEverywhere(Lanes mask)
{
    return _mm_movemask_epi8(mask) == 0xFFFF;
}

Lanes joinBlocks(__m128i const *blocks)
{
    return *blocks;
}

// The least of the 32-bit numbers that begin the blocks, of such below 2^31.
std::uint32_t leastOfBlocks(Lanes a)
{
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(a));
}

// Blank lines keep the order: each builds on those before it.
#include "System/Graphics/image/s3tcLanes.inl.h"

#include "System/Graphics/image/s3tcColor.inl.h"

#include "System/Graphics/image/s3tcAlpha.inl.h"

#include "System/Graphics/image/s3tcDecode.inl.h"

} // namespace

S3tcColorKernels const s3tcColorsSse42 = {encode<codeColors>, encode<codeColorsWithHoles>};

S3tcKernels const s3tcKernelsSse42 = {encode<codeMappedAlpha>, interpolatedAlpha, decode1, decode2or3,
                                      decode4or5};

} // namespace Qel
