#!/usr/bin/env python3
"""The Debian package as a workstation gets it: made by cpack from a finished
build folder, unpacked into a temporary folder and checked there: its control
fields, its files, the desktop entry, the shared libraries of its programs and
the start of both programs."""

import argparse
import os
import re
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET
from pathlib import Path

DESKTOP_PROGRAM = "usr/bin/tkQuarv"
EXPORTER = "usr/bin/tkquarv-export"
ENTRY = "usr/share/applications/tkquarv.desktop"
ICON_DIR = "usr/share/icons/hicolor/scalable/apps"

failures = []


def check(ok, what, detail=""):
    print(("ok    " if ok else "FAIL  ") + what)
    if not ok:
        failures.append(what)
        if detail:
            print("      " + str(detail).rstrip().replace("\n", "\n      "))
    return ok


def run(cmd, **kw):
    return subprocess.run([str(c) for c in cmd], capture_output=True, text=True, **kw)


def control_fields(deb):
    fields, key = {}, None
    for line in run(["dpkg-deb", "-f", deb]).stdout.splitlines():
        if line.startswith(" ") and key:
            fields[key] += "\n" + line
        elif ":" in line:
            key, value = line.split(":", 1)
            fields[key] = value.strip()
    return fields


def depends_names(depends):
    # "libc6 (>= 2.34), libpq5 (>= 9.2~beta3) | foo" -> {"libc6", "libpq5", "foo"}
    return {re.split(r"[\s(:]", alt.strip())[0]
            for entry in depends.split(",") for alt in entry.split("|") if alt.strip()}


def owning_package(path):
    for p in (path, os.path.realpath(path)):
        r = run(["dpkg-query", "-S", p])
        if r.returncode == 0:
            return r.stdout.split(":", 1)[0].strip()
    return None


def linked_packages(program):
    """Packages of the libraries the program names (NEEDED), resolved as ldd
    resolves them; None for a library that does not resolve."""
    needed = re.findall(r"\(NEEDED\)\s+Shared library: \[([^\]]+)\]", run(["readelf", "-d", program]).stdout)
    resolved = dict(re.findall(r"^\s*(\S+) => (\S+)", run(["ldd", program]).stdout, re.M))
    return {lib: (owning_package(resolved[lib]) if resolved.get(lib, "not") != "not" else None)
            for lib in needed}


