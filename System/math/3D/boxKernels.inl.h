// The kernels, for any width. A source includes this within an unnamed namespace, after it has defined
//   V          a vector of V::width floats: V::all, V::quads, V::min, V::max, abs, + - * /, < and <= that
//   give a V::Mask V::Mask    & and |, bits(), choose(a, b) Quads      V::width boxes in rows of low and of
//   high corners, four rows of each transpose  turns four rows into x, y and z. Lane i then belongs to box
//   Quads::boxOfLane(i); Quads::ordered()
//              brings lanes into the order of the boxes, for a V and for the bits of 32 boxes
// Each test is the single one of cMath, operation by operation.

struct Rows {
    V low[3];
    V high[3];

    explicit Rows(float const *boxes)
    {
        Quads const quads(boxes);
        transpose(quads.low, low);
        transpose(quads.high, high);
    }
};

constexpr std::size_t boxFloats = 8;
constexpr std::size_t blockBoxes = 32;

// Runs test over whole blocks of 32 boxes, and over the rest in a block of its own.
// test(boxes, first) gives the hits, lane by lane, among the boxes of one vector; they start with box number
// first.
template <class Test>
std::size_t forAllBoxes(float const *boxes, std::size_t count, std::uint32_t *hits, Test const &test)
{
    std::size_t total = 0;
    auto const block = [&](float const *from, std::size_t first) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < blockBoxes; i += V::width) {
            word |= static_cast<std::uint32_t>(test(from + i * boxFloats, first + i)) << i;
        }
        return Quads::ordered(word);
    };
    std::size_t done = 0;
    for (; done + blockBoxes <= count; done += blockBoxes) {
        std::uint32_t const word = block(boxes + done * boxFloats, done);
        *hits++ = word;
        total += static_cast<std::size_t>(__builtin_popcount(word));
    }
    if (done < count) {
        float rest[blockBoxes * boxFloats] = {};
        __builtin_memcpy(rest, boxes + done * boxFloats, (count - done) * boxFloats * sizeof(float));
        std::uint32_t const word = block(rest, done) & ((1u << (count - done)) - 1);
        *hits = word;
        total += static_cast<std::size_t>(__builtin_popcount(word));
    }
    return total;
}

V::Mask within(V at, V from, V to)
{
    return (from <= at) & (at <= to);
}

// Only the boxes up to count get a t.
void storeSome(V from, float *to, std::size_t first, std::size_t count)
{
    if (first + V::width <= count) {
        from.store(to + first);
    } else if (first < count) {
        float rest[V::width];
        from.store(rest);
        __builtin_memcpy(to + first, rest, (count - first) * sizeof(float));
    }
}

// Back tells by its bits for which axes the ray runs down, and so enters by the high face.
template <unsigned Back>
std::size_t rayForm(RayQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    V const zero = V::all(0);
    V const infinity = V::all(__builtin_inff());
    V const o[3] = {V::all(query.origin[0]), V::all(query.origin[1]), V::all(query.origin[2])};
    V const d[3] = {V::all(query.direction[0]), V::all(query.direction[1]), V::all(query.direction[2])};
    // A ray that stands still on an axis meets no face there: nothing is above 0 once it is divided by NaN.
    auto const divisor = [](float along) { return V::all(along == 0 ? __builtin_nanf("") : along); };
    V const by[3] = {divisor(query.direction[0]), divisor(query.direction[1]), divisor(query.direction[2])};
    float *const t = query.t;
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t first) {
        Rows const box(from);
        V const x = (((Back & 1) != 0 ? box.high[0] : box.low[0]) - o[0]) / by[0];
        V const y = (((Back & 2) != 0 ? box.high[1] : box.low[1]) - o[1]) / by[1];
        V const z = (((Back & 4) != 0 ? box.high[2] : box.low[2]) - o[2]) / by[2];
        V::Mask const hitsX = (zero < x) & within(o[1] + d[1] * x, box.low[1], box.high[1]) &
                              within(o[2] + d[2] * x, box.low[2], box.high[2]);
        V::Mask const hitsY = (zero < y) & within(o[0] + d[0] * y, box.low[0], box.high[0]) &
                              within(o[2] + d[2] * y, box.low[2], box.high[2]);
        V::Mask const hitsZ = (zero < z) & within(o[0] + d[0] * z, box.low[0], box.high[0]) &
                              within(o[1] + d[1] * z, box.low[1], box.high[1]);
        V::Mask const inside = (box.low[0] < o[0]) & (o[0] < box.high[0]) & (box.low[1] < o[1]) &
                               (o[1] < box.high[1]) & (box.low[2] < o[2]) & (o[2] < box.high[2]);
        V::Mask const outsideHits = hitsX | hitsY | hitsZ;
        if (t != nullptr) {
            V const best = V::min(V::min(hitsX.choose(x, infinity), hitsY.choose(y, infinity)),
                                  hitsZ.choose(z, infinity));
            storeSome(Quads::ordered(outsideHits.choose(best, zero)), t, first, count);
        }
        return (inside | outsideHits).bits();
    });
}

