"""Lets the sample host show its figure, and compares what it says with what the files hold.

usage: hostModelTest.py HOST
"""

import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

HOST = Path(sys.argv.pop(1)).absolute()
FIGURE = HOST.parent / 'media/figure'


def run(*arguments):
    done = subprocess.run([HOST, *arguments], capture_output=True, text=True)
    return done.returncode, done.stdout, done.stderr


def keys(text, joint, attribute):
    channel = next(part for part in text.split('channel ') if f'"{joint}"' in part and f'"{attribute}"' in part)
    return [float(key) for key in channel.split('keys')[1].strip(' }\n').split()[1:]]


class HostModel(unittest.TestCase):
    def testTheFigureIsShownInPosesAndDrawn(self):
        with tempfile.TemporaryDirectory() as folder:
            picture = Path(folder, 'figure.png')
            code, said, errors = run('--model', FIGURE / 'Figure.md5mesh', '--animation', FIGURE / 'Walk.md5anim',
                                     '--animation', FIGURE / 'Wave.md5anim', '--screenshot', picture)
            self.assertEqual(code, 0, errors)
            png = picture.read_bytes()
        text = (FIGURE / 'Figure.md5mesh').read_text()
        counts = [len(re.findall(rf'^ *{word} \d', text, re.M)) for word in ('bone', 'verts', 'tri', 'weight')]
        self.assertIn('%d bones, %d vertices, %d triangles, %d weights' % tuple(counts), said)

        for name, seconds, bone, column in (('Walk', 2, 'LeftThigh', 'roll'), ('Wave', 3, 'RightLowerArm', 'yaw')):
            table = said.split(name + '.md5anim')[1].split('animation ')[0]
            values = keys((FIGURE / f'{name}.md5anim').read_text(), bone, column)
            rows = re.findall(rf'^ *([\d.]+)  {bone} +(\S+) +(\S+) +(\S+)  ', table, re.M)
            self.assertEqual(len(rows), 8, table)
            for time, *angles in rows:
                place = int((float(time) * len(values) - 1) / seconds)
                shown = float(angles[('yaw', 'pitch', 'roll').index(column)])
                self.assertAlmostEqual(shown, values[place], delta=0.011, msg=f'{name} at {time}')

        self.assertEqual(png[:8], b'\x89PNG\r\n\x1a\n')
        width, height = struct.unpack('>II', png[16:24])
        data = b''
        at = 8
        while at < len(png):
            size, kind = struct.unpack('>I4s', png[at:at + 8])
            data += png[at + 8:at + 8 + size] if kind == b'IDAT' else b''
            at += 12 + size
        lines = zlib.decompress(data)
        self.assertEqual(len(lines), height * (1 + 3 * width))
        self.assertGreater(len(set(lines)), 50, 'an empty picture')

    def testWhatCannotBeReadOrWrittenIsSaid(self):
        mesh = FIGURE / 'Figure.md5mesh'
        for arguments, says in ((('--model', 'gone'), 'gone: no model'),
                                (('--model', mesh, '--animation', mesh), 'Figure.md5mesh: no animation'),
                                (('--model', mesh, '--screenshot', '/no/such/folder/x.png'), 'cannot be written'),
                                (('--screenshot', 'x.png'), '--model')):
            code, _, errors = run(*arguments)
            self.assertNotEqual(code, 0)
            self.assertIn(says, errors)


unittest.main()
