#pragma once

#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace Qel::detail {

/// Which of 16 hashes are the wanted one? Bit 0 stands for the first. Not part of the public interface.
inline std::uint32_t matching16(std::uint32_t const *hashes, std::uint32_t wanted)
{
#if defined(__SSE2__)
    __m128i const all = _mm_set1_epi32(static_cast<int>(wanted));
    auto const matching4 = [&](int at) {
        return _mm_cmpeq_epi32(_mm_loadu_si128(reinterpret_cast<__m128i const *>(hashes + at)), all);
    };
    __m128i const low = _mm_packs_epi32(matching4(0), matching4(4));
    __m128i const high = _mm_packs_epi32(matching4(8), matching4(12));
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
#else
    std::uint32_t mask = 0;
    for (int i = 0; i < 16; ++i) {
        mask |= static_cast<std::uint32_t>(hashes[i] == wanted) << i;
    }
    return mask;
#endif
}

} // namespace Qel::detail