std::size_t rayKernel(RayQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    constexpr decltype(&rayForm<0>) forms[8] = {rayForm<0>, rayForm<1>, rayForm<2>, rayForm<3>,
                                                rayForm<4>, rayForm<5>, rayForm<6>, rayForm<7>};
    unsigned const back = (query.direction[0] < 0 ? 1u : 0u) | (query.direction[1] < 0 ? 2u : 0u) |
                          (query.direction[2] < 0 ? 4u : 0u);
    return forms[back](query, boxes, count, hits);
}

std::size_t sphereKernel(SphereQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    float const four[4] = {query.center[0], query.center[1], query.center[2], 0};
    V const center = V::quads(four);
    V const radiusSq = V::all(query.radiusSq);
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t) {
        Quads const box(from);
        V squares[4], axis[3];
        for (int r = 0; r < 4; ++r) {
            V const outside = V::min(box.high[r], V::max(box.low[r], center)) - center;
            squares[r] = outside * outside;
        }
        transpose(squares, axis);
        return (axis[0] + axis[1] + axis[2] <= radiusSq).bits();
    });
}

std::size_t boxKernel(BoxQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    V const half = V::all(0.5f);
    V const c[3] = {V::all(query.center[0]), V::all(query.center[1]), V::all(query.center[2])};
    V const h[3] = {V::all(query.half[0]), V::all(query.half[1]), V::all(query.half[2])};
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t) {
        Rows const box(from);
        auto const overlaps = [&](int axis) {
            V const apart = ((box.high[axis] + box.low[axis]) * half - c[axis]).abs();
            return apart < h[axis] + (box.high[axis] - box.low[axis]) * half;
        };
        return (overlaps(0) & overlaps(1) & overlaps(2)).bits();
    });
}

std::size_t viewKernel(ViewQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    V const oneHalf = V::all(0.5f);
    V m[4][3], size[3][3], negLimit[3];
    for (int axis = 0; axis < 3; ++axis) {
        for (int row = 0; row < 4; ++row) {
            m[row][axis] = V::all(query.view[row][axis]);
        }
        for (int row = 0; row < 3; ++row) {
            size[row][axis] = m[row][axis].abs();
        }
        negLimit[axis] = V::all(query.negLimit[axis]);
    }
    V const posLimit[2] = {V::all(query.posLimit[0]), V::all(query.posLimit[1])};
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t) {
        Rows const box(from);
        V half[3], center[3];
        for (int axis = 0; axis < 3; ++axis) {
            half[axis] = (box.high[axis] - box.low[axis]) * oneHalf;
            center[axis] = box.low[axis] + half[axis];
            half[axis] = half[axis].abs();
        }
        auto const seen = [&](int axis) {
            return center[0] * m[0][axis] + center[1] * m[1][axis] + center[2] * m[2][axis] + m[3][axis];
        };
        auto const reach = [&](int axis) {
            return half[0] * size[0][axis] + half[1] * size[1][axis] + half[2] * size[2][axis];
        };
        V const x = seen(0), y = seen(1), z = seen(2);
        V const dx = reach(0), dy = reach(1), dz = reach(2);
        return ((negLimit[0] < x + dx) & (negLimit[1] < y + dy) & (negLimit[2] < z + dz) &
                (x - dx < posLimit[0]) & (y - dy < posLimit[1]))
            .bits();
    });
}

