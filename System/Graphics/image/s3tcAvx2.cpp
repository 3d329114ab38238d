#include "System/Graphics/image/s3tcKernels.h"

#include <immintrin.h>

namespace Qel {

namespace {

#define QEL_OP(name) _mm256_##name

using Lanes = __m256i;
constexpr std::size_t blocksAtOnce = 2;

Lanes load(void const *from)
{
    return _mm256_loadu_si256(static_cast<__m256i const *>(from));
}

Lanes eachBlock(void const *table)
{
    return _mm256_broadcastsi128_si256(_mm_load_si128(static_cast<__m128i const *>(table)));
}

void store(void *to, Lanes a)
{
    _mm256_storeu_si256(static_cast<__m256i *>(to), a);
}

Lanes both(Lanes a, Lanes b)
{
    return _mm256_and_si256(a, b);
}

Lanes either(Lanes a, Lanes b)
{
    return _mm256_or_si256(a, b);
}

Lanes exclusive(Lanes a, Lanes b)
{
    return _mm256_xor_si256(a, b);
}

Lanes without(Lanes a, Lanes b)
{
    return _mm256_andnot_si256(b, a);
}

Lanes same8(Lanes a, Lanes b)
{
    return _mm256_cmpeq_epi8(a, b);
}

Lanes same64(Lanes a, Lanes b)
{
    return _mm256_cmpeq_epi64(a, b);
}

// Of signed bytes.
Lanes over8(Lanes a, Lanes b)
{
    return _mm256_cmpgt_epi8(a, b);
}

Lanes choose(Lanes mask, Lanes yes, Lanes no)
{
    return _mm256_blendv_epi8(no, yes, mask);
}

Lanes swap64(Lanes a)
{
    return _mm256_shuffle_epi32(a, 0x4E);
}

Lanes swap32(Lanes a)
{
    return _mm256_shuffle_epi32(a, 0xB1);
}

bool isEverywhere(Lanes mask)
{
    return _mm256_movemask_epi8(mask) == -1;
}

Lanes joinBlocks(__m128i const *blocks)
{
    return _mm256_set_m128i(blocks[1], blocks[0]);
}

// The least of the 32-bit numbers that begin the blocks, of such below 2^31.
std::uint32_t leastOfBlocks(Lanes a)
{
    __m128i const pair = _mm_min_epi32(_mm256_castsi256_si128(a), _mm256_extracti128_si256(a, 1));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(pair));
}

// Blank lines keep the order: each builds on those before it.
#include "System/Graphics/image/s3tcLanes.inl.h"

#include "System/Graphics/image/s3tcColor.inl.h"

#include "System/Graphics/image/s3tcAlpha.inl.h"

#include "System/Graphics/image/s3tcDecode.inl.h"

} // namespace

S3tcColorKernels const s3tcColorsAvx2 = {encode<codeColors>, encode<codeColorsWithHoles>};

S3tcKernels const s3tcKernelsAvx2 = {encode<codeMappedAlpha>, interpolatedAlpha, decode1, decode2or3,
                                     decode4or5};

} // namespace Qel
