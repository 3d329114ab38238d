#!/usr/bin/env python3
"""Writes referenceTable.inc: expected values for the tests of this folder.

Everything is worked out here by other means than the library's own: exact fractions where the answer is rational,
double precision elsewhere, and textbook definitions (a closest point, a linear system) in place of the library's
step-by-step tests. Rows whose answer hangs on rounding are left out. Run it in this folder.
"""

import math
import random
import struct
from fractions import Fraction as F

random.seed(20240)
out = []


def f32(x):
    """The float nearest to x."""
    return struct.unpack('<f', struct.pack('<f', float(x)))[0]


def literal(x):
    x = float(x)
    if math.isinf(x):
        return '-HUGE_VALF' if x < 0 else 'HUGE_VALF'
    text = '%.9g' % x
    return text + ('f' if ('.' in text or 'e' in text) else '.0f')


def table(comment, declaration, rows):
    out.append('// ' + comment)
    out.append('constexpr ' + declaration + ' = {')
    for row in rows:
        out.append('    {' + ', '.join(v if isinstance(v, str) else literal(v) for v in row) + '},')
    out.append('};')
    out.append('')


def grid(n=3, size=8):
    return [F(random.randint(-4 * size, 4 * size), 4) for _ in range(n)]


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def sub(a, b):
    return [x - y for x, y in zip(a, b)]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def unit(a):
    n = math.sqrt(dot(a, a))
    return [float(x) / n for x in a]


def solve(matrix, right):
    """Gauss and Jordan over fractions; None for a singular matrix."""
    n = len(matrix)
    rows = [list(matrix[i]) + list(right[i]) for i in range(n)]
    for c in range(n):
        pivot = next((r for r in range(c, n) if rows[r][c] != 0), None)
        if pivot is None:
            return None
        rows[c], rows[pivot] = rows[pivot], rows[c]
        rows[c] = [v / rows[c][c] for v in rows[c]]
        for r in range(n):
            if r != c:
                rows[r] = [v - rows[r][c] * w for v, w in zip(rows[r], rows[c])]
    return [row[n:] for row in rows]


def determinant(m):
    if len(m) == 1:
        return m[0][0]
    return sum((-1) ** c * m[0][c] * determinant([row[:c] + row[c + 1:] for row in m[1:]]) for c in range(len(m)))


# ---- halves
halves = [0x0000, 0x8000, 0x0001, 0x8001, 0x03FF, 0x0400, 0x3555, 0x3C00, 0x3C01, 0xC000, 0x7BFF, 0xFBFF, 0x7C00,
          0xFC00, 0x4248]
table('A half and the float of the same value.', 'HalfRow halfRows[]',
      [['0x%04X' % h, struct.unpack('<e', struct.pack('<H', h))[0]] for h in halves])

# ---- the fast forms, operation by operation in single precision


def quarterTurn(f, negative):
    s = f32(f * f)
    p = f32(f32(-0.004681754) * s)
    for c in (0.079692625, -0.6459641):
        p = f32(f32(p + f32(c)) * s)
    value = f32(f * f32(p + f32(1.5707964)))
    return -value if negative else value


def quarters(q):
    i = int(q)
    return i, min(f32(q - i), 1.0)


rows = []
for x in [0.0, 0.5, -0.5, 1.5, 1.6, -2.0, 3.0, 4.0, -5.0, 6.2, 100.25, -12345.5]:
    x = f32(x)
    i, f = quarters(f32(abs(x) * f32(0.63661975)))
    g = f32(1.0 - f)
    sine = quarterTurn(g if i & 1 else f, (x < 0) != bool(i & 2))
    cosine = quarterTurn(f if i & 1 else g, bool((i + 1) & 2))
    i, f = quarters(f32(f32(abs(x) + f32(1.5707964)) * f32(0.63661975)))
    rows.append([x, sine, cosine, quarterTurn(f32(1.0 - f) if i & 1 else f, bool(i & 2))])
table('An angle, sine and cosine of sincos_sse, and cos_sse.', 'float fastSineRows[][4]', rows)


def bits(x):
    return struct.unpack('<i', struct.pack('<f', x))[0]


def fromBits(i):
    return struct.unpack('<f', struct.pack('<I', i & 0xFFFFFFFF))[0]


