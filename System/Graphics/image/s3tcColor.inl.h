// The search for the colours of blocks. Included behind s3tcLanes.inl.h.
//
// What makes it fast, with the result of trying all: a sum over the distinct colours by their counts is a sum
// over the 16 pixels, and a channel of the points of all 64 pairs takes four values. A pair of one point
// twice is never the best of a block of three colours, and a pair is as good as its mirror image: 28 remain.

/// Colours cut to what a block can hold.
struct Colors {
    Lanes red, green, blue;
};

Colors quantise(Channels const &pixels)
{
    return {both(QEL_OP(srli_epi16)(pixels.red, 3), all8(31)),
            both(QEL_OP(srli_epi16)(pixels.green, 2), all8(63)),
            both(QEL_OP(srli_epi16)(pixels.blue, 3), all8(31))};
}

Lanes distance(Colors const &a, Colors const &b)
{
    return add8(add8(gap8(a.red, b.red), gap8(a.green, b.green)), gap8(a.blue, b.blue));
}

/// The 16-bit form of colours, in two halves.
struct Packed {
    Lanes low, high;

    // The 16-bit numbers of the first and of the last eight pixels.
    Lanes first() const { return QEL_OP(unpacklo_epi8)(low, high); }
    Lanes last() const { return QEL_OP(unpackhi_epi8)(low, high); }
};

Packed pack(Colors const &color)
{
    return {either(QEL_OP(slli_epi16)(both(color.green, all8(7)), 5), color.blue),
            either(QEL_OP(slli_epi16)(color.red, 3), both(QEL_OP(srli_epi16)(color.green, 3), all8(7)))};
}

// Blocks from their two colours, 16-bit numbers in all places, and an index for each pixel.
Lanes blockOf(Lanes color0, Lanes color1, Lanes indices)
{
    constexpr Table16 inFirst = {{0xFF, 0xFF}};
    constexpr Table16 inSecond = {{0, 0, 0xFF, 0xFF}};
    constexpr Table16 inLast = {{128, 128, 128, 128, 0, 4, 8, 12, 128, 128, 128, 128, 128, 128, 128, 128}};
    Lanes const nibbles = QEL_OP(maddubs_epi16)(indices, QEL_OP(set1_epi16)(0x0401));
    Lanes const bytes = QEL_OP(madd_epi16)(nibbles, QEL_OP(set1_epi32)(0x00100001));
    return either(either(both(color0, each(inFirst)), both(color1, each(inSecond))),
                  shuffle8(bytes, each(inLast)));
}

/// The two values that a channel's ends may take, and the points between them.
struct Ends {
    Lanes e0, e1; // bytes that fill their block
};

