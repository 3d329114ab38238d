"""The pictures of the sample host's media: one scene in each file format that the library reads."""

import struct


def mix(a, b, share):
    return tuple(int(x + (y - x) * share) for x, y in zip(a, b))


def harbour(width, height):
    """An evening: sky, a low sun, and its light on the water. Rows of (red, green, blue) from the top."""
    horizon, sun_x, sun_y, radius = height * 5 // 8, width // 3, height // 2, height // 7
    rows = []
    for y in range(height):
        row = []
        for x in range(width):
            if y < horizon:
                color = mix((30, 40, 110), (255, 150, 60), y / horizon)
                if (x - sun_x) ** 2 + (y - sun_y) ** 2 < radius ** 2:
                    color = (255, 240, 170)
            else:
                depth = (y - horizon) / (height - horizon)
                color = mix((120, 80, 90), (10, 20, 60), depth)
                if abs(x - sun_x) < radius * (1 - depth / 2) and (y + x // 7) % 5 < 2:
                    color = (250, 190, 110)
            if 5 * width // 8 < x < 7 * width // 8 and horizon - height // 16 < y < horizon + height // 24:
                color = (40, 25, 20)  # a hull
            if abs(x - 3 * width // 4) < 2 and horizon - height // 3 < y < horizon:
                color = (40, 25, 20)  # and its mast
            row.append(color)
        rows.append(row)
    return rows


def crate(size):
    """Boards in a frame. Rows of (red, green, blue, alpha); the corners are cut off."""
    rows = []
    for y in range(size):
        row = []
        for x in range(size):
            edge = min(x, y, size - 1 - x, size - 1 - y)
            wood = mix((150, 100, 50), (190, 140, 80), (x * 7 + y // 3) % 11 / 11)
            if edge < size // 8:
                wood = (100, 62, 30)
            elif x % (size // 4) == 0 or abs(x - y) < size // 16:
                wood = (70, 45, 22)
            corner = min(x, size - 1 - x) + min(y, size - 1 - y) < size // 12
            row.append(wood + (0 if corner else 255,))
        rows.append(row)
    return rows


def bgr(rows):
    return bytes(value for row in rows for pixel in row for value in (*pixel[2::-1], *pixel[3:]))


def tga(rows, kind, data):
    bits = 8 * len(rows[0][0])
    return struct.pack('<BBBHHBHHHHBB', 0, 0, kind, 0, 0, 0, 0, 0, len(rows[0]), len(rows), bits, 0) + data


def tga_runs(rows):
    """Runs within a row, and single pixels as packets of one."""
    out = bytearray()
    for row in reversed(rows):
        at = 0
        while at < len(row):
            count = 1
            while at + count < len(row) and count < 128 and row[at + count] == row[at]:
                count += 1
            out += bytes([127 + count if count > 1 else 0]) + bgr([[row[at]]])
            at += count
    return tga(rows, 10, bytes(out))


def reduced(rows):
    """Six levels of each colour: indices, and the palette."""
    indices = [[pixel[0] // 43 * 36 + pixel[1] // 43 * 6 + pixel[2] // 43 for pixel in row] for row in rows]
    palette = [(i // 36 % 6 * 51, i // 6 % 6 * 51, i % 6 * 51) if i < 216 else (0, 0, 0) for i in range(256)]
    return indices, palette


def bmp(rows, indexed):
    width, height = len(rows[0]), len(rows)
    indices, palette = reduced(rows)
    stride = (width * (1 if indexed else 3) + 3) // 4 * 4
    lines = [bytes(row) for row in indices] if indexed else [bgr([row]) for row in rows]
    data = b''.join(line.ljust(stride, b'\0') for line in reversed(lines))
    colors = b''.join(bytes((b, g, r, 0)) for r, g, b in palette) if indexed else b''
    offset = 54 + len(colors)
    return (struct.pack('<2sIHHI', b'BM', offset + len(data), 0, 0, offset) +
            struct.pack('<IiiHHIIiiII', 40, width, height, 1, 8 if indexed else 24, 0, len(data), 0, 0, 0, 0) +
            colors + data)


def pcx(rows, indexed):
    width, height = len(rows[0]), len(rows)
    indices, palette = reduced(rows)
    planes = [[row] for row in indices] if indexed else [list(zip(*row)) for row in rows]
    out = bytearray(struct.pack('<4B4H2H48sBBHHHH54x', 10, 5, 1, 8, 0, 0, width - 1, height - 1, 72, 72,
                                b'', 0, 1 if indexed else 3, width, 1, 0, 0))
    for row in planes:
        for line in row:
            at = 0
            while at < width:
                count = 1
                while at + count < width and count < 63 and line[at + count] == line[at]:
                    count += 1
                out += bytes([0xC0 | count, line[at]]) if count > 1 or line[at] >= 0xC0 else bytes([line[at]])
                at += count
    return bytes(out) + (b'\x0C' + bytes(value for color in palette for value in color) if indexed else b'')


def ico(rows):
    size = len(rows)
    indices, palette = reduced(rows)
    picture = (struct.pack('<IiiHHIIiiII', 40, size, 2 * size, 1, 8, 0, 0, 0, 0, 0, 0) +
               b''.join(bytes((b, g, r, 0)) for r, g, b in palette) +
               b''.join(bytes(row) for row in reversed(indices)) + bytes(size * size // 8))
    return struct.pack('<HHHBBBBHHII', 0, 1, 1, size, size, 0, 0, 1, 8, len(picture), 22) + picture


def dds(rows, code, data):
    flags = 0x1007 | (0x80000 if code else 0)
    head = struct.pack('<4s7I44x', b'DDS ', 124, flags, len(rows), len(rows[0]), len(data) if code else 0, 0, 0)
    return head + struct.pack('<II4sIIIII', 32, 4 if code else 0x41, code, 0 if code else 32, 0xFF0000, 0xFF00,
                              0xFF, 0xFF000000) + struct.pack('<I16x', 0x1000) + data


def blocks(rows):
    """DXT1: the darkest and the brightest pixel of a block, and what lies between."""
    out = bytearray()
    for top in range(0, len(rows), 4):
        for left in range(0, len(rows[0]), 4):
            pixels = [rows[top + i // 4][left + i % 4] for i in range(16)]
            low, high = (pick(pixels, key=sum) for pick in (min, max))
            ends = [(c[0] >> 3) << 11 | (c[1] >> 2) << 5 | c[2] >> 3 for c in (high, low)]
            points = [high, low, mix(high, low, 1 / 3), mix(high, low, 2 / 3)]
            if ends[0] <= ends[1]:
                ends.reverse()
                points = [low, high, mix(low, high, 1 / 3), mix(low, high, 2 / 3)]
            bits = 0
            for i, pixel in enumerate(pixels):
                nearest = min(range(4), key=lambda k: sum((a - b) ** 2 for a, b in zip(pixel, points[k])))
                bits |= (nearest if ends[0] != ends[1] else 0) << 2 * i
            out += struct.pack('<HHI', *ends, bits)
    return bytes(out)


def pictures():
    """Names and contents."""
    scene, box = harbour(128, 96), crate(64)
    yield 'pictures/Harbour24.tga', tga(scene, 2, bgr(scene[::-1]))
    yield 'pictures/Crate32.tga', tga(box, 2, bgr(box[::-1]))
    yield 'pictures/HarbourRuns.tga', tga_runs(scene)
    yield 'pictures/Harbour24.bmp', bmp(scene, False)
    yield 'pictures/Harbour8.bmp', bmp(harbour(99, 77), True)
    yield 'pictures/Harbour24.pcx', pcx(scene, False)
    yield 'pictures/Harbour8.pcx', pcx(scene, True)
    yield 'pictures/Crate.ico', ico(crate(32))
    yield 'pictures/HarbourDxt1.dds', dds(scene, b'DXT1', blocks(scene))
    yield 'pictures/Crate32.dds', dds(box, b'', bgr(box))
