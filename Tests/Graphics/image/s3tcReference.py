#!/usr/bin/env python3
"""Codes the images of s3tcTest.cpp by the rules of block compression as one would tell them, and prints what
must come out, for s3tcGolden.inc:

    python3 s3tcReference.py > s3tcGolden.inc

Slow and plain on purpose; it shares nothing with the library but the way the images are made.
"""

COLUMNS = 32  # blocks in a row of blocks; each row of blocks is a family of its own
FAMILIES = 10


class Random:
    def __init__(self, seed):
        self.state = seed

    def below(self, limit):
        self.state = (self.state * 1664525 + 1013904223) % 2**32
        return (self.state >> 16) % limit


def clamp(value):
    return max(0, min(255, value))


def block_pixels(family, random):
    """16 pixels of four channels, blue first."""
    base = [random.below(256) for _ in range(4)]
    step = [(random.below(33) - 16, random.below(33) - 16) for _ in range(4)]
    palette = [[random.below(256) for _ in range(4)] for _ in range(4)]
    size = 1 + random.below(4)
    fixed = random.below(8)
    pixels = []
    for i in range(16):
        noise = [random.below(256) for _ in range(4)]
        if family == 0:    # noise
            pixel = noise
        elif family == 1:  # few colours
            pixel = palette[noise[0] % size]
        elif family == 2:  # gradients
            pixel = [clamp(base[c] + i % 4 * step[c][0] + i // 4 * step[c][1]) for c in range(4)]
        elif family == 3:  # narrow
            pixel = [clamp(base[c] + noise[c] % (2 << size)) for c in range(4)]
        elif family == 4:  # bright, alpha at the top
            pixel = [224 + noise[c] % 32 for c in range(3)] + [255 - noise[3] % (2 + fixed)]
        elif family == 5:  # dark, alpha at the bottom
            pixel = [noise[c] % 32 for c in range(3)] + [noise[3] % (2 + fixed)]
        elif family == 6:  # channels that do not change
            pixel = [base[c] if fixed >> c & 1 else noise[c] for c in range(3)] + [255]
        elif family == 7:  # alpha of 0, 255 and something between
            pixel = noise[:3] + [(0, 255, clamp(base[3] + noise[3] % (2 << size)))[noise[0] % 3]]
        elif family == 8:  # quantised ranges of two, also at the top
            pixel = [clamp(base[c] // 64 * 72 + 8 * (noise[c] % 3)) for c in range(3)]
            pixel[1] = clamp(base[1] // 64 * 81 + 4 * (noise[1] % 3))
            pixel.append(clamp(base[3] // 32 * 36 + noise[3] % 3))
        else:              # holes
            pixel = [clamp(base[c] + noise[c] % (4 << size)) for c in range(3)]
            pixel.append(128 * (noise[3] % (1 + fixed) != 0) + noise[3] % 128)
        pixels.append(pixel)
    return pixels


def image(family):
    random = Random(family + 1)
    return [block_pixels(family, random) for _ in range(COLUMNS)]


# Colours

def quantised(pixel):
    return (pixel[2] // 8, pixel[1] // 4, pixel[0] // 8)  # tuples compare by red, then green, then blue


def packed(color):
    return color[0] * 2048 + color[1] * 32 + color[2]


def distance(a, b):
    return sum(abs(x - y) for x, y in zip(a, b))


def narrowed(values, top):
    """The two ends of a channel; values with repeats."""
    low, high = min(values), max(values)
    if high - low < 2:
        return low, high
    if high - low == 2:
        if low >= top - 3:
            low, high = top - 3, top
        else:
            high = low + 3
    candidates = [low, low + 1, high - 1, high]
    best = None
    for i in range(4):
        for j in range(i + 1, 4):
            lo, hi = candidates[i], candidates[j]
            first, second = (2 * lo + hi) // 3, (lo + 2 * hi) // 3
            cost = 0
            for v in values:
                if v >= second:
                    cost += min(abs(hi - v), v - second)
                elif v < first:
                    cost += min(abs(lo - v), first - v)
                else:
                    cost += min(v - first, second - v)
            if best is None or cost < best[0]:
                best = cost, lo, hi
    return best[1:]


def search(colors, points_of):
    """The best A and B for quantised colours with repeats, and the error."""
    ends = [narrowed([color[c] for color in colors], top) for c, top in enumerate((31, 63, 31))]
    best = None
    for n in range(64):
        bits = [n // 2**k % 2 for k in range(6)]
        a = tuple(ends[c][bits[2 * c]] for c in range(3))
        b = tuple(ends[c][bits[2 * c + 1]] for c in range(3))
        if a > b:
            continue
        points = points_of(a, b)
        error = sum(min(distance(color, point) for point in points) for color in colors)
        if best is None or error < best[0]:
            best = error, a, b
    return best


def thirds(a, b):
    return (a, b, tuple((2 * x + y) // 3 for x, y in zip(a, b)),
            tuple((x + 2 * y) // 3 for x, y in zip(a, b)))


def halves(a, b):
    return a, b, tuple((x + y) // 2 for x, y in zip(a, b))


def nearest(color, points):
    distances = [distance(color, point) for point in points]
    return distances.index(min(distances))


def color_bytes(color0, color1, indices):
    word = sum(index << 2 * i for i, index in enumerate(indices))
    return color0.to_bytes(2, 'little') + color1.to_bytes(2, 'little') + word.to_bytes(4, 'little')


def code_colors(pixels):
    colors = [quantised(pixel) for pixel in pixels]
    distinct = sorted(set(colors))
    if len(distinct) == 1:
        value = packed(distinct[0])
        return (color_bytes(value, 0, [0] * 16) if value else color_bytes(0xFFFF, 0, [1] * 16)), 0
    if len(distinct) == 2:
        small, large = distinct
        indices = [int(distance(c, large) > distance(c, small)) for c in colors]
        return color_bytes(packed(large), packed(small), indices), 0
    error, a, b = search(colors, thirds)
    _, _, p, q = thirds(a, b)
    return color_bytes(packed(b), packed(a), [nearest(c, (b, a, q, p)) for c in colors]), error


def code_holes(pixels):
    opaque = [pixel[3] >= 128 for pixel in pixels]
    if all(opaque):
        return code_colors(pixels)
    colors = [quantised(pixel) for pixel in pixels]
    solid = [color for color, is_solid in zip(colors, opaque) if is_solid]
    distinct = sorted(set(solid))
    error = 0
    if len(distinct) <= 1:
        value = packed(distinct[0]) if distinct else 0
        color0, color1 = 0, value or 0xFFFF
        index_of = lambda color: 1 if value else 0
    elif len(distinct) == 2:
        small, large = distinct
        color0, color1 = packed(small), packed(large)
        index_of = lambda color: int(distance(color, small) > distance(color, large))
    else:
        error, a, b = search(solid, halves)
        color0, color1 = packed(a), packed(b)
        index_of = lambda color: nearest(color, halves(a, b))
    indices = [index_of(color) if is_solid else 3 for color, is_solid in zip(colors, opaque)]
    return color_bytes(color0, color1, indices), error + 127 * len(solid)


# Alpha

def code_mapped(alphas):
    word = sum(alpha // 16 << 4 * i for i, alpha in enumerate(alphas))
    return word.to_bytes(8, 'little'), sum(abs(alpha - alpha // 16 * 255 // 15) for alpha in alphas)


def alpha_values(a0, a1):
    if a0 > a1:
        return [a0, a1] + [((7 - k) * a0 + k * a1) // 7 for k in range(1, 7)]
    return [a0, a1] + [((5 - k) * a0 + k * a1) // 5 for k in range(1, 5)] + [0, 255]


def alpha_bytes(a0, a1, indices):
    word = sum(index << 3 * i for i, index in enumerate(indices))
    return bytes([a0, a1]) + word.to_bytes(6, 'little')


def code_interpolated(alphas):
    distinct = list(dict.fromkeys(alphas))  # in order of appearance
    if len(distinct) == 1:
        return alpha_bytes(distinct[0], 0, [0] * 16), 0
    if len(distinct) == 2:
        return alpha_bytes(distinct[0], distinct[1], [distinct.index(alpha) for alpha in alphas]), 0
    best = None

    def run(smallest, largest, parts, extra):
        nonlocal best
        for lo in range(max(0, smallest - 1), min(255, smallest + 1) + 1):
            hi = lo
            while hi <= largest:
                hi += 4
                if hi > 255:
                    continue
                points = extra + [(k * lo + (parts - k) * hi) // parts for k in range(parts + 1)]
                error = sum(min(abs(alpha - point) for point in points) for alpha in distinct)
                if best is None or error < best[0]:
                    best = (error, lo, hi) if extra else (error, hi, lo)

    run(min(distinct), max(distinct), 7, [])
    smallest = min([alpha for alpha in distinct if alpha >= 2], default=255)
    largest = max([alpha for alpha in distinct if alpha <= 253], default=0)
    if smallest < largest:
        run(smallest, largest, 5, [0, 255])
    if best is None:  # 253, 254 and 255
        best = 0, 255, 253
    error, a0, a1 = best
    values = alpha_values(a0, a1)
    # The nearest; of equally near ones the lower; of equal ones the first.
    rank = lambda alpha: min(range(8), key=lambda i: (abs(alpha - values[i]), values[i], i))
    return alpha_bytes(a0, a1, [rank(alpha) for alpha in alphas]), error


# Decoding

def decoded_colors(block, solid, fourth):
    numbers = [int.from_bytes(block[0:2], 'little'), int.from_bytes(block[2:4], 'little')]
    c0, c1 = [(n // 2048 * 255 // 31, n // 32 % 64 * 255 // 63, n % 32 * 255 // 31) for n in numbers]
    colors = [c0, c1]
    if c0 > c1:
        colors += [tuple((2 * x + y) // 3 for x, y in zip(c0, c1)),
                   tuple((x + 2 * y) // 3 for x, y in zip(c0, c1))]
    else:
        colors.append(tuple((x + y) // 2 for x, y in zip(c0, c1)))
    words = [solid << 24 | red << 16 | green << 8 | blue for red, green, blue in colors]
    if len(words) == 3:
        words.append(fourth)
    indices = int.from_bytes(block[4:8], 'little')
    return [words[indices >> 2 * i & 3] for i in range(16)]


def decode(form, block):
    if form == 1:
        return decoded_colors(block, 255, 0)
    colors = decoded_colors(block[8:], 0, 0x0000FFFF)
    bits = int.from_bytes(block[:8], 'little')
    if form == 2:
        alphas = [(bits >> 4 * i & 15) * 255 // 15 for i in range(16)]
    else:
        values = alpha_values(block[0], block[1])
        alphas = [values[bits >> (16 + 3 * i) & 7] for i in range(16)]
    return [color | alpha << 24 for color, alpha in zip(colors, alphas)]


# What is printed

def digest(data):
    """FNV-1a, 64 bits."""
    state = 0xCBF29CE484222325
    for byte in data:
        state = (state ^ byte) * 0x100000001B3 % 2**64
    return state


def main():
    print('// Printed by s3tcReference.py. For each family: digest of the blocks and sum of the errors of')
    print('// colours, colours with holes, mapped alpha, interpolated alpha.')
    print('constexpr Coded coded[][4] = {')
    for family in range(FAMILIES):
        blocks = image(family)
        parts = []
        for coder, source in ((code_colors, blocks), (code_holes, blocks),
                              (code_mapped, [[p[3] for p in b] for b in blocks]),
                              (code_interpolated, [[p[3] for p in b] for b in blocks])):
            results = [coder(block) for block in source]
            parts.append('{0x%016x, %d}' % (digest(b''.join(r[0] for r in results)),
                                            sum(r[1] for r in results)))
        print('    {%s, %s,\n     %s, %s},' % tuple(parts))
    print('};')
    random = Random(99)
    data = bytes(random.below(256) for _ in range(256 * 16))
    print('// Digests of the pixels, block by block, of 256 blocks of noise: forms 1, 2 and 4.')
    rows = []
    for form, size in ((1, 8), (2, 16), (4, 16)):
        words = [word for k in range(256) for word in decode(form, data[k * size:(k + 1) * size])]
        rows.append('0x%016x' % digest(b''.join(word.to_bytes(4, 'little') for word in words)))
    print('constexpr std::uint64_t decoded[] = {%s};' % ', '.join(rows))


main()
