#!/usr/bin/env python3
"""Makes the Ogg Vorbis files of this folder: python3 makeSounds.py (needs oggenc of vorbis-tools).

Channel k of a file is a sine of (k + 1) * 200 Hz and an amplitude of 0.1 * (k + 1), in the order of WAV files.
"""
import math
import pathlib
import struct
import subprocess

RATE = 8000


def wav(channels, frames):
    data = b"".join(
        struct.pack("<h", round(32767 * 0.1 * (k + 1) * math.sin(2 * math.pi * 200 * (k + 1) * n / RATE)))
        for n in range(frames) for k in range(channels))
    form = struct.pack("<HHIIHH", 1, channels, RATE, RATE * channels * 2, channels * 2, 16)
    body = b"WAVEfmt " + struct.pack("<I", 16) + form + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


def ogg(channels, frames, serial=1):
    command = ["oggenc", "-Q", "-q", "2", "-s", str(serial), "-o", "-", "-"]
    return subprocess.run(command, input=wav(channels, frames), stdout=subprocess.PIPE, check=True).stdout


here = pathlib.Path(__file__).parent
files = {
    "mono.ogg": ogg(1, 3000),
    "stereo.ogg": ogg(2, 3000),
    "six.ogg": ogg(6, 3000),
    "long.ogg": ogg(1, 80000),  # more than the four segments of a stream hold
    "segment.ogg": ogg(1, 12288),  # ends where a segment of a stream does
    "chained.ogg": ogg(1, 80000) + ogg(2, 3000, 2),
}
files["cut.ogg"] = files["long.ogg"][:-2000]
files["empty.ogg"] = ogg(1, 0)
for name, content in files.items():
    (here / name).write_bytes(content)
