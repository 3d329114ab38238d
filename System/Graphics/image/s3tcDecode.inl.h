// Decoding of blocks: the colours of eight blocks at once, then a byte shuffle for each row of four pixels.
// Included behind s3tcLanes.inl.h.

constexpr std::size_t palettesAtOnce = 8;

/// The four colours of each of a few blocks.
struct Palettes {
    Lanes ofGroup[palettesAtOnce / blocksAtOnce];
};

__m128i load128(void const *from)
{
    return _mm_loadu_si128(static_cast<__m128i const *>(from));
}

__m128i load64(void const *from)
{
    return _mm_loadl_epi64(static_cast<__m128i const *>(from));
}

// The colours of four blocks, side by side, from their 16-bit numbers.
template <std::size_t stride>
__m128i loadColors(unsigned char const *src)
{
    if constexpr (stride == 8) {
        __m128 const first = _mm_castsi128_ps(load128(src));
        __m128 const last = _mm_castsi128_ps(load128(src + 16));
        return _mm_castps_si128(_mm_shuffle_ps(first, last, _MM_SHUFFLE(2, 0, 2, 0)));
    } else {
        __m128i const first = _mm_unpacklo_epi32(load64(src + 8), load64(src + stride + 8));
        __m128i const last = _mm_unpacklo_epi32(load64(src + 2 * stride + 8), load64(src + 3 * stride + 8));
        return _mm_unpacklo_epi64(first, last);
    }
}

/// A channel's four values for eight blocks.
struct ChannelPalette {
    __m128i values[4];
};

ChannelPalette mixChannel(__m128i c0, __m128i c1, __m128i isFour, int fourth)
{
    __m128i const third = _mm_set1_epi16(21846);
    __m128i const sum = _mm_add_epi16(c0, c1);
    __m128i const nearFirst = _mm_mulhi_epu16(_mm_add_epi16(sum, c0), third);
    __m128i const nearSecond = _mm_mulhi_epu16(_mm_add_epi16(sum, c1), third);
    return {{c0, c1, _mm_blendv_epi8(_mm_srli_epi16(sum, 1), nearFirst, isFour),
             _mm_blendv_epi8(_mm_set1_epi16(static_cast<short>(fourth)), nearSecond, isFour)}};
}

// The palettes of eight blocks. The fourth colour of the form with three is @p fourth, without alpha.
template <std::size_t stride>
Palettes decodePalettes(unsigned char const *src, unsigned int opaque, unsigned int fourth)
{
    __m128i const low = loadColors<stride>(src);
    __m128i const high = loadColors<stride>(src + 4 * stride);
    __m128i const word = _mm_set1_epi32(0xFFFF);
    __m128i const color0 = _mm_packus_epi32(_mm_and_si128(low, word), _mm_and_si128(high, word));
    __m128i const color1 = _mm_packus_epi32(_mm_srli_epi32(low, 16), _mm_srli_epi32(high, 16));
    __m128i const isFour = _mm_xor_si128(_mm_cmpeq_epi16(_mm_subs_epu16(color0, color1), _mm_setzero_si128()),
                                         _mm_set1_epi16(-1));
    // n * 255 / 31 and n * 255 / 63, rounded down, of a number in higher bits.
    auto const expandRed = [](__m128i color) {
        return _mm_mulhi_epu16(_mm_slli_epi16(_mm_srli_epi16(color, 11), 4), _mm_set1_epi16(-31843));
    };
    auto const expandGreen = [](__m128i color) {
        return _mm_mulhi_epu16(_mm_srli_epi16(_mm_and_si128(color, _mm_set1_epi16(0x07E0)), 2),
                               _mm_set1_epi16(-32377));
    };
    auto const expandBlue = [](__m128i color) {
        return _mm_mulhi_epu16(_mm_slli_epi16(_mm_and_si128(color, _mm_set1_epi16(31)), 4),
                               _mm_set1_epi16(-31843));
    };
    auto const channel = [&](auto expand, unsigned int shift) {
        return mixChannel(expand(color0), expand(color1), isFour, static_cast<int>(fourth >> shift & 255));
    };
    ChannelPalette const red = channel(expandRed, 16);
    ChannelPalette const green = channel(expandGreen, 8);
    ChannelPalette const blue = channel(expandBlue, 0);

    __m128i first[4];
    __m128i last[4];
    for (int i = 0; i < 4; ++i) {
        __m128i const alpha = _mm_set1_epi16(static_cast<short>(opaque >> 16 & 0xFF00));
        __m128i const alphaRed = _mm_or_si128(red.values[i], i < 3 ? alpha : _mm_and_si128(alpha, isFour));
        __m128i const greenBlue = _mm_or_si128(_mm_slli_epi16(green.values[i], 8), blue.values[i]);
        first[i] = _mm_unpacklo_epi16(greenBlue, alphaRed);
        last[i] = _mm_unpackhi_epi16(greenBlue, alphaRed);
    }
    __m128i blocks[palettesAtOnce];
    auto const turn = [](__m128i const(&colors)[4], __m128i *to) {
        __m128i const c01 = _mm_unpacklo_epi32(colors[0], colors[1]);
        __m128i const c23 = _mm_unpacklo_epi32(colors[2], colors[3]);
        __m128i const d01 = _mm_unpackhi_epi32(colors[0], colors[1]);
        __m128i const d23 = _mm_unpackhi_epi32(colors[2], colors[3]);
        to[0] = _mm_unpacklo_epi64(c01, c23);
        to[1] = _mm_unpackhi_epi64(c01, c23);
        to[2] = _mm_unpacklo_epi64(d01, d23);
        to[3] = _mm_unpackhi_epi64(d01, d23);
    };
    turn(first, blocks);
    turn(last, blocks + 4);
    Palettes palettes;
    for (std::size_t i = 0; i < palettesAtOnce / blocksAtOnce; ++i) {
        palettes.ofGroup[i] = joinBlocks(blocks + i * blocksAtOnce);
    }
    return palettes;
}