// Narrows a channel's extremes to the two ends that fit its values best, the first of equals.
template <bool hasHoles>
Ends findbest(Lanes values, Lanes opaque, int maxValue)
{
    Lanes low = smallest8(hasHoles ? either(values, inverse(opaque)) : values);
    Lanes high = largest8(hasHoles ? both(values, opaque) : values);
    Lanes const isTwo = same8(QEL_OP(sub_epi8)(high, low), all8(2));
    low = choose(isTwo, min8(low, all8(maxValue - 3)), low);
    high = choose(isTwo, add8(low, all8(3)), high);
    Lanes const second = min8(add8(low, all8(1)), high);
    Lanes const third = max8(QEL_OP(subs_epu8)(high, all8(1)), low);

    // One and two thirds of the range, of one less and of two less.
    constexpr Table16 times = {{1, 0, 1, 0, 1, 0, 2, 0, 2, 0, 2, 0}};
    constexpr Table16 less = {{0, 0, 1, 0, 2, 0, 0, 0, 2, 0, 4, 0}};
    Lanes const range = both(QEL_OP(sub_epi8)(high, low), QEL_OP(set1_epi16)(0xFF));
    Lanes const steps = third16(QEL_OP(subs_epu16)(QEL_OP(mullo_epi16)(range, each(times)), each(less)));
    auto const to = [&](Lanes point) { return gap8(values, point); };
    auto const toStep = [&](Lanes from, int step) { return to(add8(from, shuffle8(steps, all8(2 * step)))); };
    Lanes const toLow = to(low);
    Lanes const toSecond = to(second);
    Lanes const toThird = to(third);
    Lanes const toHigh = to(high);
    auto const sum = [&](Lanes a, Lanes b, Lanes c, Lanes d) {
        Lanes const nearest = min8(min8(a, b), min8(c, d));
        return sad(hasHoles ? both(nearest, opaque) : nearest);
    };
    // Between neighbours both points fall on the lower one.
    Lanes const sums01 =
        sums(sum(toLow, toSecond, toLow, toSecond), sum(toLow, toThird, toStep(low, 1), toStep(low, 4)));
    Lanes const sums23 = sums(sum(toLow, toHigh, toStep(low, 0), toStep(low, 3)),
                              sum(toSecond, toThird, toStep(second, 2), toStep(second, 5)));
    Lanes const sums45 = sums(sum(toSecond, toHigh, toStep(second, 1), toStep(second, 4)),
                              sum(toThird, toHigh, toThird, toHigh));
    constexpr Table16 pairs01 = {{0, 0, 0, 0, 0, 0, 0, 0, 1}};
    constexpr Table16 pairs23 = {{2, 0, 0, 0, 0, 0, 0, 0, 3}};
    constexpr Table16 pairs45 = {{4, 0, 0, 0, 0, 0, 0, 0, 5}};
    auto const key = [](Lanes ofPairs, Table16 const &number) {
        return either(QEL_OP(slli_epi64)(ofPairs, 3), each(number));
    };
    Lanes best = QEL_OP(min_epi32)(key(sums01, pairs01), key(sums23, pairs23));
    best = QEL_OP(min_epi32)(best, key(sums45, pairs45));
    best = QEL_OP(min_epi32)(best, swap64(best));
    Lanes const pair = both(spread8(best), all8(7));
    return {choose(over8(pair, all8(4)), third, choose(over8(pair, all8(2)), second, low)),
            choose(same8(pair, zero()), second, choose(same8(both(pair, all8(5)), all8(1)), third, high))};
}

// The pairs in the order in which they are tried: bits 0, 2 and 4 choose A's end of red, green and blue,
// bits 1, 3 and 5 B's.
constexpr unsigned int numPairs = 28;

struct Pairs {
    unsigned char choices[32];
};

constexpr Pairs pairs = [] {
    Pairs result{};
    unsigned int size = 0;
    for (unsigned int n = 0; n < 64; ++n) {
        auto const rank = [n](unsigned int bit) {
            return (n >> bit & 1) << 2 | (n >> (bit + 2) & 1) << 1 | (n >> (bit + 4) & 1);
        };
        if (rank(0) < rank(1)) {
            result.choices[size++] = static_cast<unsigned char>(n);
        }
    }
    return result;
}();

/// Distances of a channel's pixels to its points: the two ends, and the two thirds or the middle.
struct ChannelPoints {
    Lanes to[4];
};

template <bool hasHoles>
ChannelPoints channelPoints(Lanes values, Ends const &ends)
{
    Lanes const range = QEL_OP(sub_epi8)(ends.e1, ends.e0);
    ChannelPoints points;
    points.to[0] = gap8(values, ends.e0);
    points.to[1] = gap8(values, ends.e1);
    if (hasHoles) {
        Lanes const middle = add8(ends.e0, both(QEL_OP(srli_epi16)(range, 1), all8(127)));
        points.to[2] = points.to[3] = gap8(values, middle);
    } else {
        points.to[2] = gap8(values, add8(ends.e0, third8(range)));
        points.to[3] = gap8(values, add8(ends.e0, third8(add8(range, range))));
    }
    return points;
}

/// Distances to all points of the blocks, red and green added up.
struct Points {
    Lanes redGreen[4][4];
    Lanes blue[4];
};

