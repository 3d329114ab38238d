#!/usr/bin/env python3
"""Known answers for the tests of random numbers, curves and digests, from Python's own arithmetic and
standard library. Prints mathNumbersReference.inc:

    python3 Tests/math/mathNumbersReference.py > Tests/math/mathNumbersReference.inc
"""
import cmath
import hashlib
import math
import random
import struct
import zlib


def f32(value):
    return struct.unpack("<f", struct.pack("<f", value))[0]


def table(kind, name, values, form):
    print(f"inline constexpr {kind}{'' if kind.endswith('*') else ' '}{name}[] = {{")
    line = "   "
    for value in values:
        item = " " + form(value) + ","
        if len(line) + len(item) > 100:
            print(line)
            line = "   "
        line += item
    print(line)
    print("};\n")


def unsigned(value):
    return f"{value}U"


def double(value):
    return repr(float(value))


# The module's own Mersenne Twister, started from a state of powers of 69069.
def twister(seed):
    word = seed | 1
    words = []
    for _ in range(624):
        words.append(word)
        word = word * 69069 & 0xFFFFFFFF
    generator = random.Random()
    generator.setstate((3, tuple(words) + (624,), None))
    return [generator.getrandbits(32) for _ in range(2000)]


def park_miller(seed, count):
    out = []
    for _ in range(count):
        seed = 16807 * seed % 2147483647
        out.append(seed)
    return out


def old(seed, count):
    out = []
    for _ in range(count):
        seed = (1859 * seed + 3719) & 0xFFFFFFFF
        out.append(seed - (1 << 32) if seed >> 31 else seed)
    return out


def msvc(state, count):
    out = []
    for _ in range(count):
        state = (state * 214013 + 2531011 & 0xFFFFFFFF) >> 16
        out.append(state & 0x7FFF)
    return out


print("// Printed by mathNumbersReference.py.")
print("// clang-format off")
print("#pragma once\n")
print("#include <cstdint>\n")
print("namespace Qel::reference {\n")

default = twister(4357)
positions = [0, 1, 2, 3, 622, 623, 624, 625, 1247, 1248, 1999]
print("// Draws of the seed 4357 at these positions, and the first eight of the seed 123456789.")
table("int", "twisterPositions", positions, str)
table("std::uint32_t", "twisterDefault", [default[i] for i in positions], unsigned)
table("std::uint32_t", "twisterSeeded", twister(123456789)[:8], unsigned)
print("// Seed 1 of the minimal standard, seed 77 of the old generator, seed 4242 of the 15-bit one.")
table("std::int32_t", "parkMiller", park_miller(1, 8), str)
table("std::int32_t", "oldRandom", old(77, 8), str)
table("int", "msvcRandom", msvc(4242, 8), str)

# Bytes that the tests make in the same way.
def pattern(size):
    return bytes((i * i * 7 + i * 3 + 11) & 255 for i in range(size))


sizes = [0, 1, 3, 4, 15, 16, 55, 56, 63, 64, 65, 119, 120, 1000, 100003]
print("// Of that many bytes (i * i * 7 + i * 3 + 11) & 255: CRC-32 without its last inversion, and MD5.")
table("unsigned", "digestSizes", sizes, str)
table("std::uint32_t", "crcs", [zlib.crc32(pattern(n)) ^ 0xFFFFFFFF for n in sizes], unsigned)
table("char const *", "md5s", [hashlib.md5(pattern(n)).hexdigest() for n in sizes], lambda text: f'"{text}"')

# The transform by its definition; forward, the exponent has a plus.
def transform(samples, sign):
    n = len(samples)
    return [sum(x * cmath.exp(sign * 2j * math.pi * k * i / n) for i, x in enumerate(samples)) for k in range(n)]


waves = [complex(math.sin(i * 1.7) + 0.25 * i, math.cos(i * i * 0.3)) for i in range(16)]
spectrum = transform(waves, 1)
print("// Sixteen samples and their forward transform by its definition.")
table("double", "waveReal", [x.real for x in waves], double)
table("double", "waveImag", [x.imag for x in waves], double)
table("double", "spectrumReal", [x.real for x in spectrum], double)
table("double", "spectrumImag", [x.imag for x in spectrum], double)


# Cubic Hermite segments in their basis of Bernstein-like polynomials, with central differences as tangents.
def hermite(p0, m0, p1, m1, t):
    h00 = (1 + 2 * t) * (1 - t) ** 2
    h10 = t * (1 - t) ** 2
    h01 = t * t * (3 - 2 * t)
    h11 = t * t * (t - 1)
    return [h00 * a + h10 * b + h01 * c + h11 * d for a, b, c, d in zip(p0, m0, p1, m1)]


path = [(0, 0, 0), (1, 2, 0.5), (3, 1, -1), (4, -2, 0), (2, -3, 2)]


def tangents(points):
    last = len(points) - 1
    pick = [(max(i - 1, 0), min(i + 1, last)) for i in range(len(points))]
    return [[0.5 * (b - a) for a, b in zip(points[i], points[j])] for i, j in pick]


def along(points, t):
    s = (len(points) - 1) * t
    i = min(int(s), len(points) - 2)
    m = tangents(points)
    return hermite(points[i], m[i], points[i + 1], m[i + 1], s - i)


