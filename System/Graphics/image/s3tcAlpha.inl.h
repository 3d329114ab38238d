// The search for the ends of interpolated alpha, candidates side by side in the 128 bits of a register, and
// mapped alpha. Included behind s3tcColor.inl.h.
//
// All points of a pair are at fixed distances from its lower end, which a table holds. Pairs are tried from
// the widest down: once the values above a pair's upper end alone cost more than the best pair so far, so
// they do for every narrower one. The order of equals is kept by a number in the lowest bits of what is
// compared.

constexpr unsigned int candidatesAtOnce = 4;
constexpr unsigned int orderBits = 9;

// For the pair of ends 4 * i apart, at [k - 1][i]: the distance of point k from the lower end, as a signed
// byte that is 128 too low.
template <unsigned int parts>
struct Steps {
    alignas(64) unsigned char rows[parts][64][16];
};

template <unsigned int parts>
constexpr Steps<parts> makeSteps()
{
    Steps<parts> steps{};
    for (unsigned int k = 1; k <= parts; ++k) {
        for (unsigned int i = 0; i < 64; ++i) {
            for (unsigned char &byte : steps.rows[k - 1][i]) {
                byte = static_cast<unsigned char>(4 * i * k / parts ^ 128);
            }
        }
    }
    return steps;
}

template <unsigned int parts>
constexpr Steps<parts> steps = makeSteps<parts>();

/// What a block's search goes by.
struct AlphaValues {
    __m128i values;
    __m128i isDistinct; // ones for the first pixel of each value
    __m128i edge;       // distance to 0 or 255, whichever is nearer
};

std::uint32_t sum(__m128i bytes)
{
    __m128i const halves = _mm_sad_epu8(bytes, _mm_setzero_si128());
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(halves) + _mm_extract_epi16(halves, 4));
}

Lanes eachBlock(__m128i block)
{
    alignas(16) unsigned char bytes[16];
    _mm_store_si128(reinterpret_cast<__m128i *>(bytes), block);
    return eachBlock(bytes);
}

Lanes abs8(Lanes a)
{
    return QEL_OP(abs_epi8)(a);
}

// What is added to the errors << orderBits of candidates so that the first of equals is the least, and so
// that those behind the first @p valid lose.
struct Orders {
    alignas(64) std::uint64_t add[candidatesAtOnce + 1][candidatesAtOnce][2];
};

constexpr Orders orders = [] {
    Orders result{};
    for (unsigned int valid = 0; valid <= candidatesAtOnce; ++valid) {
        for (unsigned int i = 0; i < candidatesAtOnce; ++i) {
            std::uint64_t const order = i < valid ? i : 1u << 30;
            result.add[valid][i][0] = result.add[valid][i][1] = order;
        }
    }
    return result;
}();

// Goes on with the search by one form: seven parts between the ends, or five with 0 and 255 beside them.
template <unsigned int parts>
std::uint32_t searchAlpha(AlphaValues const &block, unsigned int least, unsigned int most, std::uint32_t best)
{
    constexpr bool hasEdge = parts == 5;
    constexpr std::uint32_t formOrder = hasEdge ? 3 * 64 : 0;
    Lanes const values = eachBlock(block.values);
    Lanes const isDistinct = eachBlock(block.isDistinct);
    Lanes const edge = eachBlock(block.edge);
    Lanes bestKeys = QEL_OP(set1_epi32)(static_cast<int>(best));
    unsigned int const first = least == 0 ? 0 : least - 1;
    for (unsigned int lo = first; lo <= least + 1 && lo + 4 < 256; ++lo) {
        Lanes const from = all8(static_cast<int>(lo));
        Lanes const below = QEL_OP(subs_epu8)(from, values);
        Lanes const above = QEL_OP(subs_epu8)(values, from);
        Lanes const centred = exclusive(above, all8(128));
        std::uint32_t const order = formOrder + (lo - first) * 64;
        unsigned int last = (most - lo) / 4 + 1;
        last = lo + 4 * last < 256 ? last : last - 1;
        for (;;) {
            unsigned int const start = last > candidatesAtOnce ? last - candidatesAtOnce + 1 : 1;
            unsigned int const valid = last - start + 1;
            for (unsigned int i = 0; i < candidatesAtOnce; i += blocksAtOnce) {
                auto const step = [&](unsigned int k) { return load(steps<parts>.rows[k - 1][start + i]); };
                // A distance above 127 may come out as 127: only where a value is beyond the upper end.
                Lanes nearest = above;
                for (unsigned int k = 1; k <= parts; ++k) {
                    nearest = min8(nearest, abs8(QEL_OP(subs_epi8)(centred, step(k))));
                }
                Lanes const beyond = QEL_OP(subs_epu8)(above, exclusive(step(parts), all8(128)));
                nearest = max8(nearest, max8(beyond, below));
                if (hasEdge) {
                    nearest = min8(nearest, edge);
                }
                Lanes const halves = sad(both(nearest, isDistinct));
                Lanes const errors = QEL_OP(add_epi32)(halves, swap64(halves));
                Lanes const keys = QEL_OP(add_epi32)(
                    QEL_OP(add_epi32)(QEL_OP(slli_epi32)(errors, orderBits), load(orders.add[valid][i])),
                    QEL_OP(set1_epi32)(static_cast<int>(order + start)));
                bestKeys = QEL_OP(min_epi32)(bestKeys, keys);
            }
            if (start == 1) {
                break;
            }
            last = start - 1;
            __m128i cost = _mm_subs_epu8(block.values, _mm_set1_epi8(static_cast<char>(lo + 4 * last)));
            if (hasEdge) {
                cost = _mm_min_epu8(cost, block.edge);
            }
            if (sum(_mm_and_si128(cost, block.isDistinct)) > leastOfBlocks(bestKeys) >> orderBits) {
                break;
            }
        }
    }
    return leastOfBlocks(bestKeys);
}