// Which point of a channel a point of a pair takes there: A, B, the point beside A, the point beside B.
constexpr unsigned int choiceOf(unsigned int n, unsigned int channel, unsigned int point)
{
    unsigned int const a = n >> 2 * channel & 1;
    unsigned int const b = n >> (2 * channel + 1) & 1;
    return point == 0 ? a : point == 1 ? b : a == b ? a : (point == 2) == (a == 0) ? 2 : 3;
}

template <unsigned int n, unsigned int point>
Lanes toPoint(Points const &points)
{
    return add8(points.redGreen[choiceOf(n, 0, point)][choiceOf(n, 1, point)],
                points.blue[choiceOf(n, 2, point)]);
}

// The errors of four pairs from the one numbered @p first on, as 16-bit numbers that are still in two halves.
template <bool hasHoles, unsigned int first, unsigned int i = 0>
Lanes errorsOfFour(Points const &points, Lanes opaque)
{
    constexpr unsigned int n = pairs.choices[first + i];
    Lanes nearest = min8(min8(toPoint<n, 0>(points), toPoint<n, 1>(points)), toPoint<n, 2>(points));
    if constexpr (hasHoles) {
        nearest = both(nearest, opaque);
    } else {
        nearest = min8(nearest, toPoint<n, 3>(points));
    }
    Lanes const error = QEL_OP(slli_epi64)(sad(nearest), 16 * i);
    if constexpr (i < 3) {
        return either(error, errorsOfFour<hasHoles, first, i + 1>(points, opaque));
    } else {
        return error;
    }
}

// For eight pairs from the one numbered first on: ones where a choice between equal ends is not the first.
constexpr Table16 repeats(unsigned int first, unsigned int channel)
{
    Table16 table{};
    for (unsigned int i = 0; i < 8; ++i) {
        bool const isRepeat = (pairs.choices[first + i] >> 2 * channel & 3) != 0;
        table.bytes[2 * i] = table.bytes[2 * i + 1] = isRepeat ? 0xFF : 0;
    }
    return table;
}

constexpr Table16 numbers(unsigned int first)
{
    Table16 table{};
    for (unsigned int i = 0; i < 8; ++i) {
        table.bytes[2 * i] = static_cast<unsigned char>(first + i);
    }
    return table;
}

// Error << 5 | number of the best of eight pairs from the one numbered @p first on, among others.
template <bool hasHoles, unsigned int first>
Lanes keysOfEight(Points const &points, Lanes opaque, Lanes const (&isFlat)[3])
{
    static constexpr Table16 inRed = repeats(first, 0);
    static constexpr Table16 inGreen = repeats(first, 1);
    static constexpr Table16 inBlue = repeats(first, 2);
    static constexpr Table16 number = numbers(first);
    Lanes errors;
    if constexpr (first + 4 < numPairs) {
        errors = sums(errorsOfFour<hasHoles, first>(points, opaque),
                      errorsOfFour<hasHoles, first + 4>(points, opaque));
    } else {
        Lanes const four = errorsOfFour<hasHoles, first>(points, opaque);
        errors = sums(four, four);
    }
    Lanes const keys = either(QEL_OP(slli_epi16)(errors, 5), each(number));
    Lanes const repeated = either(either(both(isFlat[0], each(inRed)), both(isFlat[1], each(inGreen))),
                                  both(isFlat[2], each(inBlue)));
    return either(keys, repeated);
}

/// The pair found for each block.
struct Best {
    Colors a, b;
    Lanes error; // in all 16-bit numbers
};