def signed(i):
    i &= 0xFFFFFFFF
    return i - (1 << 32) if i >> 31 else i


rows = []
for x in [1.0, 2.0, 0.25, 3.7, 1e-20, 1e20, 12345.678]:
    x = f32(x)
    y = fromBits(signed(0xBE800000 - bits(x)) >> 1)
    step = f32(f32(f32(f32(0.47) * x) * y) * y)
    y = abs(f32(f32(f32(1.47) - step) * y))
    base = f32(f32(y * f32(3.0 - f32(f32(y * y) * x))) * 0.5)
    y = fromBits(0x5F3759DF - (bits(x) >> 1))
    q3 = f32(f32(1.5 - f32(f32(f32(0.5 * x) * y) * y)) * y)
    rows.append([x, base, q3])
table('A number, rsqrt_base and rsqrt_q3 of it.', 'float fastRootRows[][3]', rows)

# ---- matrices
rows = []
for _ in range(8):
    axis, angle = grid(), f32(random.uniform(-7, 7))
    if dot(axis, axis) == 0:
        continue
    k = unit(axis)
    s, c = math.sin(angle), math.cos(angle)
    m = []
    for i in range(3):
        e = [float(i == j) for j in range(3)]
        kxe = cross(k, e)
        m += [e[j] * c + kxe[j] * s + k[j] * dot(k, e) * (1 - c) for j in range(3)]
    rows.append(axis + [angle] + m)
table('Axis, angle, and where the rotation takes x, y and z.', 'float rotationRows[][13]', rows)

rows = []
for _ in range(6):
    eye, at, up = grid(), grid(), grid()
    z = sub(eye, at)
    if dot(cross(z, up), cross(z, up)) == 0:
        continue
    # The camera frame is orthonormal: solve for what the view makes of four known points.
    z = unit(z)
    x = unit(cross([float(v) for v in up], z))
    y = cross(z, x)
    m = []
    for i in range(3):
        m += [x[i], y[i], z[i], 0.0]
    m += [-dot(eye, x), -dot(eye, y), -dot(eye, z), 1.0]
    rows.append(eye + at + up + m)
table('Eye, at, up, and the right-handed view, row by row.', 'float lookAtRows[][25]', rows)

rows = []
while len(rows) < 6:
    m = [grid(4) for _ in range(4)]
    inverse = solve(m, [[F(i == j) for j in range(4)] for i in range(4)])
    if inverse is not None:
        rows.append(sum(m, []) + [determinant(m)] + sum(inverse, []))
table('A matrix, its determinant, and its inverse.', 'float inverseRows[][33]', rows)

# ---- planes
rows = []
while len(rows) < 6:
    a, b, c = grid(), grid(), grid()
    n = cross(sub(b, a), sub(c, a))
    if dot(n, n) == 0:
        continue
    n = unit(n)
    rows.append(a + b + c + n + [-dot(n, [float(v) for v in a])])
table('Three points and their plane.', 'float planeRows[][13]', rows)

rows = []
while len(rows) < 6:
    p, a, b = grid(4), grid(), grid()
    slope = dot(p[:3], sub(b, a))
    if slope == 0:
        continue
    t = -(dot(p[:3], a) + p[3]) / slope
    rows.append(p + a + b + [x + (y - x) * t for x, y in zip(a, b)])
table('A plane, two points, and where their line meets it.', 'float lineRows[][13]', rows)

# ---- rays
rows = []
while len(rows) < 40:
    o, d, c, h = grid(), grid(size=3), grid(), [F(random.randint(1, 16), 4) for _ in range(3)]
    low, high = [x - y for x, y in zip(c, h)], [x + y for x, y in zip(c, h)]
    # Slabs: the ray is inside between the last entry and the first exit.
    enter, leave, parallelMiss, tight = F(-10**9), F(10**9), False, False
    for i in range(3):
        tight |= o[i] in (low[i], high[i])
        if d[i] == 0:
            parallelMiss |= not low[i] < o[i] < high[i]
            continue
        near, far = sorted([(low[i] - o[i]) / d[i], (high[i] - o[i]) / d[i]])
        enter, leave = max(enter, near), min(leave, far)
    if tight or abs(enter - leave) < F(1, 100) or abs(enter) < F(1, 100):
        continue
    inside = all(low[i] < o[i] < high[i] for i in range(3))
    hit = not parallelMiss and (inside or 0 < enter < leave)
    if len(rows) < 20 and not hit:
        continue
    rows.append(o + d + low + high + [F(1 if hit else 0), enter if hit and not inside else F(0)])
