#!/usr/bin/env python3
"""Gathers the Windows programs with every DLL they load into one folder and
makes the installer and the zip of that folder:
    build-win/deploy/tkQuarv/             the program's folder
    build-win/tkQuarv-setup-VERSION.exe   the installer (NSIS)
    build-win/tkQuarv-VERSION-win64.zip   the same folder, for machines where
                                          installers are not allowed
The DLLs are found by reading each binary's import table (objdump), so only
what is loaded goes in: Qt's, the platform and style plugins Qt loads at run
time, libpq with OpenSSL, libxlsxwriter, zlib and the MinGW runtime. Windows'
own DLLs are left to Windows."""

import argparse
import os
import re
import shutil
import subprocess
import sys
import zipfile
from pathlib import Path

TRIPLE = "x86_64-w64-mingw32"
PROGRAMS = {"tkQuarv.exe": "app", "tkquarv-export.exe": "tools/export"}
# Loaded by Qt at run time, not imported: without the platform plugin no
# window opens; the style plugin gives the native look.
PLUGINS = ["platforms/qwindows.dll", "styles/qwindowsvistastyle.dll"]


def imports(binary):
    out = subprocess.run([f"{TRIPLE}-objdump", "-p", str(binary)], check=True,
                         capture_output=True, text=True).stdout
    return re.findall(r"DLL Name: (\S+)", out)


# Windows' own DLLs, which the programs and their DLLs import and Windows
# provides; an import that is neither one of these nor found in the build
# stops the deployment rather than ship a folder that cannot start.
SYSTEM = {
    "advapi32.dll", "comdlg32.dll", "crypt32.dll", "d3d11.dll", "d3d12.dll", "d3d9.dll", "dwmapi.dll",
    "dwrite.dll", "dxgi.dll", "gdi32.dll", "imm32.dll", "kernel32.dll", "msvcrt.dll", "netapi32.dll",
    "ole32.dll", "oleaut32.dll", "opengl32.dll", "secur32.dll", "setupapi.dll", "shell32.dll", "shlwapi.dll",
    "user32.dll", "userenv.dll", "uxtheme.dll", "version.dll", "winmm.dll", "winspool.drv", "ws2_32.dll",
    "wtsapi32.dll", "mpr.dll", "authz.dll", "bcrypt.dll", "d2d1.dll", "dcomp.dll", "shcore.dll",
}


def runtime_dir(name):
    """The folder of the compiler's own runtime DLL `name`."""
    out = subprocess.run([f"{TRIPLE}-g++-posix", f"-print-file-name={name}"], check=True,
                         capture_output=True, text=True).stdout.strip()
    return Path(out).parent if os.path.isabs(out) else None


def search_dirs(qt, libs):
    gcc = [d for d in (runtime_dir("libstdc++-6.dll"), runtime_dir("libgcc_s_seh-1.dll")) if d]
    return [qt / "bin", libs / "bin", *gcc, Path(f"/usr/{TRIPLE}/lib"), Path(f"/usr/{TRIPLE}/bin")]


def find_dll(name, dirs):
    for d in dirs:
        for f in d.glob("*.dll") if d.is_dir() else []:
            if f.name.lower() == name.lower():
                return f
    return None


def gather(binaries, dirs):
    """Every DLL the binaries load, directly or through another DLL, that is
    not Windows' own."""
    found, todo = {}, list(binaries)
    while todo:
        for name in imports(todo.pop()):
            key = name.lower()
            if key in found:
                continue
            path = find_dll(name, dirs)
            if path is None:
                if key in SYSTEM or key.startswith("api-ms-win-"):
                    continue
                sys.exit(f"deploy: {name} is imported, but it is neither built here nor one of Windows' own DLLs")
            found[key] = path
            todo.append(path)
    return sorted(found.values(), key=lambda p: p.name.lower())


def strip(path):
    subprocess.run([f"{TRIPLE}-strip", "--strip-unneeded", str(path)], check=True)


