#!/usr/bin/env bash
# Tries a release zip as a user would: unpacks it into drive C: of a fresh Wine prefix
# (nothing of the build tree in reach), runs the command line from there and then the
# program, and saves screenshots of the program and its About box (to SHOTS, default
# build/screenshots). Checks that both executables name the zip's version: in their
# version resources, in `--version` and in the window caption. Last, the whole
# screenshot tour (scripts/screenshot) runs the zip's program in a prefix of its own:
# both Repair items, Fix, the backups page and the other windows.
#
# usage: package_runs_unpacked.sh dist/RegistryVexlor-VERSION-win64.zip [SHOTS]
set -euo pipefail
cd "$(dirname "$0")/../.."
repo=$PWD
source scripts/wine-env

zip=$(realpath "$1")
shots=$(realpath -m "${2:-build/screenshots}")
mkdir -p "$shots"
name=$(basename "$zip" .zip)                # RegistryVexlor-1.2.3-win64
version=${name#RegistryVexlor-}
version=${version%-*}                       # 1.2.3
caption="Registry Vexlor ${version%.*}"     # the caption names major and minor

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/regvexlor-unpacked.XXXXXX")
export WINEPREFIX
xvfb_pid=
trap 'wineserver -k 2>/dev/null || true; [ -z "$xvfb_pid" ] || kill "$xvfb_pid" 2>/dev/null || true; rm -rf "$WINEPREFIX"' EXIT
ensure_wine_prefix

unzip -q "$zip" -d "$WINEPREFIX/drive_c"
folder="$WINEPREFIX/drive_c/$name"
[ -d "$folder" ] || fail "the zip holds no folder $name"
cd "$folder"

# The version resources, as Explorer's Properties page shows them.
for exe in regvexlor.exe regvexlor-cli.exe; do
    python3 - "$exe" "$version" <<'EOF' || fail "$exe: no FileVersion $version in its version resource"
import re, sys
data = open(sys.argv[1], "rb").read()
key = "FileVersion\0".encode("utf-16le")
value = (sys.argv[2] + "\0").encode("utf-16le")
sys.exit(0 if re.search(re.escape(key) + b"(\0\0)*" + re.escape(value), data) else 1)
EOF
done

# The command line, started from its own folder.
said=$(wine "C:\\$name\\regvexlor-cli.exe" --version | tr -d '\r')
[ "$said" = "Registry Vexlor $version" ] || fail "--version said \"$said\""
wine "C:\\$name\\regvexlor-cli.exe" scan --drive C: >scan.out 2>scan.err ||
    fail "scan exited with $?: $(cat scan.err)"
grep -q "errors found" scan.err || fail "scan gave no count: $(cat scan.err)"
echo "regvexlor-cli.exe runs from C:\\$name: $said; $(tr -d '\r' <scan.err | tail -1)"

# The program, in a Wine desktop of a fixed size so that the frames are drawn.
if [ -z "${DISPLAY:-}" ]; then
    start_xvfb
fi
wine explorer /desktop=Unpacked,1024x768 "C:\\$name\\regvexlor.exe" >/dev/null 2>&1 &
main=
for _ in $(seq 60); do
    main=$(xdotool search --name "^$caption\$" 2>/dev/null | head -1) || true
    [ -n "$main" ] && break
    sleep 0.5
done
[ -n "$main" ] || fail "no window \"$caption\" appeared"
sleep 2
import -window root "$shots/package-main-window.png"

# Help > About: the box names the version and the licence.
xdotool windowfocus --sync "$main" 2>/dev/null || true
for key in alt+h a; do
    xdotool key "$key"
    sleep 0.4
done
about=
for _ in $(seq 20); do
    about=$(xdotool search --name '^About Registry Vexlor$' 2>/dev/null | head -1) || true
    [ -n "$about" ] && break
    sleep 0.5
done
[ -n "$about" ] || fail "Help > About showed no About box"
sleep 1
import -window root "$shots/package-about-box.png"
echo "regvexlor.exe runs from C:\\$name; screenshots: $shots/package-main-window.png," \
    "$shots/package-about-box.png"

wineserver -k 2>/dev/null || true
cd "$repo"
scripts/screenshot "$zip"