table('Ray, box, whether it hits, and t.', 'float rayBoxRows[][14]', rows)

rows = []
while len(rows) < 20:
    o, d, c, r = grid(), grid(size=3), grid(), F(random.randint(1, 24), 4)
    if dot(d, d) == 0:
        continue
    w = sub(o, c)
    # The distance of the centre from the line decides; then half the chord back from the foot.
    foot = -dot(w, d) / dot(d, d)
    nearest = [x + y * foot for x, y in zip(w, d)]
    room = r * r - dot(nearest, nearest)
    inside = dot(w, w) - r * r
    if abs(room) < F(1, 4) or abs(inside) < F(1, 4):
        continue
    hit = room > 0 or inside < 0
    t = 0.0 if inside < 0 or not hit else float(foot) - math.sqrt(room / dot(d, d))
    rows.append(o + d + c + [r, F(1 if hit else 0), t])
table('Ray, sphere, whether the line hits, and t.', 'float raySphereRows[][12]', rows)

rows = []
while len(rows) < 24:
    o, d, a, b, c = grid(), grid(size=3), grid(), grid(), grid()
    e1, e2 = sub(b, a), sub(c, a)
    # o + t d = a + u e1 + v e2, solved for t, u and v.
    system = [[-d[i], e1[i], e2[i]] for i in range(3)]
    answer = solve(system, [[o[i] - a[i]] for i in range(3)])
    if answer is None:
        continue
    t, u, v = (x[0] for x in answer)
    if min(abs(u), abs(v), abs(1 - u - v)) < F(1, 50):
        continue
    front = dot(d, cross(e1, e2)) < 0
    hit = front and u > 0 and v > 0 and u + v < 1
    if len(rows) < 12 and not hit:
        continue
    rows.append(o + d + a + b + c + [F(1 if hit else 0)] + ([t, u, v] if hit else [F(0)] * 3))
table('Ray, triangle, whether its front is hit, and t, u, v.', 'float rayTriangleRows[][19]', rows)

# ---- spheres


def distanceToTriangle(p, a, b, c):
    """By minimising over the plane's foot and the three edges."""
    n = cross(sub(b, a), sub(c, a))
    k = dot(sub(p, a), n) / dot(n, n)
    foot = [x - y * k for x, y in zip(p, n)]
    sides = [dot(cross(sub(q, r), sub(foot, r)), n) for r, q in ((a, b), (b, c), (c, a))]
    if all(s >= 0 for s in sides):
        return math.sqrt(dot(sub(p, foot), sub(p, foot)))
    best = None
    for r, q in ((a, b), (b, c), (c, a)):
        e = sub(q, r)
        k = max(F(0), min(F(1), dot(sub(p, r), e) / dot(e, e)))
        at = [x + y * k for x, y in zip(r, e)]
        d = dot(sub(p, at), sub(p, at))
        best = d if best is None else min(best, d)
    return math.sqrt(best)


rows = []
while len(rows) < 24:
    p, r, a, b, c = grid(), F(random.randint(1, 32), 4), grid(), grid(), grid()
    n = cross(sub(b, a), sub(c, a))
    if dot(n, n) < 1:
        continue
    d = distanceToTriangle(p, a, b, c)
    if abs(d - r) < 0.01:
        continue
    rows.append(p + [r] + a + b + c + [F(1 if d < r else 0)])
table('Sphere, triangle, and whether they touch.', 'float sphereTriangleRows[][14]', rows)

with open('referenceTable.inc', 'w') as header:
    header.write('#pragma once\n\n// Written by reference.py; change that and run it again.\n\n')
    header.write('#include <cmath>\n#include <cstdint>\n\n// clang-format off\nnamespace reference {\n\n')
    header.write('struct HalfRow {\n    std::uint16_t bits;\n    float value;\n};\n\n')
    header.write('\n'.join(out))
    header.write('\n} // namespace reference\n// clang-format on\n')