// A block's four bits of alpha a pixel, to bytes.
Lanes mappedAlphaOf(Lanes blocks)
{
    Lanes const nibbles =
        QEL_OP(unpacklo_epi8)(both(blocks, all8(15)), both(QEL_OP(srli_epi16)(blocks, 4), all8(15)));
    return either(nibbles, QEL_OP(slli_epi16)(nibbles, 4));
}

// A block's alpha between two values, to bytes.
Lanes interpolatedAlphaOf(Lanes blocks)
{
    // What each of the eight values takes of the two, and what there is instead.
    constexpr Table16 sevenths = {{7, 0, 0, 7, 6, 1, 5, 2, 4, 3, 3, 4, 2, 5, 1, 6}};
    constexpr Table16 fifths = {{5, 0, 0, 5, 4, 1, 3, 2, 2, 3, 1, 4, 0, 0, 0, 0}};
    constexpr Table16 lastIs255 = {{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 255, 0}};
    Lanes const a1 = shuffle8(blocks, all8(1));
    Lanes const isSix = same8(max8(spread8(blocks), a1), a1);
    Lanes const weights = choose(isSix, each(fifths), each(sevenths));
    Lanes const share = choose(isSix, QEL_OP(set1_epi16)(13108), QEL_OP(set1_epi16)(9363)); // of 65 536
    Lanes const ends = shuffle8(blocks, QEL_OP(set1_epi16)(0x0100));
    Lanes const values = either(QEL_OP(mulhi_epu16)(QEL_OP(maddubs_epi16)(ends, weights), share),
                                both(isSix, each(lastIs255)));
    Lanes const points = QEL_OP(packus_epi16)(values, values);
    // Each pixel's three bits are moved to the top of a 16-bit number.
    constexpr Table16 toTop = {{0, 32, 0, 4, 128, 0, 0, 16, 0, 2, 64, 0, 0, 8, 0, 1}};
    constexpr Table16 firstEight = {{2, 3, 2, 3, 2, 3, 3, 4, 3, 4, 3, 4, 4, 128, 4, 128}};
    constexpr Table16 lastEight = {{5, 6, 5, 6, 5, 6, 6, 7, 6, 7, 6, 7, 7, 128, 7, 128}};
    auto const indices = [&](Table16 const &bytes) {
        return QEL_OP(srli_epi16)(QEL_OP(mullo_epi16)(shuffle8(blocks, each(bytes)), each(toTop)), 13);
    };
    return shuffle8(points, QEL_OP(packus_epi16)(indices(firstEight), indices(lastEight)));
}

