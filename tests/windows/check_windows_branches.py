#!/usr/bin/env python3
"""Compiles the Windows branches of our units with the mingw-w64 cross compiler,
syntax only: every unit of the build that has an `#ifdef Q_OS_WIN` (or _WIN32)
branch, with exactly the defines, include folders and warnings the build gives
it on Linux, against Windows' own system headers. Nothing is linked or run;
what this cannot see (a wrong Windows call at run time, Qt's Windows build
itself) stays for a build on Windows."""

import json
import re
import shlex
import subprocess
import sys
from pathlib import Path

CROSS = "x86_64-w64-mingw32-g++-posix"
WINDOWS_BRANCH = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif)\b.*\b(Q_OS_WIN|_WIN32)\b", re.M)


def cross_command(entry):
    args = shlex.split(entry["command"])
    out = [CROSS, "-fsyntax-only", "-Werror"]
    skip = False
    for a in args[1:]:
        if skip:
            skip = False
        elif a == "-o":
            skip = True
        elif a in ("-c", "-fPIC"):
            continue
        else:
            # Qt's platform header folder for Windows and GCC instead of Linux's.
            out.append(a.replace("/mkspecs/linux-g++", "/mkspecs/win32-g++"))
    return out


def main():
    build = Path(sys.argv[1])
    units = {}
    for entry in json.load(open(build / "compile_commands.json")):
        source = Path(entry["file"])
        # Generated units (moc) live in the build folder and are left out.
        if source.is_relative_to(build) or source.suffix != ".cpp":
            continue
        if WINDOWS_BRANCH.search(source.read_text(encoding="utf-8")):
            units[source] = entry
    if not units:
        print("no unit with a Windows branch found: the check would check nothing")
        return 1
    failed = 0
    for source, entry in sorted(units.items()):
        r = subprocess.run(cross_command(entry), cwd=entry["directory"], capture_output=True, text=True)
        print(("ok    " if r.returncode == 0 else "FAIL  ") + str(source))
        if r.returncode != 0:
            failed += 1
            print(r.stdout + r.stderr)
    print(f"{len(units) - failed} passed, {failed} failed")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
