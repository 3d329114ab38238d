"""Writes poseReference.inc: a model, an animation, and the poses that they should give, in double precision.

usage: poseReference.py > poseReference.inc

Rotations are products of 3 by 3 matrices for row vectors; nothing is shared with the library.
"""

from math import cos, pi, radians, sin

BONES = (('root', '', (1, 2, 3)), ('spine', 'root', (0, 0, 1.5)), ('arm', 'spine', (-0.75, 0.25, 0)),
         ('prop', '', (10, 0, -10)), ('strap', 'prop', (0, 0.5, 0)))
CHANNELS = (('root', 'yaw', 0, 2, (10, 40, 80, 160, -30)), ('root', 'roll', 0, 2, (-20, 5, 95)),
            ('spine', 'pitch', 0.5, 1.5, (33, 66, 99, 132)), ('spine', 'YAW', 0, 2, (-75,)),
            ('arm', 'ROLL', 0, 3, (12, 24, 36, 48, 60, 72)), ('arm', 'PITCH', 0, 3, (271.5, -12.25)),
            ('arm', 'x', 0, 3, (4, 5)), ('gone', 'yaw', 0, 2, (45,)), ('strap', 'roll', 0, 1, (17, 34)))
TIMES = (0.4, 0.9, 1.7, 2.5, 7)


def times(a, b):
    return [[sum(a[i][k] * b[k][j] for k in range(3)) for j in range(3)] for i in range(3)]


def about_x(t):
    return [[1, 0, 0], [0, cos(t), sin(t)], [0, -sin(t), cos(t)]]


def about_y(t):
    return [[cos(t), 0, -sin(t)], [0, 1, 0], [sin(t), 0, cos(t)]]


def about_z(t):
    return [[cos(t), sin(t), 0], [-sin(t), cos(t), 0], [0, 0, 1]]


def key(start, end, keys, t):
    if not start < t < end:
        return 0
    return keys[max(0, int(((t - start) * len(keys) - 1) / (end - start)))]


def poses(positions):
    """For each time in turn, each bone's matrix and position, which goes on from the pose before."""
    for t in TIMES:
        matrices = {}
        for name, parent, _ in BONES:
            angle = {a: 0 for a in ('yaw', 'pitch', 'roll')}
            for joint, attribute, start, end, keys in CHANNELS:
                if joint == name and attribute != 'x':
                    angle[attribute.lower()] = radians(key(start, end, keys, t))
            m = times(times(about_z(angle['yaw']), about_y(angle['pitch'])), about_x(angle['roll']))
            if parent:
                m = times(matrices[parent], m)
                positions[name] = [a + b for a, b in zip(positions[name], positions[parent])]
            else:
                m = times(m, about_x(-pi / 2))
                m[2][2] = -m[2][2]
            matrices[name] = m
        yield t, [(matrices[name], positions[name]) for name, _, _ in BONES]


def main():
    print('// Made by poseReference.py.\nchar const modelText[] = R"(MD5Version 10\nnumbones %d' % len(BONES))
    for number, (name, parent, position) in enumerate(BONES):
        print('bone %d { name "%s" bindpos %g %g %g bindmat 1 0 0 0 1 0 0 0 1%s }' %
              (number, name, *position, f' parent "{parent}"' if parent else ''))
    print(')";\nchar const animationText[] = R"(MD5Version 10\nnumchannels %d' % len(CHANNELS))
    for number, (joint, attribute, start, end, keys) in enumerate(CHANNELS):
        print('channel %d { joint "%s" attribute "%s" starttime %g endtime %g framerate 5 strings 0 range 0 %d '
              'keys %d %s }' % (number, joint, attribute, start, end, len(keys) - 1, len(keys),
                                ' '.join(f'{k:g}' for k in keys)))
    print(')";\nstruct {\n    float time;\n    double bones[%d][12]; // rotation, position\n} const poses[] = {'
          % len(BONES))
    for t, bones in poses({name: list(position) for name, _, position in BONES}):
        print('    {%.1ff,\n     {' % t + ',\n      '.join(
            '{' + ', '.join('%.9g' % x for x in sum(matrix, []) + list(position)) + '}'
            for matrix, position in bones) + '}},')
    print('};')


main()
