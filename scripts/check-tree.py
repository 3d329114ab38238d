#!/usr/bin/env python3
"""Holds the tree to its own rules; prints "file:line: what" for each breach and fails if there is one.

  * who may include whom: TABLE
  * no header includes itself by way of others
  * public headers need the standard library and the library's own headers only
  * the operating system is asked in Support/OS only: its headers and #if on it
  * what stands outside the library uses public headers only

Ends with the lines of code by folder and the lines of tests for each hundred of them.
"""

import collections
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# Folder: what its public headers may include | what its sources and private headers may include besides.
# Always: its own files, Support and LEAVES. A folder without a row goes by its parent's.
TABLE = {
    "System/math":         ("System",            "Time"),  # with math/3D and math/kernels
    "System/Time":         ("System",            "Thread"),
    "System/Thread":       ("System",            "Time"),
    "System/System":       ("",                  "Time Patterns math"),
    "System/Patterns":     ("System",            "File"),
    "System/File":         ("System Patterns",   "Thread math"),
    "System/Codec":        ("File System",       "Patterns"),  # with Codec/codecs
    "System/Platform":     ("System",            "Thread Time Patterns"),
    "System/Graphics/image":    ("File math System", ""),
    "System/Graphics/model":    ("File math System", ""),
    "System/Graphics/particle": ("System math File", ""),
    "System/Sound":        ("System math Patterns", "File Thread Time"),
    "Support/OS":          ("",                  ""),
    "Support/PoolHeap":    ("",                  ""),
    "Support/D3DX":        ("",                  ""),
    "Support/Font":        ("",                  ""),
}

# Headers that need a whole class where the table has a forward declaration in mind, each with its reason.
WIDER = {
    "System/File/directoryMonitorTask.h":  "Thread",  # the class is a ThreadTask and has a lock
    "System/Patterns/resourceMgr.h":       "File",    # the class is an archive container
    "System/Sound/soundSystem.h":          "Thread",  # has a lock for back ends
    "System/System/Root.h":                "Time",    # tells a time by value
    "System/System/timeStepCollect.h":     "Time",    # has a timer
    "System/System/timerHelper.h":         "Time",    # has a timer
    "System/Time/multiFrameProfiler.h":    "Thread",  # has a lock
}

# Root alone knows every manager; these are its sources, by topic, and the header of all headers.
OPEN_TO_ALL = {
    "System/System/Root.cpp",
    "System/System/rootLoop.cpp",
    "System/System/rootManagers.cpp",
    "System/System/rootPlugins.cpp",
    "System/System/terminate.cpp",
    "System/qelSystem.h",
}

# Leaf headers, open to every folder of the library.
LEAVES = {
    "System/Patterns/tSingleton.h",
    "System/Patterns/factoryObj.h",
}

# Folders that stand for programs of other people, who have no source root: a file beside goes by its bare name.
BESIDE = ("Plugins", "Samples", "Tools", "Benchmarks")
SOURCES = ("System", "Support", *BESIDE, "Tests", "Docs/snippets")

# Headers of other libraries, by who may include them. Tests and benchmarks take what they need.
THIRD_PARTY = {
    "Support/Font/fontFace.cpp": "fontconfig/fontconfig.h ft2build.h",
    "System/Codec/codecs/": "zlib.h",
    "System/Sound/": "vorbis/vorbisfile.h",
    "Plugins/Platform/": "SDL.h",
    "Plugins/RenderSDL/": "SDL.h",
    "Plugins/SoundOpenAL/": "AL/al.h AL/alc.h AL/alext.h AL/efx.h AL/efx-presets.h sndfile.h",
    "Plugins/ZipArchive/": "zip.h",
    "Samples/Host/": "CLI/CLI.hpp editline/readline.h zip.h zlib.h",  # it lists zip files to play with
    "Samples/Host/terminalConsole.cpp": "poll.h termios.h unistd.h",  # the terminal is the host's, not the library's
    "Tools/": "CLI/CLI.hpp png.h",
}

# Of the processor and of the compiler, not of the operating system.
COMPILER_HEADERS = re.compile(r"^(\w+intrin|cpuid|cxxabi)\.h$")
SYSTEM_MACROS = re.compile(r"\b(_?_?linux_?_?|__gnu_linux__|_?_?unix_?_?|_WIN32|_WIN64|WIN32|__APPLE__|__FreeBSD__|"
                           r"__ANDROID__|_POSIX\w*|__GLIBC\w*)\b")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
CONDITION = re.compile(r"^\s*#\s*(?:if|ifdef|ifndef|elif)\b(.*)")

faults = []


def fault(file, line, what):
    faults.append(f"{file}:{line}: {what}")


def row_of(folder):
    while folder not in TABLE and "/" in folder:
        folder = folder.rpartition("/")[0]
    return folder if folder in TABLE else None


def may_include(file, header, public):
    """Whether the table lets a file of System/ or Support/ include this header."""
    own, target = (row_of(name.rpartition("/")[0]) for name in (file, header))
    if file in OPEN_TO_ALL or header in LEAVES or header.startswith("Support/") or target == own:
        return True
    in_header, in_source = TABLE[own]
    open_rows = f"{in_header} {WIDER.get(file, '')} {'' if file in public else in_source}".split()
    return target is not None and target.removeprefix("System/") in open_rows


def public_headers():
    """What the install takes along: the file sets of the folders' CMakeLists.txt."""
    found = set()
    for cmake in tracked("CMakeLists.txt"):
        text = (ROOT / cmake).read_text()
        for files in re.findall(r"FILE_SET HEADERS[^)]*?\bFILES\b([^)]*)\)", text):
            for name in re.findall(r"[\w./]+\.h\b", files):
                found.add(str((ROOT / cmake).parent.joinpath(name).resolve().relative_to(ROOT)))
    return found


