"""Runs the sample host over media and compares its report with what is known of them.

usage: hostMediaTest.py HOST
"""

import os
import random
import re
import subprocess
import sys
import tempfile
import unittest
import zipfile
from pathlib import Path

HOST = Path(sys.argv.pop(1)).absolute()


def run(*arguments, host=HOST):
    """Returns the exit code, what was said, and the numbers of the lines of the report by their first word."""
    done = subprocess.run([host, '--frames', '1', '--fps', '1000', *arguments], capture_output=True, text=True)
    said = done.stdout + done.stderr[-999:]
    numbers = {}
    for line in said.splitlines():
        word = line.split()[0] if line.split() else ''
        numbers[word] = [int(text) for text in re.findall(r'(?<![\w.])\d+(?![\w.])', line)]
    return done.returncode, said, numbers


class HostMedia(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)

    def check(self, sizes, budget, result):
        """sizes: of all files that a name leads to"""
        code, said, numbers = result
        filled = [size for size in sizes if size]
        passes = [len(filled), sum(filled)]
        self.assertEqual(code, 0, said)
        self.assertEqual(numbers['media'], [len(sizes), len(sizes) - len(filled)], said)
        for name in 'forced', 'streamed':
            self.assertEqual(numbers[name][:2], passes, said)
            # What is there at the end fits into the budget; all else was evicted.
            self.assertGreaterEqual(numbers[name][2] * max(sizes), sum(sizes) - budget, said)
            self.assertLess(numbers[name][2], len(filled), said)
        self.assertIn('budget        kept: %d bytes' % budget, said)
        self.assertLessEqual(numbers['budget'][1], budget, said)
        self.assertRegex(said, r'checksums +%d compared with .*, 0 with nothing, 0 mistakes' % (2 * len(filled)))

    def testItsOwnMediaComeFromBothArchives(self):
        sizes = [path.stat().st_size for path in HOST.parent.joinpath('media').rglob('*') if path.is_file()]
        result = run('--set', 'host.budget=3000000')
        self.check(2 * sizes, 3000000, result)
        for kind in 'FILESYSTEM,', 'ZIP,':
            self.assertEqual(result[2][kind], [len(sizes), len(sizes), sum(sizes)], result[1])
        self.assertRegex(result[1], r'forced +\d+ of %d files\n' % sum(2 for size in sizes if size))

    def testAZipOfAnotherToolWinsOverAFolderWithTheSameNames(self):
        generator = random.Random(4)
        data = {'Deep/er/und/tiefer.bin': generator.randbytes(70000), 'Grüße/日本.txt': 'ünï'.encode() * 9,
                'leer': b'', **{f'n/{i}.dat': bytes([i]) * i * 40 for i in range(1, 150)}}
        with zipfile.ZipFile('Other.zip', 'w') as archive:
            archive.mkdir('nothing in it') if hasattr(archive, 'mkdir') else None
            for number, (name, content) in enumerate(data.items()):
                archive.writestr(name, content, (zipfile.ZIP_STORED, zipfile.ZIP_DEFLATED)[number % 2])
        sizes = [len(content) for content in data.values()]
        self.check(sizes, 100000, run('--zip', 'Other.zip', '--set', 'host.budget=100000'))

        for name, content in (('N/1.DAT', b'hidden'), ('own/a', b'aa'), ('own/b', b'b')):
            Path('Folder', name).parent.mkdir(parents=True, exist_ok=True)
            Path('Folder', name).write_bytes(content)
        result = run('--zip', 'Other.zip', '--media', 'Folder', '--set', 'host.budget=100000')
        self.check(sizes + [2, 1], 100000, result)
        self.assertEqual(result[2]['FILESYSTEM,'], [2, 3, 3], result[1])

        # One byte of a stored member is another one.
        damaged = Path('Other.zip').read_bytes().replace(data['Deep/er/und/tiefer.bin'][:99], bytes(99))
        Path('Damaged.zip').write_bytes(damaged)
        code, said, _ = run('--zip', 'Damaged.zip')
        self.assertEqual(code, 1, said)
        self.assertIn('deep/er/und/tiefer.bin: could not be loaded at once', said)
        self.assertIn('deep/er/und/tiefer.bin: could not be loaded in the background', said)
        self.assertIn(', 2 mistakes', said)

    def testAWrongListIsNotedAndSoIsWhatIsNotThere(self):
        for name in 'qelHost', 'plugins.cfg', 'media', 'media.zip':
            Path(name).symlink_to(HOST.parent / name)
        lines = HOST.parent.joinpath('media.crc').read_text(encoding='utf-8').splitlines(keepends=True)
        for change, says in (('00000000' + lines[0][8:], 'should be'), (lines[0] + '0 1 gone\n', 'not found: 1')):
            Path('media.crc').write_text(''.join([change, *lines[1:]]), encoding='utf-8')
            code, said, _ = run(host=Path('qelHost').absolute())
            self.assertEqual(code, 1, said)
            self.assertIn(says, said)
        for arguments, says in ((('--media', 'gone'), 'gone: cannot be mounted'),
                                (('--zip', 'media.crc'), 'media.crc: cannot be mounted')):
            code, said, _ = run(*arguments)
            self.assertEqual(code, 1, said)
            self.assertIn(says, said)


unittest.main()
