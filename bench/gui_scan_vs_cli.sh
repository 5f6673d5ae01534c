#!/usr/bin/env bash
# Times the program's scan in its real window against the command line's scan of the
# same Wine prefix, on a generated tree that yields about 20,000 findings. Prints both
# and, last, `ratio N.NN` (program / command line). See README.md.
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)
cd "$repo"
bench=build/linux-release/bench/regvex_scan_bench
cli=build/windows/program/regvexlor-cli.exe
gui=build/windows/bench/regvex_gui_scan_bench.exe
runs=3

cmake --preset linux-release >/dev/null && cmake --build --preset linux-release --target regvex_scan_bench >/dev/null
cmake --preset windows >/dev/null && cmake --build --preset windows --target regvexlor-cli regvex_gui_scan_bench >/dev/null
source scripts/wine-env

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/regvex-gui-bench.XXXXXX")
export WINEPREFIX
start_xvfb
trap 'wineserver -k >/dev/null 2>&1 || true; kill $xvfb_pid 2>/dev/null || true; rm -rf "$WINEPREFIX"' EXIT
work="$WINEPREFIX/bench"
mkdir -p "$work"

echo "prefix      $WINEPREFIX (removed at exit)"
ensure_wine_prefix
# Inside a Wine desktop window, as scripts/screenshot shows the program: on a bare X
# server without a window manager Wine waits two seconds for the window manager when
# the program's window goes, which no user with a desktop ever sees.
wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d Bench /f >/dev/null 2>&1
wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Bench /d 1280x1000 /f >/dev/null 2>&1
"$bench" write-reg --keys 16000 --values 80000 --file-references 0.5 \
    --out "$work/tree.reg" --files "$WINEPREFIX/drive_c" | sed 's/^/generated   /'
wine regedit /s "Z:${work//\//\\}\\tree.reg" >/dev/null 2>&1
wineserver -w
# One server holds the registry for every timed run.
wineserver -p
wine cmd /c exit >/dev/null 2>&1 || true

seconds_of() {
    local start end
    start=$(date +%s%N)
    "$@" >"$work/out.txt" 2>"$work/err.txt"
    end=$(date +%s%N)
    awk -v ns=$((end - start)) 'BEGIN { printf "%.3f", ns / 1e9 }'
}
best_of() {
    local best="" t
    for _ in $(seq "$runs"); do
        t=$(seconds_of "$@")
        if [ -z "$best" ] || awk -v a="$t" -v b="$best" 'BEGIN { exit !(a < b) }'; then best=$t; fi
    done
    printf '%s' "$best"
}

cli_seconds=$(best_of wine "$cli" scan --drive C:)
cli_found=$(tr -d '\r' <"$work/err.txt" | grep -E 'errors found' | tail -1)
echo "command line $cli_seconds s (best of $runs), $cli_found"
gui_seconds=$(best_of wine "$gui")
echo "program     $gui_seconds s (best of $runs), $(tr -d '\r' <"$work/out.txt" | paste -sd, -)"
awk -v g="$gui_seconds" -v c="$cli_seconds" 'BEGIN { printf "ratio %.2f\n", g / c }'