def desktop_entry(path):
    entry, group = {}, None
    for line in Path(path).read_text(encoding="utf-8").splitlines():
        if line.startswith("["):
            group = line.strip("[]")
        elif group == "Desktop Entry" and "=" in line and not line.startswith("#"):
            key, value = line.split("=", 1)
            entry[key.strip()] = value.strip()
    return entry


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", required=True, type=Path)
    ap.add_argument("--version", required=True)
    ap.add_argument("--probe", required=True, type=Path)
    args = ap.parse_args()

    for built in (args.build / "app/tkQuarv", args.build / "tools/export/tkquarv-export", args.probe):
        if not built.is_file():
            print(f"{built} is missing: build first (scripts/build)")
            return 1
    arch = run(["dpkg", "--print-architecture"]).stdout.strip()

    with tempfile.TemporaryDirectory(prefix="quarv-package-") as tmp:
        tmp = Path(tmp)
        r = run(["cpack", "--config", args.build / "CPackConfig.cmake", "-B", tmp / "out"])
        debs = sorted((tmp / "out").glob("*.deb"))
        if not check(r.returncode == 0 and len(debs) == 1, "cpack makes one Debian package", r.stdout + r.stderr):
            return 1
        deb = debs[0]
        check(deb.name == f"tkquarv_{args.version}_{arch}.deb", f"named tkquarv_{args.version}_{arch}.deb", deb.name)

        # Control fields.
        f = control_fields(deb)
        check((f.get("Package"), f.get("Version"), f.get("Architecture")) == ("tkquarv", args.version, arch),
              "package name, the project's version and the architecture", f)
        check(re.fullmatch(r"[^<>]+ <[^@\s<>]+@[^@\s<>]+>", f.get("Maintainer", "")) is not None,
              "a maintainer with an address", f.get("Maintainer"))
        desc = f.get("Description", "").split("\n")
        check(len(desc) > 2 and desc[0].strip() != "", "a summary and a long description", f.get("Description"))

        # Files, exactly these, where a desktop looks for them.
        root = tmp / "root"
        run(["dpkg-deb", "-x", deb, root])
        files = {str(p.relative_to(root)) for p in root.rglob("*") if not p.is_dir()}
        entry = desktop_entry(root / ENTRY) if (root / ENTRY).is_file() else {}
        icon = f"{ICON_DIR}/{entry.get('Icon', '?')}.svg"
        check(files == {DESKTOP_PROGRAM, EXPORTER, ENTRY, icon},
              "the two programs in usr/bin, the entry in usr/share/applications, its icon in hicolor/scalable",
              "\n".join(sorted(files)))
        exec_name = entry.get("Exec", "").split(" ")[0]
        check(f"usr/bin/{exec_name}" == DESKTOP_PROGRAM, "the entry starts the desktop program from PATH", exec_name)
        r = run(["desktop-file-validate", root / ENTRY])
        check(r.returncode == 0 and not (r.stdout + r.stderr).strip(), "desktop-file-validate accepts the entry",
              r.stdout + r.stderr)
        try:
            svg = ET.parse(root / icon).getroot()
            check(svg.tag == "{http://www.w3.org/2000/svg}svg" and "viewBox" in svg.attrib,
                  "the icon is an SVG drawing with a viewBox", svg.tag)
        except (ET.ParseError, OSError) as e:
            check(False, "the icon is an SVG drawing with a viewBox", e)

        # Every shared library resolves, and Depends is exactly the packages
        # that hold the libraries the programs link: nothing by hand, and no
        # database server (the books live elsewhere), only its client library.
        owners = set()
        for prog in (DESKTOP_PROGRAM, EXPORTER):
            r = run(["ldd", root / prog])
            missing = [line.strip() for line in r.stdout.splitlines() if "not found" in line]
            check(r.returncode == 0 and not missing, f"ldd resolves every library of {prog}", "\n".join(missing))
            libs = linked_packages(root / prog)
            check(None not in libs.values(), f"every library {prog} links belongs to a package", libs)
            owners |= {p for p in libs.values() if p}
        deps = depends_names(f.get("Depends", ""))
        check(deps == owners, "Depends names exactly the packages of the linked libraries",
              f"Depends: {f.get('Depends')}\nlinked from: {sorted(owners)}")
        check("libpq5" in deps and not any(re.fullmatch(r"postgresql(-\d+)?", d) for d in deps),
              "the PostgreSQL client library is a dependency, the server is not", sorted(deps))

        # Both programs start as installed, with an empty home and working folder.
        home, cwd, rundir = tmp / "home", tmp / "cwd", tmp / "run"
        for d in (home, cwd, rundir):
            d.mkdir(mode=0o700)
        env = {"PATH": f"{root}/usr/bin:/usr/bin:/bin", "HOME": str(home), "XDG_RUNTIME_DIR": str(rundir),
               "LANG": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen"}
        r = run(["tkquarv-export", "--list-reports"], env=env, cwd=cwd, timeout=60)
        check(r.returncode == 0 and re.search(r"^frmAnalizaRegistruJurnal\t", r.stdout, re.M) and not r.stderr,
              "tkquarv-export lists the reports", r.stdout + r.stderr)
        try:
            r = run(["tkQuarv"], env=dict(env, LD_PRELOAD=str(args.probe.resolve())), cwd=cwd, timeout=60)
            shown = r.stdout.splitlines()
            m = re.fullmatch(r"shown frmMenuQUARV (\d+)x(\d+)", shown[0]) if len(shown) == 1 else None
            check(m is not None and int(m[1]) > 0 and int(m[2]) > 0,
                  "tkQuarv starts offscreen showing its main menu, and only it", r.stdout)
            check(r.returncode == 0, "closing the main menu ends tkQuarv cleanly", f"exit code {r.returncode}")
            # The offscreen platform says this of every window with a fixed size.
            stderr = [line for line in r.stderr.splitlines()
                      if line != "This plugin does not support propagateSizeHints()"]
            check(not stderr, "tkQuarv writes nothing to standard error", "\n".join(stderr))
        except subprocess.TimeoutExpired:
            check(False, "tkQuarv starts and ends within 60 s")
        left = sorted(str(p.relative_to(tmp)) for d in (home, cwd) for p in d.rglob("*"))
        check(not left, "no file created in the home or working folder", "\n".join(left))

    print(f"{'all' if not failures else len(failures)} package checks " + ("passed" if not failures else "failed"))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