// No alpha but that of the colours.
Lanes noAlpha(Lanes)
{
    return zero();
}

// Four pixels' bytes in a block's colours, for the eight bits of their indices.
struct RowShuffles {
    alignas(16) unsigned char rows[256][16];
};

constexpr RowShuffles rowShuffles = [] {
    RowShuffles result{};
    for (unsigned int bits = 0; bits < 256; ++bits) {
        for (unsigned int i = 0; i < 16; ++i) {
            result.rows[bits][i] = static_cast<unsigned char>((bits >> i / 4 * 2 & 3) * 4 + i % 4);
        }
    }
    return result;
}();

// The shuffles of one row of as many blocks as there are lanes; @p indices are those of the first one.
template <std::size_t stride>
Lanes rowPlaces(unsigned char const *indices)
{
    __m128i places[blocksAtOnce];
    for (std::size_t i = 0; i < blocksAtOnce; ++i) {
        places[i] = load128(rowShuffles.rows[indices[i * stride]]);
    }
    return joinBlocks(places);
}

// As many blocks as there are lanes, by their palettes, to rows @p width pixels apart.
template <std::size_t stride, Lanes (*alphaOf)(Lanes)>
void decodeGroup(unsigned int *dest, std::size_t width, unsigned char const *src, Lanes palettes)
{
    unsigned char const *const indices = src + stride - 4;
    Lanes rows[4];
    for (std::size_t i = 0; i < 4; ++i) {
        rows[i] = shuffle8(palettes, rowPlaces<stride>(indices + i));
    }
    if constexpr (stride == 16) {
        Lanes const alpha = alphaOf(load(src));
        Lanes const first = QEL_OP(unpacklo_epi8)(zero(), alpha);
        Lanes const last = QEL_OP(unpackhi_epi8)(zero(), alpha);
        rows[0] = either(rows[0], QEL_OP(unpacklo_epi16)(zero(), first));
        rows[1] = either(rows[1], QEL_OP(unpackhi_epi16)(zero(), first));
        rows[2] = either(rows[2], QEL_OP(unpacklo_epi16)(zero(), last));
        rows[3] = either(rows[3], QEL_OP(unpackhi_epi16)(zero(), last));
    }
    for (std::size_t i = 0; i < 4; ++i) {
        store(dest + i * width, rows[i]);
    }
}

template <std::size_t stride, Lanes (*alphaOf)(Lanes)>
void decode(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks)
{
    constexpr unsigned int opaque = stride == 8 ? 0xFF000000 : 0;
    constexpr unsigned int fourth = stride == 8 ? 0 : 0x0000FFFF;
    constexpr std::size_t groupPixels = 4 * blocksAtOnce;
    for (; blocks >= palettesAtOnce; blocks -= palettesAtOnce) {
        Palettes const palettes = decodePalettes<stride>(src, opaque, fourth);
        for (Lanes const group : palettes.ofGroup) {
            decodeGroup<stride, alphaOf>(dest, width, src, group);
            dest += groupPixels;
            src += stride * blocksAtOnce;
        }
    }
    if (blocks == 0) {
        return;
    }
    unsigned char rest[palettesAtOnce * stride] = {};
    __builtin_memcpy(rest, src, blocks * stride);
    Palettes const palettes = decodePalettes<stride>(rest, opaque, fourth);
    unsigned int pixels[4][palettesAtOnce * 4];
    for (std::size_t i = 0; i < palettesAtOnce / blocksAtOnce; ++i) {
        decodeGroup<stride, alphaOf>(pixels[0] + i * groupPixels, palettesAtOnce * 4,
                                     rest + i * blocksAtOnce * stride, palettes.ofGroup[i]);
    }
    for (std::size_t row = 0; row < 4; ++row) {
        __builtin_memcpy(dest + row * width, pixels[row], blocks * 16);
    }
}

constexpr S3tcDecode decode1 = decode<8, noAlpha>;
constexpr S3tcDecode decode2or3 = decode<16, mappedAlphaOf>;
constexpr S3tcDecode decode4or5 = decode<16, interpolatedAlphaOf>;
