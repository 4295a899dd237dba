#!/usr/bin/env python3
"""The Windows installer as a Windows workstation gets it, run under Wine on a
private X server with a fresh Wine prefix in a temporary folder:
  - the silent install, its files, shortcuts and Add/Remove Programs entry;
  - the installed exporter lists the reports, and its exports against a
    private PostgreSQL server on loopback (the tests' own) are the files the
    Linux exporter writes for the same run (a PDF, set in Windows' fonts,
    reads back whole);
  - the installed program starts, shows its menu, and a sign-in typed into
    its login window succeeds and saves the profiles in the Documents folder
    Windows names;
  - the silent uninstall leaves nothing of the program behind and keeps the
    user's Documents.
Each failure names its step; the exit code is non-zero when any failed."""

import argparse
import os
import re
import select
import shutil
import subprocess
import sys
import tempfile
import time
import xml.etree.ElementTree as ET
import zipfile
from pathlib import Path

UNINSTALL_KEY = r"HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall\tkQuarv"
INSTALL_DIR = r"C:\Program Files\tkQuarv"
PASSWORD = "demo"

failures = []
passed = []


def check(ok, what, detail=""):
    print(("ok    " if ok else "FAIL  ") + what, flush=True)
    (passed if ok else failures).append(what)
    if not ok:
        if detail:
            print("      " + str(detail).rstrip().replace("\n", "\n      "), flush=True)
    return ok


def run(cmd, **kw):
    kw.setdefault("capture_output", True)
    return subprocess.run([str(c) for c in cmd], text=True, errors="replace", **kw)


class Wine:
    """wine64 with a prefix, a home and a display of its own."""

    def __init__(self, root, display):
        self.root = root
        self.prefix = root / "prefix"
        self.env = {
            "PATH": "/usr/lib/wine:/usr/bin:/bin",
            "HOME": str(root / "home"),
            "USER": "quarv",
            "WINEPREFIX": str(self.prefix),
            "WINEARCH": "win64",
            "WINEDEBUG": "-all",
            # No offer to install Mono or Gecko into the fresh prefix.
            "WINEDLLOVERRIDES": "mscoree,mshtml=",
            "DISPLAY": display,
            "LANG": "ro_RO.UTF-8",
        }
        (root / "home").mkdir()

    def run(self, *args, timeout=300, **kw):
        return run(["wine64", *args], env=self.env, timeout=timeout, **kw)

    def wait(self, timeout=300):
        return run(["wineserver", "-w"], env=self.env, timeout=timeout)

    def kill(self):
        run(["wineserver", "-k"], env=self.env, timeout=60)

    def path(self, windows_path):
        """The Unix path of a path on drive C:."""
        assert windows_path[:3].upper() == "C:\\"
        return self.prefix / "drive_c" / windows_path[3:].replace("\\", "/")

    def documents(self):
        """The Documents folder as the Windows shell names it."""
        r = self.run("cmd", "/c", "echo", "%USERPROFILE%", timeout=120)
        profile = r.stdout.strip().splitlines()[-1] if r.stdout.strip() else ""
        return self.path(profile + "\\Documents") if profile.upper().startswith("C:\\") else None


