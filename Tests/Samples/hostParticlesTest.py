"""Runs the particle screen of the sample host: table, picture, and scripts that change while it runs.

usage: hostParticlesTest.py HOST
"""

import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib
from pathlib import Path

HOST = Path(sys.argv.pop(1)).absolute()
FIRE = 'particlesystem "Fire"\n{\n"quota %d"\nemitter Point { "emission_rate 900" }\n}\n'


class HostParticles(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def testShowsAllScripts(self):
        done = subprocess.run([HOST, '--particles', '--frames', '2', '--screenshot', 'a.png'],
                              capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        rows = re.findall(r'^ +([A-Z][a-z]+) +([0-9]+) +([0-9]+) +[0-9.]+  -?[0-9]', done.stdout, re.M)
        self.assertEqual(len(rows), 12, done.stdout)
        for name, live, quota in rows:
            self.assertTrue(0 < int(live) <= int(quota), name)
        picture = Path('a.png').read_bytes()
        self.assertEqual(struct.unpack('>II', picture[16:24]), (4 * 360, 3 * 270))
        data = picture.index(b'IDAT')
        length = struct.unpack('>I', picture[data - 4:data])[0]
        self.assertGreater(len(set(zlib.decompressobj().decompress(picture[data + 4:data + 4 + length]))), 20)

    def testKeepsTheLastGoodStateOfAWatchedScript(self):
        def save(text):
            Path('new').write_text(text)
            os.replace('new', 'scripts/fire.particle')

        os.mkdir('scripts')
        save(FIRE % 50)
        with subprocess.Popen([HOST, '--particles', '--watch', '--media', 'scripts', '--frames', '3000'],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True) as host:
            self.addCleanup(host.kill)
            self.assertTrue(any('watching the scripts' in line for line in host.stdout))
            save(FIRE.replace('quota', 'quta') % 7)
            mistake = "fire.particle:3: unknown parameter 'quta' of template 'Fire'"
            self.assertTrue(any(mistake in line for line in host.stderr))
            save(FIRE % 60)
            self.assertTrue(any("'Fire' is new" in line for line in host.stdout))
            host.kill()


unittest.main()