# On the first and the last segment from one tangent to the next in a line.
def direction(points, t):
    s = (len(points) - 1) * t
    i = int(s)
    if 0 < i < len(points) - 2:
        return slope(points, t)
    m = tangents(points)
    d = [a + (s - i) * (b - a) for a, b in zip(m[i], m[i + 1])]
    return [x / math.hypot(*d) for x in d]


def slope(points, t):
    h = 1e-6
    d = [b - a for a, b in zip(along(points, t - h), along(points, t + h))]
    size = math.sqrt(sum(x * x for x in d))
    return [x / size for x in d]


places = [0.05, 0.2, 0.3, 0.45, 0.6, 0.8, 0.95]
print("// An open spline, at these places: positions and directions.")
table("double", "splinePoints", [x for p in path for x in p], double)
table("double", "splinePlaces", places, double)
table("double", "splinePositions", [x for t in places for x in along(path, t)], double)
table("double", "splineDirections", [x for t in places for x in direction(path, t)], double)
fine = [along(path, i / 20000) for i in range(20001)]
table("double", "splineLength", [sum(math.dist(a, b) for a, b in zip(fine, fine[1:]))], double)

# Improved noise as its author wrote it down.
PERMUTATION = [
    151, 160, 137, 91, 90, 15, 131, 13, 201, 95, 96, 53, 194, 233, 7, 225, 140, 36, 103, 30, 69,
    142, 8, 99, 37, 240, 21, 10, 23, 190, 6, 148, 247, 120, 234, 75, 0, 26, 197, 62, 94, 252, 219,
    203, 117, 35, 11, 32, 57, 177, 33, 88, 237, 149, 56, 87, 174, 20, 125, 136, 171, 168, 68, 175,
    74, 165, 71, 134, 139, 48, 27, 166, 77, 146, 158, 231, 83, 111, 229, 122, 60, 211, 133, 230,
    220, 105, 92, 41, 55, 46, 245, 40, 244, 102, 143, 54, 65, 25, 63, 161, 1, 216, 80, 73, 209, 76,
    132, 187, 208, 89, 18, 169, 200, 196, 135, 130, 116, 188, 159, 86, 164, 100, 109, 198, 173, 186,
    3, 64, 52, 217, 226, 250, 124, 123, 5, 202, 38, 147, 118, 126, 255, 82, 85, 212, 207, 206, 59,
    227, 47, 16, 58, 17, 182, 189, 28, 42, 223, 183, 170, 213, 119, 248, 152, 2, 44, 154, 163, 70,
    221, 153, 101, 155, 167, 43, 172, 9, 129, 22, 39, 253, 19, 98, 108, 110, 79, 113, 224, 232, 178,
    185, 112, 104, 218, 246, 97, 228, 251, 34, 242, 193, 238, 210, 144, 12, 191, 179, 162, 241, 81,
    51, 145, 235, 249, 14, 239, 107, 49, 192, 214, 31, 181, 199, 106, 157, 184, 84, 204, 176, 115,
    121, 50, 45, 127, 4, 150, 254, 138, 236, 205, 93, 222, 114, 67, 29, 24, 72, 243, 141, 128, 195,
    78, 66, 215, 61, 156, 180,
]


def noise(x, y, z):
    def fade(t):
        return t * t * t * (t * (t * 6 - 15) + 10)

    def lerp(t, a, b):
        return a + t * (b - a)

    def grad(code, x, y, z):
        h = code & 15
        u = x if h < 8 else y
        v = y if h < 4 else x if h in (12, 14) else z
        return (u if h & 1 == 0 else -u) + (v if h & 2 == 0 else -v)

    p = PERMUTATION * 2
    cx, cy, cz = (math.floor(c) & 255 for c in (x, y, z))
    x, y, z = (c - math.floor(c) for c in (x, y, z))
    u, v, w = fade(x), fade(y), fade(z)
    a, b = p[cx] + cy, p[cx + 1] + cy
    aa, ab, ba, bb = p[a] + cz, p[a + 1] + cz, p[b] + cz, p[b + 1] + cz
    layers = [
        lerp(v, lerp(u, grad(p[aa + k], x, y, z - k), grad(p[ba + k], x - 1, y, z - k)),
             lerp(u, grad(p[ab + k], x, y - 1, z - k), grad(p[bb + k], x - 1, y - 1, z - k)))
        for k in (0, 1)]
    return lerp(w, *layers)


# The plane is the slice of space through z = 0: the hash takes one step more there too.
spots = [(3.25, 42.0, 7.0), (0.5, 0.5, 0.5), (-1.75, 2.125, -300.375), (255.875, 255.75, 255.5), (-0.0625, 1000.25, 17.5)]
print("// Places, with the noise there in space, and in the plane of their first two coordinates.")
table("float", "noiseSpots", [c for spot in spots for c in spot], lambda c: repr(float(c)) + "F")
table("double", "noiseInSpace", [noise(*spot) for spot in spots], double)
table("double", "noiseInPlane", [noise(x, y, 0) for x, y, _ in spots], double)

print("} // namespace Qel::reference")
