#!/usr/bin/env python3
"""Draws the figures of Docs/math.md into Docs/figures, as SVG. Plain Python, no packages. Run it anywhere."""

import math
import os
import struct

FOLDER = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'Docs', 'figures')
INK, SOFT, RED, GREEN, BLUE = '#222', '#999', '#c0392b', '#1e8449', '#1f5fa8'


class Figure:
    def __init__(self, name, width, height):
        self.path, self.width, self.height, self.parts = os.path.join(FOLDER, name), width, height, []

    def line(self, a, b, color=INK, width=1.5, dash='', arrow=False):
        self.parts.append('<line x1="%.1f" y1="%.1f" x2="%.1f" y2="%.1f" stroke="%s" stroke-width="%s"%s/>' % (
            a[0], a[1], b[0], b[1], color, width, ' stroke-dasharray="%s"' % dash if dash else ''))
        if arrow:
            angle = math.atan2(b[1] - a[1], b[0] - a[0])
            wings = [(b[0] - 9 * math.cos(angle + s), b[1] - 9 * math.sin(angle + s)) for s in (0.4, -0.4)]
            self.parts.append('<polygon points="%.1f,%.1f %.1f,%.1f %.1f,%.1f" fill="%s"/>' % (
                b + wings[0] + wings[1] + (color,)))

    def text(self, at, text, color=INK, size=13, anchor='middle'):
        self.parts.append('<text x="%.1f" y="%.1f" fill="%s" font-size="%d" text-anchor="%s">%s</text>' % (
            at[0], at[1], color, size, anchor, text))

    def dot(self, at, color=INK):
        self.parts.append('<circle cx="%.1f" cy="%.1f" r="3" fill="%s"/>' % (at[0], at[1], color))

    def area(self, points, color, opacity=0.15):
        self.parts.append('<polygon points="%s" fill="%s" fill-opacity="%s"/>' % (
            ' '.join('%.1f,%.1f' % p for p in points), color, opacity))

    def curve(self, points, color):
        self.parts.append('<polyline points="%s" fill="none" stroke="%s" stroke-width="1.5"/>' % (
            ' '.join('%.1f,%.1f' % p for p in points), color))

    def save(self):
        with open(self.path, 'w') as file:
            file.write('<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 %d %d" width="%d" height="%d" '
                       'font-family="sans-serif">\n<rect width="100%%" height="100%%" fill="white"/>\n'
                       % (self.width, self.height, self.width, self.height))
            file.write('\n'.join(self.parts) + '\n</svg>\n')


def project(at, origin, scale):
    """x to the right, y up, z toward the viewer and to the lower left: a right-handed frame."""
    x, y, z = at
    return (origin[0] + scale * (x - 0.45 * z), origin[1] - scale * (y - 0.35 * z))


def axes(figure, origin, scale):
    for name, at, color in (('x', (1, 0, 0), RED), ('y', (0, 1, 0), GREEN), ('z', (0, 0, 1), BLUE)):
        figure.line(project((0, 0, 0), origin, scale), project(at, origin, scale), color, 2, arrow=True)
        figure.text(project([v * 1.2 for v in at], origin, scale), name, color)


def box(figure, origin, scale, dash=''):
    corners = [(x, y, z) for x in (-1, 1) for y in (-1, 1) for z in (-1, 1)]
    for a in corners:
        for b in corners:
            if a < b and sum(p != q for p, q in zip(a, b)) == 1:
                hidden = a[2] == -1 and (a[0] == -1 and a[1] == -1) or b[2] == -1 and (b[0] == -1 and b[1] == -1)
                figure.line(project(a, origin, scale), project(b, origin, scale), SOFT if hidden else INK, 1.2,
                            '4 3' if hidden else '')


def handedness():
    figure = Figure('handedness.svg', 720, 230)
    axes(figure, (110, 140), 80)
    figure.text((120, 215), 'right-handed; row vectors, p\' = p M', size=12)
    # A view: the camera looks along negative z.
    eye = (480, 120)
    figure.dot(eye)
    figure.text((eye[0] + 4, eye[1] + 22), 'eye')
    figure.line(eye, (eye[0], eye[1] - 70), GREEN, 2, arrow=True)
    figure.text((eye[0] + 14, eye[1] - 62), 'y', GREEN)
    figure.line(eye, (eye[0] + 70, eye[1]), BLUE, 2, arrow=True)
    figure.text((eye[0] + 82, eye[1] + 4), 'z', BLUE)
    figure.line(eye, (eye[0] - 150, eye[1]), INK, 1.5, '5 4', True)
    figure.text((eye[0] - 90, eye[1] - 8), 'line of sight, to at')
    figure.text((490, 215), 'D3DXMatrixLookAtRH: the view runs along -z; x goes into the page', size=12)
    figure.save()