def tracked(*patterns):
    arguments = ["git", "ls-files", "--cached", "--others", "--exclude-standard", "--"]
    names = subprocess.run(arguments + list(patterns) + [f"**/{p}" for p in patterns],
                           cwd=ROOT, check=True, capture_output=True, text=True).stdout.split()
    return sorted(name for name in set(names) if (ROOT / name).exists())


def code_lines(text):
    """The text by lines with its comments blanked, for looking at code alone."""
    blank = lambda match: re.sub(r"[^\n]", " ", match.group(0)) if match.group(0)[0] == "/" else match.group(0)
    return re.sub(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"', blank, text, flags=re.DOTALL).split("\n")


def check_include(file, line, opening, header, public):
    top = file.partition("/")[0]
    if opening == '"':
        if top in BESIDE and (ROOT / file).parent.joinpath(header).is_file():
            return
        if not (ROOT / header).is_file():
            fault(file, line, f'"{header}" is not written from the source root')
        elif top in ("System", "Support") and not header.startswith(("System/", "Support/")):
            fault(file, line, f'the library includes "{header}", which stands outside it')
        elif top == "Support" and header.startswith("System/"):
            fault(file, line, f'Support stands below System and includes "{header}"')
        elif top in ("System", "Support") and not may_include(file, header, public):
            fault(file, line, f'the table of scripts/check-tree.py does not let it include "{header}"')
        elif file in public and header not in public:
            fault(file, line, f'a public header includes "{header}", which is not public')
        elif top not in ("System", "Support") and header.startswith(("System/", "Support/")) and header not in public:
            fault(file, line, f'"{header}" is not a public header')
        return
    standard = "." not in header
    if file in public and not standard and not COMPILER_HEADERS.match(header):
        fault(file, line, f"a public header includes <{header}>: only the standard library may be needed")
    elif not standard and not file.startswith(("Support/OS/", "Tests/", "Benchmarks/")):
        allowed = any(file.startswith(folder) and header in names.split() for folder, names in THIRD_PARTY.items())
        if not allowed and not COMPILER_HEADERS.match(header):
            fault(file, line, f"<{header}> is neither of the standard library nor in THIRD_PARTY of this script")


def check_circles(includes):
    """Reports each include that closes a circle of headers, once."""
    done, open_path = set(), []

    def visit(header):
        open_path.append(header)
        for line, target in includes.get(header, ()):
            if target in open_path:
                fault(header, line, "closes a circle of headers: " + " -> ".join(open_path[open_path.index(target):] + [target]))
            elif target not in done:
                visit(target)
        open_path.pop()
        done.add(header)

    for header in sorted(includes):
        if header not in done:
            visit(header)


def print_shares(counts):
    """counts: lines that are not blank, by file. Tests/<x> stand beside the folder <x> or System/<x>."""
    code, tests = collections.Counter(), collections.Counter()
    for file, lines in counts.items():
        folder = file.rpartition("/")[0]
        if not folder.startswith("Tests"):
            code["/".join(folder.split("/")[:2]) if folder.startswith(("System/", "Support/")) else folder.split("/")[0]] += lines
            continue
        name = folder.removeprefix("Tests").strip("/") or "Tests"
        beside = f"System/{name.split('/')[0]}"
        if not (ROOT / beside).is_dir():
            beside = "/".join(name.split("/")[:2]) if name.startswith("Support/") else name.split("/")[0]
        tests[beside] += lines
    print(f"{'lines of code':22}{'code':>8}{'tests':>8}{'tests for code':>16}")
    for folder in sorted(code | tests):
        own, beside = code[folder], tests[folder]
        print(f"{folder:22}{own:8}{beside:8}" + (f"{beside / own:16.0%}" if own and beside else ""))
    tested = sum(lines for folder, lines in code.items() if not folder.startswith(("Benchmarks", "Docs")))
    print(f"{'all that is tested':22}{tested:8}{sum(tests.values()):8}{sum(tests.values()) / tested:16.0%}")


def main():
    public = public_headers()
    includes, counts = {}, {}
    for file in tracked("*.h", "*.cpp"):
        if not file.startswith(tuple(f"{folder}/" for folder in SOURCES)):
            continue
        source = (ROOT / file).read_text()
        counts[file] = sum(1 for text in source.splitlines() if text.strip())
        lines = code_lines(source)
        library = file.startswith(("System/", "Support/"))
        if library and row_of(file.rpartition("/")[0]) is None and file.count("/") > 1:
            fault(file, 1, "its folder has no row in the table of scripts/check-tree.py")
            continue
        for number, text in enumerate(lines, 1):
            include = INCLUDE.match(text)
            if include:
                check_include(file, number, include.group(1), include.group(2), public)
                if file.endswith(".h") and include.group(1) == '"':
                    includes.setdefault(file, []).append((number, include.group(2)))
            condition = CONDITION.match(text)
            if condition and SYSTEM_MACROS.search(condition.group(1)) and not file.startswith("Support/OS/"):
                fault(file, number, "a condition on the operating system; it belongs in Support/OS")
    check_circles(includes)
    print_shares(counts)
    for text in faults:
        print(text, file=sys.stderr)
    print(f"check-tree: {len(faults)} faults in {len(counts)} files" if faults else
          f"check-tree: {len(counts)} files keep the rules")
    return 1 if faults else 0


sys.exit(main())