template <bool hasHoles>
Best search(Colors const &colors, Lanes opaque)
{
    Ends const red = findbest<hasHoles>(colors.red, opaque, 31);
    Ends const green = findbest<hasHoles>(colors.green, opaque, 63);
    Ends const blue = findbest<hasHoles>(colors.blue, opaque, 31);
    Points points;
    {
        ChannelPoints const toRed = channelPoints<hasHoles>(colors.red, red);
        ChannelPoints const toGreen = channelPoints<hasHoles>(colors.green, green);
        ChannelPoints const toBlue = channelPoints<hasHoles>(colors.blue, blue);
        for (unsigned int i = 0; i < 4; ++i) {
            for (unsigned int j = 0; j < 4; ++j) {
                points.redGreen[i][j] = add8(toRed.to[i], toGreen.to[j]);
            }
            points.blue[i] = toBlue.to[i];
        }
    }
    Lanes const isFlat[3] = {same8(red.e0, red.e1), same8(green.e0, green.e1), same8(blue.e0, blue.e1)};
    Lanes best = QEL_OP(min_epu16)(keysOfEight<hasHoles, 0>(points, opaque, isFlat),
                                   keysOfEight<hasHoles, 8>(points, opaque, isFlat));
    best = QEL_OP(min_epu16)(best, keysOfEight<hasHoles, 16>(points, opaque, isFlat));
    best = smallest16(QEL_OP(min_epu16)(best, keysOfEight<hasHoles, 24>(points, opaque, isFlat)));

    Lanes const number = both(spread8(best), all8(31));
    Lanes const choice = choose(over8(number, all8(15)), shuffle8(eachBlock(pairs.choices + 16), number),
                                shuffle8(eachBlock(pairs.choices), number));
    auto const chosen = [&](Ends const &ends, int bit) {
        return choose(same8(both(choice, all8(bit)), zero()), ends.e0, ends.e1);
    };
    return {{chosen(red, 1), chosen(green, 4), chosen(blue, 16)},
            {chosen(red, 2), chosen(green, 8), chosen(blue, 32)},
            QEL_OP(srli_epi16)(best, 5)};
}

// The point two thirds of the way to @p near.
Colors thirdPoint(Colors const &near, Colors const &far)
{
    auto const mix = [](Lanes a, Lanes b) { return third8(add8(add8(a, a), b)); };
    return {mix(near.red, far.red), mix(near.green, far.green), mix(near.blue, far.blue)};
}

Colors middlePoint(Colors const &a, Colors const &b)
{
    auto const mix = [](Lanes x, Lanes y) { return both(QEL_OP(srli_epi16)(add8(x, y), 1), all8(127)); };
    return {mix(a.red, b.red), mix(a.green, b.green), mix(a.blue, b.blue)};
}

/// The index of the nearest point so far; of equals it is the first.
struct Nearest {
    Lanes distance;
    Lanes index;

    void add(Lanes other, int number)
    {
        index = choose(over8(distance, other), all8(number), index);
        distance = min8(distance, other);
    }
};

/// Blocks, in the first 64 bits of their 128, and their errors in the first 16.
struct Coded {
    Lanes block;
    Lanes error;
};

Coded findcolor4x4(Colors const &colors)
{
    Packed const packed = pack(colors);
    Lanes const least = smallest16(QEL_OP(min_epu16)(packed.first(), packed.last()));
    Lanes const most = inverse(smallest16(inverse(QEL_OP(max_epu16)(packed.first(), packed.last()))));
    auto const isSame = [&](Lanes number) {
        return both(same8(packed.low, spread8(number)), same8(packed.high, shuffle8(number, all8(1))));
    };
    Lanes const isLeast = isSame(least);
    Lanes const isSingle = isAll(isLeast);
    Lanes const isBlack = isAll(same8(most, zero()));
    Lanes const isFew = isAll(either(isLeast, isSame(most)));
    // One colour, or two of which the larger comes first.
    Lanes const few = blockOf(either(most, isBlack), without(least, isSingle),
                              both(without(isLeast, without(isSingle, isBlack)), all8(1)));
    if (isEverywhere(isFew)) {
        return {few, zero()};
    }
    Best const best = search<false>(colors, zero());
    Nearest nearest{distance(colors, best.b), zero()};
    nearest.add(distance(colors, best.a), 1);
    nearest.add(distance(colors, thirdPoint(best.b, best.a)), 2);
    nearest.add(distance(colors, thirdPoint(best.a, best.b)), 3);
    Lanes const many = blockOf(pack(best.b).first(), pack(best.a).first(), nearest.index);
    return {choose(isFew, few, many), without(best.error, isFew)};
}