def cornerOrders():
    figure = Figure('corners.svg', 900, 300)
    orders = (
        ('cBoundingBoxAA: getCorner, extractEdges',
         '--- -+- ++- +-- +++ -++ --+ +-+'),
        ('cBoundingBoxAA: extractEdges_sse', '--- +-- -+- ++- --+ +-+ -++ +++'),
        ('cBoundingBox, cOBB', '+++ ++- -+- -++ +-+ +-- --- --+'),
    )
    for column, (title, order) in enumerate(orders):
        origin = (150 + column * 300, 140)
        box(figure, origin, 62)
        for index, signs in enumerate(order.split()):
            at = [1 if s == '+' else -1 for s in signs]
            figure.dot(project(at, origin, 62), RED)
            figure.text(project([v * 1.25 for v in at], origin, 62), str(index), RED, 15)
        figure.text((origin[0], 285), title)
    axes(figure, (30, 60), 30)
    figure.save()


def planes():
    figure = Figure('planes.svg', 760, 290)
    normals = {'x': (1, 0, 0), 'y': (0, 1, 0), 'z': (0, 0, 1)}
    sets = (
        ('cBoundingBoxAA::getPlane: normals point out', 1, ['-y', '+y', '-x', '+x', '-z', '+z']),
        ('cBoundingBox::getPlane: normals point in', -1, ['-z', '-x', '+x', '-y', '+z', '+y']),
    )
    for column, (title, direction, faces) in enumerate(sets):
        origin = (190 + column * 380, 130)
        box(figure, origin, 62)
        for index, face in enumerate(faces):
            sign = 1 if face[0] == '+' else -1
            n = [sign * v for v in normals[face[1]]]
            start = project([v * (1.0 if direction > 0 else 1.0) for v in n], origin, 62)
            end = project([v * (1.55 if direction > 0 else 0.45) for v in n], origin, 62)
            figure.line(start, end, BLUE, 1.8, arrow=True)
            label = project([v * (1.8 if direction > 0 else 1.25) for v in n], origin, 62)
            figure.text((label[0], label[1] + 4), str(index), RED, 15)
        figure.text((origin[0], 280), title, size=12)
    figure.save()


def beam():
    figure = Figure('beam.svg', 640, 220)
    left, right, top, bottom = 80, 520, 70, 150
    figure.area([(left, top), (right, top), (right, bottom), (left, bottom)], BLUE)
    for y in (top, bottom):
        figure.line((left, y), (right, y), BLUE)
    figure.line((left, 110), (600, 110), INK, 1.5, '5 4', True)
    figure.dot((left, 110))
    figure.text((left, 170), 'origin')
    figure.line((right, top), (right, bottom), BLUE, 1.5, '4 3')
    figure.text((right, 170), 'rayLen')
    figure.line((200, 110), (200, top), GREEN, 2, arrow=True)
    figure.text((206, 95), 'sizeUp', GREEN, 12, 'start')
    a, b = (300, 30), (360, 190)
    figure.line(a, b, SOFT)
    for p in (a, b):
        figure.dot(p, RED)
    figure.text((372, 34), 'a list of points hits as a range:', RED, 12, 'start')
    figure.text((372, 50), 'one above, one below, none inside', RED, 12, 'start')
    figure.text((320, 212), 'cRectRay, seen from the side')
    figure.save()


def f32(x):
    return struct.unpack('<f', struct.pack('<f', x))[0]


def fastSine(x):
    q = f32(abs(x) * f32(0.63661975))
    i = int(q)
    f = min(f32(q - i), 1.0)
    t = f32(1 - f) if i & 1 else f
    s = f32(t * t)
    p = f32(f32(-0.004681754) * s)
    for c in (0.079692625, -0.6459641):
        p = f32(f32(p + f32(c)) * s)
    value = f32(t * f32(p + f32(1.5707964)))
    return -value if (x < 0) != bool(i & 2) else value


def sineError():
    figure = Figure('sine-error.svg', 640, 240)
    left, right, middle, unit = 60, 610, 115, 90 / 2e-4
    figure.line((left, middle), (right, middle), SOFT)
    for value, label in ((1.6e-4, '1.6e-4'), (-1.6e-4, '-1.6e-4')):
        figure.line((left, middle - value * unit), (right, middle - value * unit), SOFT, 1, '4 3')
        figure.text((left - 6, middle - value * unit + 4), label, SOFT, 11, 'end')
    for quarter in range(5):
        x = left + (right - left) * quarter / 4
        figure.line((x, middle - 4), (x, middle + 4))
        figure.text((x, 222), '%d°' % (quarter * 90), size=12)
    points = []
    for i in range(701):
        x = f32(2 * math.pi * i / 700)
        points.append((left + (right - left) * i / 700, middle - (fastSine(x) - math.sin(x)) * unit))
    figure.curve(points, BLUE)
    figure.text((left + 6, 20), 'sine of sincos_sse, less the true sine', BLUE, 13, 'start')
    figure.save()


os.makedirs(FOLDER, exist_ok=True)
handedness()
cornerOrders()
planes()
beam()
sineError()