struct Range {
    V low, high;

    // Where one of the two is NaN it stays in one of the ends.
    Range(V a, V b) : low(V::min(a, b)), high(V::max(b, a)) {}
};

std::size_t beamKernel(BeamQuery const &query, float const *boxes, std::size_t count, std::uint32_t *hits)
{
    V const zero = V::all(0);
    V const infinity = V::all(__builtin_inff());
    V m[4][3], o[3], d[3];
    for (int axis = 0; axis < 3; ++axis) {
        for (int row = 0; row < 4; ++row) {
            m[row][axis] = V::all(query.view[row][axis]);
        }
        o[axis] = V::all(query.origin[axis]);
        d[axis] = V::all(query.direction[axis]);
    }
    V const sizeX = V::all(query.size[0]), sizeY = V::all(query.size[1]);
    V const negX = V::all(-query.size[0]), negY = V::all(-query.size[1]), negZ = V::all(-query.length);
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t) {
        Rows const box(from);
        auto const seen = [&](int axis) {
            Range const x(box.low[0] * m[0][axis], box.high[0] * m[0][axis]);
            Range const y(box.low[1] * m[1][axis], box.high[1] * m[1][axis]);
            Range const z(box.low[2] * m[2][axis], box.high[2] * m[2][axis]);
            Range sum = x;
            sum.low = x.low + y.low + z.low + m[3][axis];
            sum.high = x.high + y.high + z.high + m[3][axis];
            return sum;
        };
        Range const x = seen(0), y = seen(1), z = seen(2);
        Range const aheadX((box.low[0] - o[0]) * d[0], (box.high[0] - o[0]) * d[0]);
        Range const aheadY((box.low[1] - o[1]) * d[1], (box.high[1] - o[1]) * d[1]);
        Range const aheadZ((box.low[2] - o[2]) * d[2], (box.high[2] - o[2]) * d[2]);
        V const nearest = aheadX.low + aheadY.low + aheadZ.low;
        V const farthest = aheadX.high + aheadY.high + aheadZ.high;

        V::Mask const finite = (x.low.abs() < infinity) & (x.high.abs() < infinity) &
                               (y.low.abs() < infinity) & (y.high.abs() < infinity) &
                               (z.low.abs() < infinity) & (z.high.abs() < infinity) &
                               (nearest.abs() < infinity) & (farthest.abs() < infinity);
        V::Mask const far = query.limited ? negZ < z.high : finite;
        unsigned result = ((zero < farthest) & (x.low < sizeX) & (negX < x.high) & (y.low < sizeY) &
                           (negY < y.high) & far & finite)
                              .bits();
        unsigned constexpr every = (1u << V::width) - 1;
        for (unsigned odd = ~finite.bits() & every; odd != 0; odd &= odd - 1) {
            auto const lane = static_cast<unsigned>(__builtin_ctz(odd));
            result |= query.single(query.beam, from + Quads::boxOfLane(lane) * boxFloats) ? 1u << lane : 0u;
        }
        return result;
    });
}

std::size_t frustumKernel(FrustumQuery const &query, float const *boxes, std::size_t count,
                          std::uint32_t *hits)
{
    V const zero = V::all(0);
    return forAllBoxes(boxes, count, hits, [&](float const *from, std::size_t) {
        Rows const box(from);
        unsigned outside = 0;
        for (std::size_t i = 0; i < query.count; ++i) {
            float const *const p = query.planes + i * 4;
            V const x = p[0] >= 0 ? box.high[0] : box.low[0];
            V const y = p[1] >= 0 ? box.high[1] : box.low[1];
            V const z = p[2] >= 0 ? box.high[2] : box.low[2];
            V const value = V::all(p[0]) * x + V::all(p[1]) * y + V::all(p[2]) * z + V::all(p[3]);
            outside |= (value < zero).bits();
        }
        unsigned constexpr every = (1u << V::width) - 1;
        return ~outside & every;
    });
}

constexpr BoxKernels kernels{rayKernel, sphereKernel, boxKernel, viewKernel, beamKernel, frustumKernel};