// For blocks that are not opaque; @p opaque has ones where a pixel is.
Coded findcolor4x4a(Colors const &colors, Lanes opaque)
{
    Packed const packed = pack(colors);
    Packed const ofLeast{either(packed.low, inverse(opaque)), either(packed.high, inverse(opaque))};
    Packed const ofMost{both(packed.low, opaque), both(packed.high, opaque)};
    Lanes const least = smallest16(QEL_OP(min_epu16)(ofLeast.first(), ofLeast.last()));
    Lanes const most = inverse(smallest16(inverse(QEL_OP(max_epu16)(ofMost.first(), ofMost.last()))));
    auto const isSame = [&](Lanes number) {
        return both(same8(packed.low, spread8(number)), same8(packed.high, shuffle8(number, all8(1))));
    };
    Lanes const holes = inverse(opaque);
    Lanes const isLeast = isSame(least);
    Lanes const isMost = isSame(most);
    Lanes const isSingle = isAll(either(isMost, holes)); // or none at all
    Lanes const isBlack = isAll(same8(most, zero()));
    Lanes const isFew = isAll(either(either(isLeast, isMost), holes));
    Lanes const few = blockOf(without(least, isSingle), either(most, isBlack),
                              either(both(without(isMost, isBlack), all8(1)), both(holes, all8(3))));
    constexpr int opaqueError = 127;
    Lanes const numOpaque = sad(both(opaque, all8(1)));
    Lanes const alphaError =
        QEL_OP(mullo_epi16)(QEL_OP(add_epi64)(numOpaque, swap64(numOpaque)), QEL_OP(set1_epi16)(opaqueError));
    if (isEverywhere(isFew)) {
        return {few, alphaError};
    }
    Best const best = search<true>(colors, opaque);
    Nearest nearest{distance(colors, best.a), zero()};
    nearest.add(distance(colors, best.b), 1);
    nearest.add(distance(colors, middlePoint(best.a, best.b)), 2);
    Lanes const many =
        blockOf(pack(best.a).first(), pack(best.b).first(), choose(opaque, nearest.index, all8(3)));
    return {choose(isFew, few, many), QEL_OP(add_epi16)(without(best.error, isFew), alphaError)};
}

Coded codeColors(Channels const &pixels)
{
    return findcolor4x4(quantise(pixels));
}

Coded codeColorsWithHoles(Channels const &pixels)
{
    Colors const colors = quantise(pixels);
    Lanes const opaque = over8(zero(), pixels.alpha);
    Lanes const isOpaque = isAll(opaque);
    if (isEverywhere(isOpaque)) {
        return findcolor4x4(colors);
    }
    Coded const holed = findcolor4x4a(colors, opaque);
    Coded const full = findcolor4x4(colors);
    return {choose(isOpaque, full.block, holed.block), choose(isOpaque, full.error, holed.error)};
}

template <Coded (*coder)(Channels const &)>
std::uint32_t encode(unsigned char *dest, std::size_t stride, unsigned char const *src, std::size_t pitch,
                     std::size_t blocks)
{
    std::uint32_t total = 0;
    forEachGroup(src, pitch, blocks, [&](Channels const &pixels, std::size_t count) {
        Coded const coded = coder(pixels);
        alignas(64) std::uint64_t bits[2 * blocksAtOnce];
        alignas(64) std::uint16_t errors[8 * blocksAtOnce];
        store(bits, coded.block);
        store(errors, coded.error);
        for (std::size_t i = 0; i < count; ++i, dest += stride) {
            __builtin_memcpy(dest, bits + 2 * i, 8);
            total += errors[8 * i];
        }
    });
    return total;
}