def start_xvfb():
    r_fd, w_fd = os.pipe()
    proc = subprocess.Popen(["Xvfb", "-displayfd", str(w_fd), "-screen", "0", "1280x1024x24", "-nolisten", "tcp"],
                            pass_fds=(w_fd,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(w_fd)
    with os.fdopen(r_fd) as f:
        ready, _, _ = select.select([f], [], [], 30)
        number = f.readline().strip() if ready else ""
    if not number:
        proc.kill()
        raise RuntimeError("Xvfb did not start")
    return proc, ":" + number


def xdo(display, *args, timeout=30):
    return run(["xdotool", *args], env={"DISPLAY": display, "PATH": "/usr/bin:/bin"}, timeout=timeout)


def wait_window(display, title, seconds=60):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        r = xdo(display, "search", "--onlyvisible", "--name", f"^{title}$")
        ids = r.stdout.split()
        if ids:
            return ids[0]
        time.sleep(0.5)
    return None


def window_gone(display, title, seconds=60):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        if not xdo(display, "search", "--onlyvisible", "--name", f"^{title}$").stdout.split():
            return True
        time.sleep(0.5)
    return False


def cells(path):
    """A workbook's cells: sheet, reference, type and value (shared strings
    resolved, numbers as numbers), and the style each cell names."""
    ns = {"m": "http://schemas.openxmlformats.org/spreadsheetml/2006/main"}
    out = {}
    with zipfile.ZipFile(path) as z:
        strings = []
        if "xl/sharedStrings.xml" in z.namelist():
            for si in ET.fromstring(z.read("xl/sharedStrings.xml")).findall("m:si", ns):
                strings.append("".join(t.text or "" for t in si.iter(f"{{{ns['m']}}}t")))
        for name in sorted(n for n in z.namelist() if re.fullmatch(r"xl/worksheets/sheet\d+\.xml", n)):
            for c in ET.fromstring(z.read(name)).iter(f"{{{ns['m']}}}c"):
                v = c.find("m:v", ns)
                t = c.get("t", "n")
                value = v.text if v is not None else None
                if t == "s" and value is not None:
                    value = strings[int(value)]
                elif t == "n" and value is not None:
                    value = float(value)
                out[(name, c.get("r"))] = (t, value, c.get("s"))
        styles = z.read("xl/styles.xml")
    return out, styles


def load_demo(pgdir, port, source):
    """A database with the demo books and the demo issuer, from the tests'
    template."""
    psql = ["psql", "-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", pgdir, "-p", port, "-U", "postgres"]
    runner = ["runuser", "-u", "postgres", "--"] if os.getuid() == 0 else []
    r = run(runner + psql + ["-d", "postgres", "-c", "create database quarv_win owner quarv template quarv_tmpl"])
    if r.returncode != 0:
        return r.stderr
    user = ["psql", "-X", "-q", "-v", "ON_ERROR_STOP=1", "-h", "127.0.0.1", "-p", port, "-U", "quarv", "-d", "quarv_win"]
    env = dict(os.environ, PGPASSWORD="kadrim")
    for sql in (["-f", source / "demo" / "data.sql"], ["-c", "select demo_generate(1)"],
                ["-c", "insert into emitent (emitent, den_emitent, operator_parola, loc, companie_emitenta) "
                       "values ('DEMO', 'Operator demonstrativ', 'demo', '01.01', 'Brutaria Quarv Demo SRL') "
                       "on conflict (emitent) do update set operator_parola = excluded.operator_parola"]):
        r = run(user + sql, env=env)
        if r.returncode != 0:
            return r.stderr
    return None


def export_args(port, report, dates, fmt, output):
    return ["--host", "127.0.0.1", "--port", port, "--database", "quarv_win", "--issuer", "DEMO",
            "--report", report, "--from", dates[0], "--to", dates[1], "--format", fmt, "--separator", ";",
            "--output", output, "--password-stdin", "--quiet"]


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument("--source", required=True, type=Path)
    ap.add_argument("--linux-build", required=True, type=Path)
    ap.add_argument("--build", required=True, type=Path)
    ap.add_argument("--version", required=True)
    args = ap.parse_args()

    setup = args.build / f"tkQuarv-setup-{args.version}.exe"
    linux_export = args.linux_build / "tools/export/tkquarv-export"
    pgtestctl = args.linux_build / "tests/pgtestctl"
    for f in (setup, linux_export, pgtestctl):
        if not f.is_file():
            print(f"windows check: {f} is missing (scripts/windows makes the installer, scripts/build the rest)")
            return 1

    tmp = Path(tempfile.mkdtemp(prefix="quarv-wine-"))
    os.chmod(tmp, 0o755)  # the server runs as postgres and keeps its socket here
    xvfb, display = start_xvfb()
    wine = Wine(tmp, display)
    pgdir = tmp / "pg"
    try:
        start = time.monotonic()
        r = wine.run("wineboot", "-i", timeout=300)
        wine.wait()
        check(r.returncode == 0 and wine.prefix.is_dir(), "a fresh Wine prefix",
              r.stdout + r.stderr)
        print(f"      (prepared in {time.monotonic() - start:.1f} s)")

        # The installer, silent, as an administrator would run it.
        r = wine.run(setup, "/S", timeout=600)
        wine.wait()
        installed = wine.path(INSTALL_DIR)
        check(r.returncode == 0 and (installed / "tkQuarv.exe").is_file()
              and (installed / "tkquarv-export.exe").is_file() and (installed / "uninstall.exe").is_file()
              and (installed / "platforms/qwindows.dll").is_file(),
              "the silent installer puts both programs, the platform plugin and the uninstaller in Program Files",
              r.stdout + r.stderr + "\n".join(sorted(str(p.relative_to(installed)) for p in installed.rglob("*")))
              if installed.exists() else "no folder " + INSTALL_DIR)
        r = wine.run("reg", "query", UNINSTALL_KEY, timeout=120)
        check(r.returncode == 0 and re.search(r"DisplayName\s+REG_SZ\s+tkQuarv", r.stdout)
              and re.search(r"UninstallString\s+REG_SZ\s+\"C:\\Program Files\\tkQuarv\\uninstall.exe\"", r.stdout)
              and re.search(rf"DisplayVersion\s+REG_SZ\s+{re.escape(args.version)}", r.stdout),
              "the uninstall entry of Add/Remove Programs", r.stdout + r.stderr)
        shortcuts = [p for p in (wine.prefix / "drive_c").rglob("tkQuarv.lnk")]
        check(any("Desktop" in str(p) for p in shortcuts) and any("Start Menu" in str(p) for p in shortcuts),
              "a desktop shortcut and a Start-menu entry", "\n".join(map(str, shortcuts)))
        # Installed again over itself: the earlier installation's uninstaller
        # clears the way and the same files are back.
        before = sorted(str(p.relative_to(installed)) for p in installed.rglob("*"))
        r = wine.run(setup, "/S", timeout=600)
        wine.wait()
        after = sorted(str(p.relative_to(installed)) for p in installed.rglob("*")) if installed.exists() else []
        check(r.returncode == 0 and after == before, "installed again over itself, the same files",
              "\n".join(sorted(set(before) ^ set(after))))

        exporter = INSTALL_DIR + "\\tkquarv-export.exe"
        r = wine.run(exporter, "--list-reports", timeout=120)
        linux = run([linux_export, "--list-reports"])
        reports = re.findall(r"^(frm\w+)\t", r.stdout, re.M)
        check(r.returncode == 0 and len(reports) == 8 and r.stdout.replace("\r\n", "\n") == linux.stdout,
              "the installed exporter lists the eight reports, as on Linux", r.stdout + r.stderr)

        # The same exports from the same server by both exporters.
        pgdir.mkdir()
        if os.getuid() == 0:
            shutil.chown(pgdir, "postgres", "postgres")
        r = run([pgtestctl, "start", pgdir], timeout=300)
        port = (pgdir / "port").read_text().strip() if (pgdir / "port").is_file() else ""
        if not check(r.returncode == 0 and port, "a private PostgreSQL server", r.stdout + r.stderr):
            return 1
        error = load_demo(str(pgdir), port, args.source)
        if not check(error is None, "the demo books loaded", error):
            return 1
        out = tmp / "out"
        out.mkdir()
        runs = [("frmAnalizaRegistruJurnal", ("01.10.2026", "31.10.2026"), "csv-all", "registru.csv"),
                ("frmVerifDecontTurism", ("2026-11-01", "2026-11-30"), "xlsx", "decont.xlsx"),
                ("frmVerifDecontTurism", ("2026-11-01", "2026-11-30"), "pdf", "decont.pdf")]
        for report, dates, fmt, name in runs:
            lin, win = out / ("linux-" + name), out / ("windows-" + name)
            a = run([linux_export, *export_args(port, report, dates, fmt, lin)], input=PASSWORD + "\n", timeout=300)
            b = wine.run(exporter, *export_args(port, report, dates, fmt, win), input=PASSWORD + "\n", timeout=300)
            if not check(a.returncode == 0 and b.returncode == 0 and lin.is_file() and win.is_file(),
                         f"both exporters write the {fmt} of {report}",
                         f"linux: {a.returncode} {a.stderr}\nwindows: {b.returncode} {b.stderr}"):
                continue
            if fmt == "xlsx":
                (lc, ls), (wc, ws) = cells(lin), cells(win)
                diff = sorted(k for k in set(lc) | set(wc) if lc.get(k) != wc.get(k))[:5]
                check(lc == wc and ls == ws and len(lc) > 10,
                      f"the Windows workbook of {report} has the Linux one's cells and styles ({len(lc)} cells)",
                      "\n".join(f"{k}: linux {lc.get(k)} windows {wc.get(k)}" for k in diff))
            elif fmt == "pdf":
                # Windows sets the text in its own fonts, so the lines may
                # break elsewhere; the pages must still be whole, numbered,
                # and their text real text in fonts the file carries.
                pages = re.search(r"Pages:\s+(\d+)", run(["pdfinfo", win]).stdout)
                first = run(["pdftotext", "-l", "1", "-enc", "UTF-8", win, "-"]).stdout
                fonts = run(["pdffonts", win]).stdout.splitlines()[2:]
                check(pages is not None and f"Pagina 1 din {pages.group(1)}" in first and "Emitent: DEMO" in first
                      and fonts and all(re.search(r"yes\s+yes\s+yes", f) for f in fonts),
                      f"the Windows PDF of {report} reads back: numbered pages, its fonts embedded with their text",
                      first[:600] + "\n".join(fonts))
            else:
                same = lin.read_bytes() == win.read_bytes()
                check(same and lin.stat().st_size > 1000,
                      f"the Windows {fmt} of {report} is the Linux file byte for byte ({lin.stat().st_size} bytes)",
                      "" if same else f"sizes {lin.stat().st_size} and {win.stat().st_size}")

        # The desktop program: its menu, the login window, a sign-in.
        started = time.monotonic()
        program = subprocess.Popen(["wine64", INSTALL_DIR + "\\tkQuarv.exe"], env=wine.env,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        menu = wait_window(display, "frmMenuQUARV", 120)
        check(menu is not None, "the installed program shows its main window frmMenuQUARV")
        if menu:
            print(f"      (shown {time.monotonic() - started:.1f} s after the start)")
            time.sleep(1)
            # "LogIn": the first button at the window's top left.
            xdo(display, "mousemove", "--window", menu, "30", "20", "click", "1")
            login = wait_window(display, "frmLogin", 60)
            check(login is not None, '"LogIn" opens the login window frmLogin')
            if login:
                time.sleep(1)
                xdo(display, "windowfocus", "--sync", login)
                # The password has the focus; the profile's fields are before it.
                xdo(display, "key", "--delay", "100", "shift+Tab", "shift+Tab", "shift+Tab", "shift+Tab")
                for i, text in enumerate(("127.0.0.1", port, "quarv_win", "DEMO", PASSWORD)):
                    if i:
                        xdo(display, "key", "Tab")
                    xdo(display, "type", "--delay", "50", text)
                xdo(display, "key", "Return")
                check(window_gone(display, "frmLogin", 60), "the sign-in succeeds and closes the login window")
                docs = wine.documents()
                saved = docs / "conectareQUARV.xml" if docs else None
                end = time.monotonic() + 20
                while saved and not saved.is_file() and time.monotonic() < end:
                    time.sleep(0.5)
                text = saved.read_text(encoding="utf-8", errors="replace") if saved and saved.is_file() else ""
                check(bool(text) and "quarv_win" in text and port in text and "DEMO" in text
                      and PASSWORD not in text,
                      "conectareQUARV.xml lands in the Documents folder Windows names, with the profile and no password",
                      f"{saved}: {text[:300]}" if saved else "the shell names no Documents folder")
        program.terminate()
        wine.kill()

        # The uninstaller, silent; it copies itself away and runs from there.
        r = wine.run(INSTALL_DIR + "\\uninstall.exe", "/S", timeout=300)
        wine.wait()
        left = sorted(str(p) for p in installed.rglob("*")) if installed.exists() else []
        check(not installed.exists(), "the silent uninstaller leaves no file of the program behind", "\n".join(left))
        check(not [p for p in (wine.prefix / "drive_c").rglob("tkQuarv.lnk")], "and no shortcut")
        r = wine.run("reg", "query", UNINSTALL_KEY, timeout=120)
        parent = wine.run("reg", "query", UNINSTALL_KEY.rsplit("\\", 1)[0], timeout=120)
        check(r.returncode != 0 and parent.returncode == 0, "and no uninstall entry", r.stdout + parent.stderr)
        docs = wine.documents()
        check(docs is not None and (docs / "conectareQUARV.xml").is_file(), "the user's Documents are kept")
    except subprocess.TimeoutExpired as e:
        check(False, "a step finished in time", f"{e.cmd} ran over {e.timeout} s")
    finally:
        for cleanup in (wine.kill, lambda: (pgdir / "port").is_file() and run([pgtestctl, "stop", pgdir], timeout=120),
                        xvfb.kill):
            try:
                cleanup()
            except (OSError, subprocess.SubprocessError) as e:
                print(f"windows check: cleaning up: {e}")
        if not failures:
            shutil.rmtree(tmp, ignore_errors=True)
        else:
            print(f"windows check: what it left is in {tmp}")

    if failures:
        print("windows check: failed: " + "; ".join(failures))
    print(f"windows: {len(passed)} passed, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
