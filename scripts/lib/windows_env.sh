# Shared by scripts/windows and scripts/test: where the Windows libraries are
# cached and how their Debian sources are fetched. Needs $cache.

# Raised when a recipe (windows_qt.sh, windows_libs.sh) changes what it
# builds, so a cached build of the old recipe is not taken for the new one.
WIN_QT_RECIPE=1
WIN_LIBS_RECIPE=1

# A private apt configuration: its own source list, with a deb-src entry for
# each deb entry of the machine's Debian sources, and its own lists and cache,
# so the machine's apt state stays as it is. win_apt TOOL ARGS... runs
# apt-get or apt-cache with it.
win_apt() {
  local tool=$1
  shift
  "$tool" -o "Dir::Etc::sourcelist=$cache/apt/sources.list" -o Dir::Etc::sourceparts=- \
    -o "Dir::State::Lists=$cache/apt/lists" -o "Dir::Cache=$cache/apt/cache" \
    -o APT::Sandbox::User=root "$@"
}

win_apt_init() {
  mkdir -p "$cache/apt/lists/partial" "$cache/apt/cache/archives/partial" "$cache/src"
  python3 - "$cache/apt/sources.list" <<'PY'
import glob, re, sys
lines = []
for path in sorted(glob.glob("/etc/apt/sources.list.d/*.sources")):
    for stanza in re.split(r"\n\s*\n", open(path).read()):
        f = {}
        for line in stanza.splitlines():
            if line.startswith("#") or ":" not in line or line[0].isspace():
                continue
            k, v = line.split(":", 1)
            f[k.strip().lower()] = v.strip()
        if "deb" not in f.get("types", "").split() or f.get("enabled", "yes") == "no":
            continue
        key = f.get("signed-by", "/usr/share/keyrings/debian-archive-keyring.gpg")
        for uri in f.get("uris", "").split():
            for suite in f.get("suites", "").split():
                lines.append(f"deb-src [signed-by={key}] {uri} {suite} {f.get('components', 'main')}")
for path in ["/etc/apt/sources.list"] + sorted(glob.glob("/etc/apt/sources.list.d/*.list")):
    try:
        for line in open(path):
            if line.startswith("deb "):
                lines.append("deb-src " + line[4:].strip())
    except OSError:
        pass
if not lines:
    sys.exit("no Debian package source found in /etc/apt")
open(sys.argv[1], "w").write("\n".join(dict.fromkeys(lines)) + "\n")
PY
  win_apt apt-get update -qq
}

# The versions of source package $1 that the archive lists, newest first.
win_src_versions() {
  win_apt apt-cache showsrc "$1" 2>/dev/null | awk '/^Version:/ { print $2 }' | sort -Vru
}

# Source package $1 version $2, fetched and unpacked (Debian's patches
# applied) once into the cache; its folder.
win_src_dir() {
  local upstream=${2#*:}
  upstream=${upstream%-*}
  echo "$cache/src/${1}_$2/$1-$upstream"
}

win_src_unpack() {
  local pkg=$1 ver=$2 dir=$cache/src/${1}_$2
  if [ ! -f "$dir/.complete" ]; then
    rm -rf "$dir" && mkdir -p "$dir"
    (cd "$dir" && win_apt apt-get source -qq "$pkg=$ver" >/dev/null 2>&1) || { rm -rf "$dir"; return 1; }
    touch "$dir/.complete"
  fi
}

# The newest version of source package $1 that the archive also serves (a
# suite's list may name a version whose files its mirror does not carry),
# fetched and unpacked; prints the version.
win_src_get() {
  local v
  for v in $(win_src_versions "$1"); do
    if win_src_unpack "$1" "$v"; then
      echo "$v"
      return 0
    fi
    echo "windows: $1 $v is listed but cannot be fetched; trying an older one" >&2
  done
  echo "windows: FAILED: no version of the source package $1 could be fetched" >&2
  return 1
}

win_project_version() {
  sed -n 's/^project(tkQuarv VERSION \([0-9.]*\).*/\1/p' "$1/CMakeLists.txt"
}

# The libraries of the last scripts/windows into qt_prefix and libs_prefix;
# fails when they are not there or not complete.
win_cached() {
  [ -f "$cache/current" ] || return 1
  { read -r qt_prefix; read -r libs_prefix; } < "$cache/current"
  [ -f "$qt_prefix/.complete" ] && [ -f "$libs_prefix/.complete" ]
}
