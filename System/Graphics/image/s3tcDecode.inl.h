// Decoding of blocks: the colours of eight blocks at once, then a byte shuffle for each row of four pixels.
// Included behind s3tcLanes.inl.h.

constexpr std::size_t palettesAtOnce = 8;

/// The four colours of each of a few blocks.
struct Palettes {
    alignas(16) unsigned int colors[palettesAtOnce][4];
};

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

__m128i load128(void const *from)
{
    return _mm_loadu_si128(static_cast<__m128i const *>(from));
}

__m128i load64(void const *from)
{
    return _mm_loadl_epi64(static_cast<__m128i const *>(from));
}

void store128(void *to, __m128i value)
{
    _mm_storeu_si128(static_cast<__m128i *>(to), value);
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
void decodePalettes(Palettes &palettes, unsigned char const *src, unsigned int opaque, unsigned int fourth)
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
    auto const turn = [](__m128i const(&colors)[4], unsigned int(*to)[4]) {
        __m128i const c01 = _mm_unpacklo_epi32(colors[0], colors[1]);
        __m128i const c23 = _mm_unpacklo_epi32(colors[2], colors[3]);
        __m128i const d01 = _mm_unpackhi_epi32(colors[0], colors[1]);
        __m128i const d23 = _mm_unpackhi_epi32(colors[2], colors[3]);
        store128(to[0], _mm_unpacklo_epi64(c01, c23));
        store128(to[1], _mm_unpackhi_epi64(c01, c23));
        store128(to[2], _mm_unpacklo_epi64(d01, d23));
        store128(to[3], _mm_unpackhi_epi64(d01, d23));
    };
    turn(first, palettes.colors);
    turn(last, palettes.colors + 4);
}

__m128i colorRow(__m128i palette, unsigned int indices)
{
    return _mm_shuffle_epi8(palette, load128(rowShuffles.rows[indices & 255]));
}

void decodeBlock1(unsigned int *dest, std::size_t width, unsigned char const *src, __m128i palette)
{
    store128(dest, colorRow(palette, src[4]));
    store128(dest + width, colorRow(palette, src[5]));
    store128(dest + 2 * width, colorRow(palette, src[6]));
    store128(dest + 3 * width, colorRow(palette, src[7]));
}

// Stores a block's colours with an alpha for each pixel.
void storeWithAlpha(unsigned int *dest, std::size_t width, unsigned char const *src, __m128i palette,
                    __m128i alpha)
{
    __m128i const zeros = _mm_setzero_si128();
    __m128i const low = _mm_unpacklo_epi8(zeros, alpha);
    __m128i const high = _mm_unpackhi_epi8(zeros, alpha);
    store128(dest, _mm_or_si128(colorRow(palette, src[12]), _mm_unpacklo_epi16(zeros, low)));
    store128(dest + width, _mm_or_si128(colorRow(palette, src[13]), _mm_unpackhi_epi16(zeros, low)));
    store128(dest + 2 * width, _mm_or_si128(colorRow(palette, src[14]), _mm_unpacklo_epi16(zeros, high)));
    store128(dest + 3 * width, _mm_or_si128(colorRow(palette, src[15]), _mm_unpackhi_epi16(zeros, high)));
}

void decodeBlock2or3(unsigned int *dest, std::size_t width, unsigned char const *src, __m128i palette)
{
    __m128i const bytes = load64(src);
    __m128i const nibble = _mm_set1_epi8(15);
    __m128i const nibbles =
        _mm_unpacklo_epi8(_mm_and_si128(bytes, nibble), _mm_and_si128(_mm_srli_epi16(bytes, 4), nibble));
    storeWithAlpha(dest, width, src, palette, _mm_or_si128(nibbles, _mm_slli_epi16(nibbles, 4)));
}

/// How an alpha block's eight values come from its two: weights, a factor that divides, what is fixed.
struct AlphaForm {
    alignas(16) signed char weights[16];
    alignas(16) std::uint16_t divide[8];
    alignas(16) std::uint16_t fixed[8];
};

constexpr std::uint16_t seventh = 9363; // of 65 536, rounded up
constexpr std::uint16_t fifth = 13108;

constexpr AlphaForm alphaForms[2] = {
    {{5, 0, 0, 5, 4, 1, 3, 2, 2, 3, 1, 4, 0, 0, 0, 0},
     {fifth, fifth, fifth, fifth, fifth, fifth, fifth, fifth},
     {0, 0, 0, 0, 0, 0, 0, 255}},
    {{7, 0, 0, 7, 6, 1, 5, 2, 4, 3, 3, 4, 2, 5, 1, 6},
     {seventh, seventh, seventh, seventh, seventh, seventh, seventh, seventh},
     {}},
};

void decodeBlock4or5(unsigned int *dest, std::size_t width, unsigned char const *src, __m128i palette)
{
    AlphaForm const &form = alphaForms[src[0] > src[1]];
    __m128i const bits = load64(src);
    __m128i const ends = _mm_shuffle_epi8(bits, _mm_set1_epi16(0x0100));
    __m128i const sums = _mm_maddubs_epi16(ends, load128(form.weights));
    __m128i const values = _mm_or_si128(_mm_mulhi_epu16(sums, load128(form.divide)), load128(form.fixed));
    __m128i const points = _mm_packus_epi16(values, values);
    // Each pixel's three bits are moved to the top of a 16-bit number.
    __m128i const toTop = _mm_setr_epi16(1 << 13, 1 << 10, 1 << 7, 1 << 12, 1 << 9, 1 << 6, 1 << 11, 1 << 8);
    __m128i const first =
        _mm_shuffle_epi8(bits, _mm_setr_epi8(2, 3, 2, 3, 2, 3, 3, 4, 3, 4, 3, 4, 4, -1, 4, -1));
    __m128i const last =
        _mm_shuffle_epi8(bits, _mm_setr_epi8(5, 6, 5, 6, 5, 6, 6, 7, 6, 7, 6, 7, 7, -1, 7, -1));
    __m128i const indices = _mm_packus_epi16(_mm_srli_epi16(_mm_mullo_epi16(first, toTop), 13),
                                             _mm_srli_epi16(_mm_mullo_epi16(last, toTop), 13));
    storeWithAlpha(dest, width, src, palette, _mm_shuffle_epi8(points, indices));
}

template <std::size_t stride,
          void (*decodeBlock)(unsigned int *, std::size_t, unsigned char const *, __m128i)>
void decode(unsigned int *dest, std::size_t width, unsigned char const *src, std::size_t blocks)
{
    constexpr unsigned int opaque = stride == 8 ? 0xFF000000 : 0;
    constexpr unsigned int fourth = stride == 8 ? 0 : 0x0000FFFF;
    Palettes palettes;
    while (blocks != 0) {
        std::size_t const count = blocks < palettesAtOnce ? blocks : palettesAtOnce;
        if (count == palettesAtOnce) {
            decodePalettes<stride>(palettes, src, opaque, fourth);
        } else {
            unsigned char rest[palettesAtOnce * stride] = {};
            __builtin_memcpy(rest, src, count * stride);
            decodePalettes<stride>(palettes, rest, opaque, fourth);
        }
        for (std::size_t i = 0; i < count; ++i, dest += 4, src += stride) {
            decodeBlock(dest, width, src, load128(palettes.colors[i]));
        }
        blocks -= count;
    }
}

constexpr S3tcKernels::Decode decode1 = decode<8, decodeBlock1>;
constexpr S3tcKernels::Decode decode2or3 = decode<16, decodeBlock2or3>;
constexpr S3tcKernels::Decode decode4or5 = decode<16, decodeBlock4or5>;
