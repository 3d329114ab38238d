"""Makes the media folder of the sample host: copies the texts, adds binaries and pictures that are the same each
time, and lists what each file should hold, for the host to compare with.

usage: makeMedia.py TEXTS FOLDER LIST

A line of the list is "crc32 size name"; each file is in it twice, as the folder and as the zip file name it.
"""

import random
import shutil
import sys
import zlib
from itertools import chain
from pathlib import Path

from makePictures import pictures

SMALL, BIG = 320, 4


def random_bytes(generator, size):
    return generator.getrandbits(8 * size).to_bytes(size, 'little') if size else b''


def binaries(generator):
    folders = ('textures', 'sounds', 'models/Crates', 'models/crates/lod')
    for number in range(SMALL):
        size = min(generator.randrange(1, 200) ** 2, 1 + number * 100)
        data = random_bytes(generator, size)
        if number % 3 == 0:  # packs well
            data = bytes(byte & 3 for byte in data)
        yield f'{folders[number % len(folders)]}/Part{number:03}.bin', data
    for number in range(BIG):
        yield f'big/Track{number}.raw', random_bytes(generator, (number + 1) * 256 * 1024 - 1)
    yield 'big/Terrain.height', bytes(x * y >> 8 & 255 for y in range(1024) for x in range(1024))
    yield 'big/zeros.bin', bytes(1 << 20)


def main():
    texts, folder, listing = map(Path, sys.argv[1:])
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(texts, folder)
    for name, data in chain(binaries(random.Random(20)), pictures()):
        file = folder / name
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_bytes(data)

    with listing.open('w', encoding='utf-8') as out:
        for file in sorted(path for path in folder.rglob('*') if path.is_file()):
            data = file.read_bytes()
            name = file.relative_to(folder).as_posix()
            for named in (name, f'{folder.name}/{name}'):
                out.write(f'{zlib.crc32(data):08x} {len(data)} {named}\n')


main()
