"""Shows the screens of the sample host: each as a picture without a display, and in a window that real keys work.

usage: hostScreensTest.py HOST
"""

import os
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

HOST = Path(sys.argv.pop(1)).absolute()
SCREENS = ('frames', 'files', 'images', 'particles', 'model', 'sound', 'tasks', 'console', 'fonts')
SIZE = (960, 640)


def packed_rows(path):
    """The rows of an RGB picture as its file has them: a filter's number, and what the filter leaves."""
    data = Path(path).read_bytes()
    assert struct.unpack('>II', data[16:24]) == SIZE, path
    packed, at = b'', 8
    while at < len(data):
        length, kind = struct.unpack('>I4s', data[at:at + 8])
        packed += data[at + 8:at + 8 + length] if kind == b'IDAT' else b''
        at += length + 12
    plain, step = zlib.decompress(packed), 3 * SIZE[0] + 1
    return [plain[start:start + step] for start in range(0, len(plain), step)]


def rows_of(path):
    """Its rows, three bytes to a pixel."""
    rows, above = [], bytearray(3 * SIZE[0] + 3)
    for packed in packed_rows(path):
        row = bytearray(3) + packed[1:]
        for i in range(3, len(row)):
            a, b, c = row[i - 3], above[i], above[i - 3]
            nearest = min((abs(b - c), 0, a), (abs(a - c), 1, b), (abs(a + b - 2 * c), 2, c))[2]
            row[i] = row[i] + (0, a, b, a + b >> 1, nearest)[packed[0]] & 255
        rows.append(bytes(row[3:]))
        above = row
    return rows


class HostScreens(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def testDrawsEachScreenWithoutADisplay(self):
        seen = set()
        for screen in SCREENS:
            done = subprocess.run([HOST, '--headless', '--screen', screen, '--screenshot', 'a.png', '--frames', '30'],
                                  capture_output=True, text=True)
            self.assertEqual((done.returncode, done.stdout), (0, ''), done.stderr)
            rows = packed_rows('a.png')
            self.assertGreater(len(set(rows)), 40, screen)
            seen.add(zlib.crc32(b''.join(rows)))
        self.assertEqual(len(seen), len(SCREENS))
        done = subprocess.run([HOST, '--headless', '--screen', 'none', '--frames', '1'], capture_output=True, text=True)
        self.assertEqual(done.returncode, 1)
        self.assertIn('no such screen', done.stderr)

    def testFollowsRealKeysInAWindow(self):
        self.assertTrue(shutil.which('Xvfb') and shutil.which('xdotool'), 'scripts/setup.sh installs them')
        server = subprocess.Popen(['Xvfb', '-displayfd', '1', '-screen', '0', '1280x800x24', '-nolisten', 'tcp'],
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(server.stdout.close)
        self.addCleanup(server.wait)
        self.addCleanup(server.kill)
        # The graphics library of a machine without a card is no part of this: software draws here. What the
        # display's libraries keep to the end cannot be told by name any more when the plugins have gone.
        surroundings = dict(os.environ, DISPLAY=f':{int(server.stdout.readline())}', SDL_RENDER_DRIVER='software',
                            SDL_FRAMEBUFFER_ACCELERATION='0',
                            DBUS_SESSION_BUS_ADDRESS='disabled:',
                            ASAN_OPTIONS='detect_leaks=0')
        surroundings.pop('SDL_VIDEODRIVER', None)
        host = subprocess.Popen([HOST, '--window', '--screen', 'tasks', '--screenshot', 'end.png'], env=surroundings,
                                stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        self.addCleanup(host.kill)

        def xdotool(*command):
            subprocess.run(['timeout', '60', 'xdotool', *command], env=surroundings, check=True,
                           stdout=subprocess.DEVNULL)

        xdotool('search', '--sync', '--onlyvisible', '--name', 'qelSystem', 'windowfocus', '--sync',
                'key', '--delay', '60', 'F8', 'type', '--delay', '60', 'host.fps=77')
        xdotool('key', '--delay', '60', 'Return', 'Escape')
        _, errors = host.communicate(timeout=60)
        self.assertEqual(host.returncode, 0, errors)
        subprocess.run([HOST, '--headless', '--screen', 'console', '--screenshot', 'console.png', '--frames', '5',
                        '--set', 'host.fps=77'], check=True, capture_output=True)
        shown, console = rows_of('end.png'), rows_of('console.png')
        right = slice(-360, None)  # of the line below: "host.fps = 77"
        self.assertEqual([row[right] for row in shown[612:]], [row[right] for row in console[612:]])
        self.assertNotEqual(shown[40:600], console[40:600])


unittest.main()
