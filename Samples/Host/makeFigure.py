"""Makes the figure of the sample host's media: a mesh with 21 bones, and two animations for it.

usage: makeFigure.py FOLDER

In the files y is up, z is ahead and bones stand where they are in the model. Boxes around the bones are the
mesh. A positive roll swings what hangs down ahead; a negative yaw lifts the arm on the side of positive x.
"""

import sys
from math import pi, sin
from pathlib import Path

SIDES = (('Left', -1), ('Right', 1))


def bones():
    """Name, parent, place, end of the box, half its width."""
    yield 'Hips', '', (0, 0.95, 0), (0, 1.05, 0), 0.13
    yield 'Spine', 'Hips', (0, 1.07, 0), (0, 1.22, 0), 0.12
    yield 'Chest', 'Spine', (0, 1.24, 0), (0, 1.42, 0), 0.15
    yield 'Neck', 'Chest', (0, 1.46, 0), (0, 1.53, 0), 0.045
    yield 'Head', 'Neck', (0, 1.55, 0), (0, 1.78, 0), 0.09
    for side, x in SIDES:
        yield f'{side}Collar', 'Chest', (x * 0.04, 1.42, 0), (x * 0.16, 1.42, 0), 0.05
        yield f'{side}UpperArm', f'{side}Collar', (x * 0.19, 1.41, 0), (x * 0.24, 1.15, 0), 0.045
        yield f'{side}LowerArm', f'{side}UpperArm', (x * 0.245, 1.13, 0), (x * 0.28, 0.9, 0.01), 0.04
        yield f'{side}Hand', f'{side}LowerArm', (x * 0.285, 0.88, 0.01), (x * 0.29, 0.74, 0.03), 0.035
        yield f'{side}Thigh', 'Hips', (x * 0.1, 0.93, 0), (x * 0.11, 0.53, 0), 0.075
        yield f'{side}Shin', f'{side}Thigh', (x * 0.11, 0.5, 0), (x * 0.11, 0.12, 0), 0.055
        yield f'{side}Foot', f'{side}Shin', (x * 0.11, 0.08, 0), (x * 0.12, 0.04, 0.16), 0.045
        yield f'{side}Toes', f'{side}Foot', (x * 0.12, 0.03, 0.17), (x * 0.12, 0.03, 0.23), 0.035


def ring(centre, along, half):
    """Four corners around a box that runs along an axis."""
    across = [axis for axis in range(3) if axis != along]
    for a, b in ((-1, -1), (1, -1), (1, 1), (-1, 1)):
        corner = list(centre)
        corner[across[0]] += a * half
        corner[across[1]] += b * half
        yield corner


def numbers(values):
    return ' '.join('%.6f' % value for value in values)


def mesh():
    skeleton = list(bones())
    places = {name: place for name, _, place, _, _ in skeleton}
    order = [name for name, *_ in skeleton]
    vertices, triangles, weights = [], [], []
    for name, parent, place, end, half in skeleton:
        along = max(range(3), key=lambda axis: abs(end[axis] - place[axis]))
        first = len(vertices)
        for step in range(3):
            centre = [p + (e - p) * step / 2 for p, e in zip(place, end)]
            for number, corner in enumerate(ring(centre, along, half * (1, 1.1, 0.85)[step])):
                # The parent pulls at the end that is towards it.
                shares = ((name, 0.75), (parent, 0.25)) if step == 0 and parent else ((name, 1),)
                vertices.append((number / 4, step / 2, len(weights), len(shares)))
                weights += [(order.index(bone), share, [c - p for c, p in zip(corner, places[bone])])
                            for bone, share in shares]
        for low in (first, first + 4):
            for a in range(4):
                b = (a + 1) % 4
                triangles += [(low + a, low + b, low + 4 + a), (low + b, low + 4 + b, low + 4 + a)]
        for a in (first, first + 8):
            triangles += [(a, a + 1, a + 2), (a, a + 2, a + 3)]

    yield f'MD5Version 10\ncommandline "makeFigure.py"\nnumbones {len(skeleton)}'
    for number, (name, parent, place, _, _) in enumerate(skeleton):
        yield f'bone {number} {{\n    name "{name}"\n    bindpos {numbers(place)}'
        yield f'    bindmat {numbers((1, 0, 0, 0, 1, 0, 0, 0, 1))}'
        yield (f'    parent "{parent}"\n' if parent else '') + '}\n'
    yield f'nummeshes 1\nmesh 0 {{ \n  shader "figure/wood"\n\n  numverts {len(vertices)}'
    for number, (u, v, weight, count) in enumerate(vertices):
        yield f'    verts {number} {numbers((u, v))} {weight} {count}'
    yield f'\n  numtris {len(triangles)}'
    for number, (a, b, c) in enumerate(triangles):
        yield f'    tri {number}  {a} {b} {c}'
    yield f'\n  numweights {len(weights)}'
    for number, (bone, share, offset) in enumerate(weights):
        yield f'    weight {number} {bone} {numbers((share, *offset))}'
    yield '}'


