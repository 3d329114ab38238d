#!/usr/bin/env python3
"""Known answers for the tests of random numbers, curves and digests, from Python's own arithmetic and
standard library. Prints mathNumbersReference.h:

    python3 Tests/math/mathNumbersReference.py > Tests/math/mathNumbersReference.h
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


def slope(points, t):
    h = 1e-6
    d = [b - a for a, b in zip(along(points, t - h), along(points, t + h))]
    size = math.sqrt(sum(x * x for x in d))
    return [x / size for x in d]


places = [0.05, 0.2, 0.3, 0.45, 0.6, 0.8, 0.95]
print("// An open spline, at these places: positions, and directions of its two inner segments at 0.3 to 0.6.")
table("double", "splinePoints", [x for p in path for x in p], double)
table("double", "splinePlaces", places, double)
table("double", "splinePositions", [x for t in places for x in along(path, t)], double)
table("double", "splineDirections", [x for t in places[2:5] for x in slope(path, t)], double)
fine = [along(path, i / 20000) for i in range(20001)]
table("double", "splineLength", [sum(math.dist(a, b) for a, b in zip(fine, fine[1:]))], double)

print("} // namespace Qel::reference")
