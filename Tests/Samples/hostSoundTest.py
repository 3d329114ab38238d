"""Renders the sample host's scene of sounds into a WAV file and measures it.

usage: hostSoundTest.py HOST
"""

import array
import math
import os
import subprocess
import sys
import tempfile
import unittest
import wave
from pathlib import Path

HOST = Path(sys.argv.pop(1)).absolute()
LEFT, RIGHT, CENTER, LFE, REAR_LEFT, REAR_RIGHT = range(6)


class HostSound(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)
        done = subprocess.run([HOST, '--sound', '--audio-file', 'scene.wav'], capture_output=True, text=True)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.table = done.stdout
        with wave.open('scene.wav') as file:
            self.rate, self.channels = file.getframerate(), file.getnchannels()
            self.samples = array.array('h', file.readframes(file.getnframes()))

    def part(self, start, end, channel):
        first, last = (int(second * self.rate) * self.channels for second in (start, end))
        return self.samples[first + channel:last + channel:self.channels]

    def level(self, start, end, channel=LEFT):
        """Root of the mean square, 1 is full."""
        part = self.part(start, end, channel)
        return math.sqrt(sum(sample * sample for sample in part) / len(part)) / 32768

    def strength(self, start, end, hertz):
        """Of one frequency on the left."""
        part = self.part(start, end, LEFT)
        turn = 2 * math.pi * hertz / self.rate
        return abs(complex(sum(s * math.cos(turn * i) for i, s in enumerate(part)),
                           sum(s * math.sin(turn * i) for i, s in enumerate(part)))) / len(part)

    def testTheSceneSoundsAsItShould(self):
        self.assertEqual(self.channels, 6)
        self.assertEqual(self.level(0, 0.4), 0)
        self.assertGreater(self.level(0.7, 1.3, LEFT), 10 * self.level(0.7, 1.3, RIGHT))  # a bee from left ...
        self.assertGreater(self.level(3.5, 4.2, RIGHT), 10 * self.level(3.5, 4.2, LEFT))  # ... to right

        note = 220  # of a chord that plays from 5 to 8 and from 17 to 20 of the music
        music = self.strength(7, 7.9, 220)
        self.assertAlmostEqual(self.strength(5.0, 5.1, note) / music, 0.05, delta=0.05)  # it fades in
        f_major = 174.61  # from 8 to 11; speech begins at 9
        self.assertAlmostEqual(self.strength(10, 10.9, f_major) / self.strength(8.1, 8.9, f_major), 0.6, delta=0.04)

        self.assertGreater(self.level(26.0, 26.1, REAR_LEFT), 20 * self.level(28.9, 29, REAR_LEFT))  # a church rings on
        self.assertGreater(self.level(31.9, 32.1, REAR_LEFT), 5 * self.level(30, 30.2, REAR_LEFT))  # all around
        self.assertLess(self.level(36.5, 36.9), 0.001)  # a pause
        for number, channel in enumerate((CENTER, LFE, REAR_LEFT, REAR_RIGHT), 2):  # horns, one after the other
            start = 37.05 + 0.2 * number
            levels = {other: self.level(start, start + 0.1, other) for other in (CENTER, LFE, REAR_LEFT, REAR_RIGHT)}
            self.assertGreater(levels.pop(channel), 20 * max(levels.values()))
        self.assertEqual(max(self.level(39, 39.9, channel) for channel in range(6)), 0)

        # No click where music and bee fade: no step beyond what their tones make.
        for start, end in ((4.4, 5.6), (35.2, 36.9), (38.3, 38.9)):
            part = self.part(start, end, LEFT)
            self.assertLess(max(abs(a - b) for a, b in zip(part, part[1:])), 0.05 * 32768, start)

        rows = [line for line in self.table.splitlines() if line.endswith('fades out')]
        self.assertTrue(any('bell.wav' in row for row in rows), 'the least urgent are robbed')
        self.assertFalse(any('music.ogg' in row for row in rows))
        self.assertIn('206 sounds played or waited, 0 were refused', self.table)


unittest.main()