def animation(seconds, curves):
    """curves: joint, attribute, and degrees for a phase from 0 to 1."""
    rate = 24
    count = seconds * rate
    yield f'MD5Version 10\ncommandline "makeFigure.py"\n\nnumchannels {len(curves)}\n'
    for number, (joint, attribute, curve) in enumerate(curves):
        yield f'channel {number} {{\n        joint "{joint}"\n        attribute "{attribute}"'
        yield f'        starttime 0.000000\n        endtime {seconds:.6f}\n        framerate {rate:.6f}\n'
        yield f'        strings 0\n\n        range 0 {count - 1}\n        keys {count}'
        keys = ['%.4f' % curve(key / count) for key in range(count)]
        for at in range(0, count, 8):
            yield ' ' * 17 + ' '.join(keys[at:at + 8]) + ' '
        yield '}\n'


def walk():
    curves = [('Hips', 'yaw', lambda p: 3 * sin(4 * pi * p)),
              ('Chest', 'pitch', lambda p: 8 * sin(4 * pi * p)), ('Head', 'pitch', lambda p: -6 * sin(4 * pi * p))]
    for side, x in SIDES:
        def swing(p, lag=0.0, x=x):
            return x * sin(4 * pi * (p - lag))
        curves += [(f'{side}Thigh', 'roll', lambda p, s=swing: 5 + 28 * s(p)),
                   (f'{side}Shin', 'roll', lambda p, s=swing: -30 + 28 * s(p, 0.11)),
                   (f'{side}Foot', 'roll', lambda p, s=swing: 12 + 12 * s(p, 0.05)),
                   (f'{side}UpperArm', 'roll', lambda p, s=swing: -26 * s(p)),
                   (f'{side}LowerArm', 'roll', lambda p, s=swing: 25 - 15 * s(p))]
    return animation(2, curves)


def wave():
    def up(p):
        return min(1, 6 * p, 6 * (1 - p))
    return animation(3, [('RightUpperArm', 'yaw', lambda p: -125 * up(p)),
                         ('RightLowerArm', 'yaw', lambda p: up(p) * (-20 + 35 * sin(8 * pi * p))),
                         ('RightHand', 'yaw', lambda p: up(p) * 15 * sin(8 * pi * p - 1)),
                         ('LeftUpperArm', 'yaw', lambda p: 8 * up(p)), ('Spine', 'yaw', lambda p: 6 * up(p)),
                         ('Head', 'yaw', lambda p: -9 * up(p)), ('Head', 'pitch', lambda p: -20 * up(p))])


def main():
    folder = Path(sys.argv[1])
    folder.mkdir(parents=True, exist_ok=True)
    for name, lines in (('Figure.md5mesh', mesh()), ('Walk.md5anim', walk()), ('Wave.md5anim', wave())):
        (folder / name).write_text('\n'.join(lines) + '\n', encoding='ascii')


main()