def deploy(args):
    build, qt, libs = Path(args.build), Path(args.qt), Path(args.libs)
    folder = build / "deploy" / "tkQuarv"
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    placed = []
    for exe, sub in PROGRAMS.items():
        shutil.copy2(build / sub / exe, folder / exe)
        placed.append(folder / exe)
    for plugin in PLUGINS:
        src = qt / "plugins" / plugin
        if not src.exists():
            sys.exit(f"deploy: {src} is missing from the Qt build")
        (folder / plugin).parent.mkdir(parents=True, exist_ok=True)
        shutil.copy2(src, folder / plugin)
        placed.append(folder / plugin)
    for dll in gather(placed, search_dirs(qt, libs)):
        shutil.copy2(dll, folder / dll.name)
        placed.append(folder / dll.name)
    for f in placed:
        strip(f)
    return folder


def files_of(folder):
    """The deployed files, relative to the folder, in a stable order."""
    return sorted(p.relative_to(folder) for p in folder.rglob("*") if p.is_file())


def nsis_lists(folder, files, out):
    """The installer's own lists: what it writes and, in reverse, what its
    uninstaller removes (those files, then the folders once empty)."""
    win = lambda p: "$INSTDIR" if str(p) == "." else "$INSTDIR\\" + str(p).replace("/", "\\")
    with open(out / "install-files.nsh", "w") as f:
        for d in sorted({p.parent for p in files}):
            f.write(f'SetOutPath "{win(d)}"\n')
            for p in files:
                if p.parent == d:
                    f.write(f'File "/oname={p.name}" "{folder / p}"\n')
        f.write('SetOutPath "$INSTDIR"\n')
    # Every folder under the installation's, deepest first.
    dirs = sorted({a for p in files for a in p.parents if str(a) != "."}, key=lambda d: (-len(d.parts), str(d)))
    with open(out / "uninstall-files.nsh", "w") as f:
        for p in files:
            f.write(f'Delete "{win(p)}"\n')
        for d in dirs:
            f.write(f'RMDir "{win(d)}"\n')


def installer(args, folder, files, size):
    build = Path(args.build)
    nsis = build / "nsis"
    nsis.mkdir(exist_ok=True)
    nsis_lists(folder, files, nsis)
    out = build / f"tkQuarv-setup-{args.version}.exe"
    script = Path(args.source) / "packaging" / "windows" / "tkquarv.nsi"
    r = subprocess.run(["makensis", "-V2", "-NOCD",
                        f"-DVERSION={args.version}", f"-DOUTFILE={out}", f"-DLISTS={nsis}",
                        f"-DICON={build / 'tkquarv.ico'}", f"-DSIZE_KB={size // 1024}",
                        str(script)], capture_output=True, text=True)
    if r.returncode != 0:
        sys.exit("deploy: makensis failed\n" + r.stdout + r.stderr)
    return out


def archive(args, folder, files):
    out = Path(args.build) / f"tkQuarv-{args.version}-win64.zip"
    tmp = out.with_suffix(".zip.part")
    with zipfile.ZipFile(tmp, "w", zipfile.ZIP_DEFLATED, compresslevel=9) as z:
        for p in files:
            z.write(folder / p, Path("tkQuarv") / p)
    os.replace(tmp, out)
    return out


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--build", required=True)
    ap.add_argument("--qt", required=True)
    ap.add_argument("--libs", required=True)
    ap.add_argument("--version", required=True)
    ap.add_argument("--source", required=True)
    args = ap.parse_args()
    folder = deploy(args)
    files = files_of(folder)
    size = sum((folder / p).stat().st_size for p in files)
    setup = installer(args, folder, files, size)
    zipped = archive(args, folder, files)
    print(f"windows: {folder} ({size / 1e6:.1f} MB in {len(files)} files)")
    print(f"windows: {setup} ({setup.stat().st_size / 1e6:.1f} MB)")
    print(f"windows: {zipped} ({zipped.stat().st_size / 1e6:.1f} MB)")


if __name__ == "__main__":
    main()