// The smallest byte of 16.
unsigned int leastOf(__m128i bytes)
{
    __m128i const ofTwo = _mm_min_epu8(bytes, _mm_srli_epi16(bytes, 8));
    return static_cast<unsigned int>(_mm_cvtsi128_si32(_mm_minpos_epu16(ofTwo)) & 0xFF);
}

unsigned int mostOf(__m128i bytes)
{
    return 255 - leastOf(_mm_xor_si128(bytes, _mm_set1_epi8(-1)));
}

// Ones for the first pixel of each value.
__m128i firstOfEach(__m128i values)
{
    __m128i const isZero = _mm_cmpeq_epi8(values, _mm_setzero_si128());
    __m128i again = _mm_setzero_si128();
#define QEL_COMPARE(places)                                                                                  \
    again = _mm_or_si128(again, _mm_cmpeq_epi8(values, _mm_slli_si128(values, places)));
    QEL_COMPARE(1)
    QEL_COMPARE(2)
    QEL_COMPARE(3)
    QEL_COMPARE(4)
    QEL_COMPARE(5)
    QEL_COMPARE(6)
    QEL_COMPARE(7)
    QEL_COMPARE(8)
    QEL_COMPARE(9)
    QEL_COMPARE(10)
    QEL_COMPARE(11)
    QEL_COMPARE(12)
    QEL_COMPARE(13)
    QEL_COMPARE(14)
    QEL_COMPARE(15)
#undef QEL_COMPARE
    // Zeros are shifted in: which zero is the first one is told apart.
    auto const zeros = static_cast<unsigned int>(_mm_movemask_epi8(isZero));
    unsigned int const firstZero = zeros & -zeros;
    __m128i const bit = _mm_setr_epi8(1, 2, 4, 8, 16, 32, 64, -128, 1, 2, 4, 8, 16, 32, 64, -128);
    __m128i const spread = _mm_shuffle_epi8(_mm_cvtsi32_si128(static_cast<int>(firstZero)),
                                            _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1));
    __m128i const isFirstZero = _mm_cmpeq_epi8(_mm_and_si128(spread, bit), bit);
    __m128i const isNew = _mm_cmpeq_epi8(again, _mm_setzero_si128());
    return _mm_blendv_epi8(isNew, isFirstZero, isZero);
}

// 16 bytes to three bits each.
std::uint64_t packIndices(__m128i indices)
{
    __m128i const sixes = _mm_maddubs_epi16(indices, _mm_set1_epi16(0x0801));
    __m128i const twelves = _mm_madd_epi16(sixes, _mm_set1_epi32(0x00400001));
    auto const low = static_cast<std::uint64_t>(_mm_cvtsi128_si64(twelves));
    auto const high = static_cast<std::uint64_t>(_mm_extract_epi64(twelves, 1));
    return (low & 0xFFF) | (low >> 32) << 12 | (high & 0xFFF) << 24 | (high >> 32) << 36;
}

std::uint64_t alphaBlock(unsigned int a0, unsigned int a1, __m128i indices)
{
    return std::uint64_t{a0} | std::uint64_t{a1} << 8 | packIndices(indices) << 16;
}

// Indices of the points nearest to the values: of equally near ones the lower, of equal ones the first.
__m128i nearestPoints(__m128i values, unsigned int const (&points)[8], unsigned char const (&indices)[8])
{
    __m128i distance = _mm_set1_epi8(-1);
    __m128i index = _mm_set1_epi8(static_cast<char>(indices[0]));
    for (unsigned int i = 0; i < 8; ++i) {
        __m128i const point = _mm_set1_epi8(static_cast<char>(points[i]));
        __m128i const now = _mm_sub_epi8(_mm_max_epu8(values, point), _mm_min_epu8(values, point));
        __m128i const nearer = _mm_min_epu8(distance, now);
        __m128i const stays = _mm_cmpeq_epi8(nearer, distance);
        index = _mm_blendv_epi8(_mm_set1_epi8(static_cast<char>(indices[i])), index, stays);
        distance = nearer;
    }
    return index;
}

