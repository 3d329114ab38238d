#!/usr/bin/env python3
"""Writes the known answers of the codecs over fixed data.

Works from the formats alone and shares nothing with the library: strings are compared as strings, bits are
lists of bits. Run it as `makeGolden.py > golden.inc`, `makeGolden.py sizes > goldenSizes.inc` and
`makeGolden.py widths > goldenWidths.inc`; Python's own modules are all it needs.
"""
import sys
import zlib

WORDS = [b"the ", b"engine ", b"of ", b"a ", b"game ", b"loads ", b"and ", b"frames ", b"sound ", b"light ",
         b"\n", b"particle ", b"mesh ", b"to ", b"in ", b"x = 0;", b"return ", b"// "]


def make_data(kind, size, seed):
    data = bytearray()
    if kind == "skewed":
        a, b = 1, 1
        symbol = 27
        while len(data) < size and symbol >= 0:
            data += bytes([symbol]) * a
            a, b = b, a + b
            symbol -= 1
    while len(data) < size:
        seed = (seed * 1664525 + 1013904223) & 0xFFFFFFFF
        if kind == "random":
            data.append(seed >> 24)
        elif kind == "text":
            i = seed >> 24
            data += WORDS[i * i * 18 // 65536]
        elif kind == "runs":
            data += bytes([seed >> 28]) * ((seed >> 16 & 63) + 1)
        elif kind == "ramp":
            data.append(len(data) & 255)
        else:
            data.append(0)
    return bytes(data[:size])


class Bits:
    """A stream of bits; the first one is the lowest of its byte."""

    def __init__(self):
        self.bits = []

    def field(self, value, width):
        self.bits += [value >> (width - 1 - i) & 1 for i in range(width)]

    def aligned_byte(self, byte):
        while len(self.bits) % 8:
            self.bits.append(0)
        self.bits += [byte >> i & 1 for i in range(8)]

    def to_bytes(self):
        padded = self.bits + [0] * (-len(self.bits) % 8)
        return bytes(sum(padded[i + k] << k for k in range(8)) for i in range(0, len(padded), 8))


def huffman(data):
    counts = [0] * 256
    for byte in data:
        counts[byte] += 1
    while len(counts) > 1 and counts[-1] == 0:
        counts.pop()
    # A tree is a byte or a pair of trees.
    table = [(count, byte) for byte, count in enumerate(counts)]
    while len(table) > 1:
        zero_side, one_side = table.pop(), table.pop()
        count = zero_side[0] + one_side[0]
        at = next((i for i, other in enumerate(table) if other[0] < count), len(table))
        table.insert(at, (count, (zero_side[1], one_side[1])))
    bits, codes = Bits(), {}

    def visit(tree, code):
        if isinstance(tree, tuple):
            bits.field(1, 1)
            visit(tree[0], code + [0])
            visit(tree[1], code + [1])
        else:
            bits.field(0, 1)
            bits.aligned_byte(tree)
            codes[tree] = code

    visit(table[0][1], [])
    for byte in data:
        bits.bits += codes[byte]
    return len(data).to_bytes(4, "little") + bits.to_bytes()


class Lz77:
    """The window's strings in a binary search tree: of each place its parent and its two children."""

    def __init__(self):
        self.window, self.up, self.below = bytearray(4096), {}, {-1: [None, None]}

    def string(self, place):
        return bytes((self.window + self.window[:17])[place:place + 17])

    def hang(self, parent, old, new):
        self.below[parent][self.below[parent][1] == old] = new
        if new is not None:
            self.up[new] = parent

    def take_place(self, old, new):
        self.hang(self.up.pop(old), old, new)
        self.below[new] = self.below.pop(old)
        for child in self.below[new]:
            if child is not None:
                self.up[child] = new

    def remove(self, place):
        if place not in self.up:
            return
        low, high = self.below[place]
        if low is None or high is None:
            self.hang(self.up.pop(place), place, high if low is None else low)
            return
        while self.below[low][1] is not None:
            low = self.below[low][1]
        self.remove(low)
        self.take_place(place, low)

    def add(self, place):
        """Gives the length of the best match and where it is."""
        if place == 0:
            return 0, None
        mine, best, where, node, side = self.string(place), 0, None, -1, True
        while self.below[node][side] is not None:
            node = self.below[node][side]
            other = self.string(node)
            equal = next((i for i in range(17) if mine[i] != other[i]), 17)
            if equal >= best:
                best, where = equal, node
            if equal == 17:
                self.take_place(node, place)
                return best, where
            side = mine > other
        self.below[node][side], self.up[place], self.below[place] = place, node, [None, None]
        return best, where

    def encode(self, data):
        bits, ahead = Bits(), min(17, len(data))
        self.window[1:1 + ahead] = data[:ahead]
        read, current, length, where = ahead, 1, 0, None
        self.add(1)
        while ahead:
            length = min(length, ahead)
            if length < 2:
                bits.field(256 + self.window[current], 9)
            else:
                bits.field(where * 16 + length - 2, 17)
            for _ in range(max(length, 1)):
                behind = (current + 17) % 4096
                self.remove(behind)
                if read < len(data):
                    self.window[behind] = data[read]
                    read += 1
                else:
                    ahead -= 1
                current = (current + 1) % 4096
                if ahead:
                    length, where = self.add(current)
        bits.field(0, 13)
        return bits.to_bytes()


def lzw(data):
    bits, known, width, bump = Bits(), {bytes([i]): i for i in range(256)}, 9, 511
    known[b""], text = 256, data[:1]
    for byte in data[1:]:
        longer = text + bytes([byte])
        if longer in known:
            text = longer
            continue
        bits.field(known[text], width)
        known[longer] = len(known) + 2
        text = bytes([byte])
        if len(known) + 2 == 32768:
            bits.field(258, width)
            known, width, bump = {bytes([i]): i for i in range(256)} | {b"": 256}, 9, 511
        elif len(known) + 2 > bump:
            bits.field(257, width)
            width, bump = width + 1, 2 * bump + 1
    bits.field(known[text], width)
    bits.field(256, width)
    return bits.to_bytes()


def mtf(data):
    table, result = list(range(256)), bytearray()
    for byte in data:
        place = table.index(byte)
        result.append(place)
        table.insert(0, table.pop(place))
    return bytes(result)


CASES = [("random", 1, 1), ("random", 2, 2), ("random", 3, 3), ("random", 300, 4), ("random", 40000, 5),
         ("text", 17, 6), ("text", 18, 7), ("text", 4096, 8), ("text", 60000, 9), ("runs", 5000, 10),
         ("runs", 60000, 11), ("ramp", 256, 0), ("ramp", 9000, 0), ("zeros", 17, 0), ("zeros", 20000, 0),
         ("skewed", 832039, 0)]


def longer_ones():
    print("// Made by makeGolden.py: data, size and seed; then length and CRC-32 of the stream of each codec.")
    for kind, size, seed in CASES:
        data = make_data(kind, size, seed)
        streams = [huffman(data), mtf(data)]
        # The slow ones get a part of the longest data.
        streams += [Lz77().encode(data[:60000]), lzw(data)]
        text = ", ".join("{%d, 0x%08X}" % (len(s), zlib.crc32(s)) for s in streams)
        print('{"%s", %d, %d, {%s}},' % (kind, size, seed, text))


def sizes():
    print("// Made by makeGolden.py: of each codec the CRC-32 of 200 streams in a row.")
    for kind in ["random", "text", "runs", "ramp", "zeros"]:
        crcs = [0, 0, 0, 0]
        for i in range(200):
            data = make_data(kind, i * 60 if i % 10 == 0 else i, i)
            streams = [huffman(data), mtf(data), Lz77().encode(data), lzw(data)]
            crcs = [zlib.crc32(stream, crc) for stream, crc in zip(streams, crcs)]
        print('{"%s", {%s}},' % (kind, ", ".join("0x%08X" % crc for crc in crcs)))


def widths():
    print("// Made by makeGolden.py: codes, and the CRC-32 of the streams of nine lengths around them in a row.")
    data = bytearray()
    for first in range(256):
        data.append(first)
        for second in range(first + 1, 256):
            data += bytes([first, second])
    for codes in [512, 1024, 2048, 4096, 8192, 16384, 32768, 33280]:
        size = codes - 258 if codes <= 32768 else 32768 - 258 + codes - 32768 - 258
        crc = 0
        for at in range(size - 4, size + 5):
            crc = zlib.crc32(lzw(bytes(data[:at])), crc)
        print("{%d, 0x%08X}," % (codes, crc))


if __name__ == "__main__":
    {"sizes": sizes, "widths": widths}.get(sys.argv[-1], longer_ones)()
