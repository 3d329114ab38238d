#!/usr/bin/env python3
"""Runs clang-tidy with .clang-tidy over the library, the plugins, samples and tools; fails on a finding.

    scripts/check-tidy.py                     all of them
    scripts/check-tidy.py System/File Tools   what lies below these

Nearly all of the time goes into headers, so a few sources of a folder are looked at as one; where they do not
compile together, each is looked at alone. The compile commands are those of build/clang.
"""

import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import shlex
import subprocess
import sys
import tempfile

ROOT = pathlib.Path(__file__).resolve().parent.parent
COMMANDS = ROOT / "build/clang/compile_commands.json"
PLACES = ["System", "Support", "Plugins", "Samples", "Tools"]
TOGETHER = 8

FINDING = re.compile(r"^(\S+?:\d+:\d+): (?:warning|error): (.*)$")


def options(command):
    """What of a compile command changes the meaning of a source."""
    words = shlex.split(command)
    return tuple(word for word in words if word.startswith(("-D", "-I", "-isystem", "-std", "-m", "-f", "-O"))
                 or (word.startswith("/") and words[words.index(word) - 1] == "-isystem"))


def groups(places):
    rows = []
    for entry in json.loads(COMMANDS.read_text()):
        source = pathlib.Path(entry["file"])
        inside = source.is_relative_to(ROOT) and str(source.relative_to(ROOT))
        if inside and any(inside == place or inside.startswith(place.rstrip("/") + "/") for place in places):
            rows.append((source.parent, options(entry["command"]), source))
    rows = sorted(set(rows))
    for (folder, words), group in itertools.groupby(rows, key=lambda row: row[:2]):
        sources = [source for _, _, source in group]
        for start in range(0, len(sources), TOGETHER):
            yield folder, words, sources[start:start + TOGETHER]


def tidy(source, words):
    everything = f"--header-filter=^{ROOT}/({'|'.join(PLACES)})/"
    checks = "--checks=-bugprone-suspicious-include"
    run = subprocess.run(["clang-tidy-14", "--quiet", f"--config-file={ROOT}/.clang-tidy", everything, checks,
                          str(source), "--", *words, "-ferror-limit=0"], cwd=ROOT, capture_output=True, text=True)
    compiled = "[clang-diagnostic-error]" not in run.stdout
    return run.stdout, compiled, run.returncode


def look_at(group):
    """The findings in a group of sources, each a block of lines."""
    folder, words, sources = group
    if len(sources) > 1:
        with tempfile.NamedTemporaryFile("w", suffix=".cpp") as together:
            together.write("".join(f'#include "{source}"\n' for source in sources))
            together.flush()
            output, compiled, _ = tidy(together.name, words)
        if compiled:
            return output
    output = ""
    for source in sources:
        text, _, status = tidy(source, words)
        output += text
        if status != 0 and not FINDING.search(text):
            output += f"{source}:1:1: error: clang-tidy-14 has failed with {status}\n"
    return output


def main():
    if not COMMANDS.exists():
        subprocess.run(["cmake", "--preset", "clang"], cwd=ROOT, check=True, stdout=subprocess.DEVNULL)
    work = list(groups(sys.argv[1:] or PLACES))
    count = sum(len(sources) for _, _, sources in work)
    if count == 0:
        sys.exit("check-tidy: no sources there")
    seen, wanted = set(), False
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for output in pool.map(look_at, work):
            for line in output.replace(f"{ROOT}/", "").splitlines():
                finding = FINDING.match(line)
                if finding:
                    wanted = finding.groups() not in seen
                    seen.add(finding.groups())
                if wanted:
                    print(line, flush=True)
    if seen:
        sys.exit(f"check-tidy: {len(seen)} findings in {count} sources")
    print(f"check-tidy: {count} sources without a finding")


main()