std::uint64_t eightValues(__m128i values, unsigned int lo, unsigned int hi)
{
    unsigned int points[8];
    for (unsigned int k = 0; k < 8; ++k) {
        points[k] = ((7 - k) * lo + k * hi) / 7;
    }
    // Ends that are four apart or less have points twice.
    unsigned char indices[8] = {1, 7, 6, 5, 4, 3, 2, 0};
    for (unsigned int k = 2; k < 7; ++k) {
        for (unsigned int next = k + 1; next < 7 && points[next] == points[k]; ++next) {
            indices[k] = static_cast<unsigned char>(8 - next);
        }
    }
    return alphaBlock(hi, lo, nearestPoints(values, points, indices));
}

std::uint64_t sixValues(__m128i values, unsigned int lo, unsigned int hi)
{
    unsigned int points[8] = {0, lo, 0, 0, 0, 0, hi, 255};
    for (unsigned int k = 1; k < 5; ++k) {
        points[k + 1] = ((5 - k) * lo + k * hi) / 5;
    }
    constexpr unsigned char indices[8] = {6, 0, 2, 3, 4, 5, 1, 7};
    return alphaBlock(lo, hi, nearestPoints(values, points, indices));
}

struct AlphaCoded {
    std::uint64_t block;
    std::uint32_t error;
};

AlphaCoded findalpha4x4(__m128i values)
{
    auto const first = static_cast<unsigned int>(_mm_cvtsi128_si32(values) & 0xFF);
    __m128i const isFirst = _mm_cmpeq_epi8(values, _mm_set1_epi8(static_cast<char>(first)));
    auto const firsts = static_cast<unsigned int>(_mm_movemask_epi8(isFirst));
    if (firsts == 0xFFFF) {
        return {first, 0};
    }
    alignas(16) unsigned char bytes[16];
    _mm_store_si128(reinterpret_cast<__m128i *>(bytes), values);
    unsigned int const second = bytes[__builtin_ctz(~firsts)];
    __m128i const isSecond = _mm_cmpeq_epi8(values, _mm_set1_epi8(static_cast<char>(second)));
    if (_mm_movemask_epi8(_mm_or_si128(isFirst, isSecond)) == 0xFFFF) {
        return {alphaBlock(first, second, _mm_and_si128(isSecond, _mm_set1_epi8(1))), 0};
    }

    __m128i const ones = _mm_set1_epi8(-1);
    AlphaValues const block{values, firstOfEach(values), _mm_min_epu8(values, _mm_xor_si128(values, ones))};
    unsigned int const least = leastOf(values);
    if (least > 252) {
        // 253, 254 and 255: no pair of the search fits below 256.
        return {eightValues(values, 253, 255), 0};
    }
    constexpr std::uint32_t worst = 0x7FFFFFFF;
    std::uint32_t best = searchAlpha<7>(block, least, mostOf(values), worst);
    if (best >> orderBits != 0) {
        __m128i const isLow = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(1)), values);
        __m128i const isNotHigh = _mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(-3)), values);
        unsigned int const leastInside = leastOf(_mm_or_si128(values, isLow));
        unsigned int const mostInside = mostOf(_mm_and_si128(values, isNotHigh));
        if (leastInside < mostInside) {
            std::uint32_t const inside = searchAlpha<5>(block, leastInside, mostInside, best);
            if (inside != best) {
                unsigned int const order = (inside & ((1u << orderBits) - 1)) - 3 * 64;
                unsigned int const lo = leastInside - 1 + order / 64;
                return {sixValues(values, lo, lo + order % 64 * 4), inside >> orderBits};
            }
        }
    }
    unsigned int const order = best & ((1u << orderBits) - 1);
    unsigned int const lo = (least == 0 ? 0 : least - 1) + order / 64;
    return {eightValues(values, lo, lo + order % 64 * 4), best >> orderBits};
}

Coded codeMappedAlpha(Channels const &pixels)
{
    constexpr Table16 gather = {{0, 2, 4, 6, 8, 10, 12, 14, 128, 128, 128, 128, 128, 128, 128, 128}};
    Lanes const nibbles = both(QEL_OP(srli_epi16)(pixels.alpha, 4), all8(15));
    Lanes const expanded = either(QEL_OP(slli_epi16)(nibbles, 4), nibbles);
    Lanes const errors = sad(gap8(pixels.alpha, expanded));
    Lanes const bytes = QEL_OP(maddubs_epi16)(nibbles, QEL_OP(set1_epi16)(0x1001));
    return {shuffle8(bytes, each(gather)), QEL_OP(add_epi64)(errors, swap64(errors))};
}

std::uint32_t interpolatedAlpha(unsigned char *dest, std::size_t stride, unsigned char const *src,
                                std::size_t pitch, std::size_t blocks)
{
    std::uint32_t total = 0;
    forEachGroup(src, pitch, blocks, [&](Channels const &pixels, std::size_t count) {
        alignas(64) unsigned char alpha[16 * blocksAtOnce];
        store(alpha, pixels.alpha);
        for (std::size_t i = 0; i < count; ++i, dest += stride) {
            AlphaCoded const coded =
                findalpha4x4(_mm_load_si128(reinterpret_cast<__m128i const *>(alpha + 16 * i)));
            __builtin_memcpy(dest, &coded.block, 8);
            total += coded.error;
        }
    });
    return total;
}
