#!/usr/bin/env bash
# Times the native command line's scan of a Wine prefix read from its files
# (`regvexlor-cli scan --drive C: --wine-prefix DIR`) against Wine's own regedit exporting
# the whole registry of the same prefix, into which a generated registry was imported.
# The export only reads and prints through a registry server that already holds the
# registry; the offline scan reads the files, walks every key and checks every
# reference. See README.md.
#
# usage: bench/wine_prefix_scan_vs_export.sh [--cli FILE] [--bench FILE] [--keys N]
#                                            [--values N] [--seed N]
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
cli="$repo/build/linux-release/src/cli/regvexlor-cli"
bench="$repo/build/linux-release/bench/regvex_scan_bench"
keys=20000
values=100000
seed=1
runs=3

while [ $# -gt 0 ]; do
    case "$1" in
        --cli) cli=$2 ;;
        --bench) bench=$2 ;;
        --keys) keys=$2 ;;
        --values) values=$2 ;;
        --seed) seed=$2 ;;
        *) echo "usage: $0 [--cli FILE] [--bench FILE] [--keys N] [--values N] [--seed N]" >&2
           exit 2 ;;
    esac
    shift 2
done

for tool in wine wineboot wineserver iconv; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is not installed" >&2; exit 2; }
done
for program in "$cli" "$bench"; do
    if [ ! -x "$program" ]; then
        echo "$0: no $program; build it with" >&2
        echo "  cmake --preset linux-release && cmake --build --preset linux-release --target regvexlor-cli regvex_scan_bench" >&2
        exit 2
    fi
done

# shellcheck source=bench/wine_bench_lib.sh
source "$(dirname "$0")/wine_bench_lib.sh"
start_bench_prefix regvex-wine-prefix-bench
import_generated_tree
echo "files       $(du -ch "$WINEPREFIX"/*.reg | tail -1 | cut -f1) in system.reg, user.reg and userdef.reg"

# First the offline scan, with no server running that could write the files meanwhile.
scan_once() {
    "$cli" scan --drive C: --wine-prefix "$WINEPREFIX" >/dev/null 2>"$work/scan.err" ||
        { cat "$work/scan.err" >>"$log"; return 1; }
}
scan_seconds=$(best_of scan_once)
found=$(grep -E 'errors? found' "$work/scan.err" | tail -1 || true)
echo "scan        $scan_seconds s (best of $runs)${found:+, $found}"

# Then the export, with one server holding the registry for every run, so that none of
# them pays for loading it.
wineserver -p
wine cmd /c exit >>"$log" 2>&1 || true
export_once() {
    rm -f "$work/export.reg"
    wine regedit /e "$(windows_path "$work/export.reg")" >>"$log" 2>&1
}
export_seconds=$(best_of export_once)
if [ ! -s "$work/export.reg" ]; then
    echo "$0: regedit /e wrote nothing; see the log:" >&2
    tail -20 "$log" >&2
    exit 1
fi
exported_keys=$(iconv -f UTF-16LE -t UTF-8 "$work/export.reg" | grep -c '^\[' || true)
echo "export      $export_seconds s (best of $runs), $exported_keys keys ($(du -h "$work/export.reg" | cut -f1))"
awk -v s="$scan_seconds" -v e="$export_seconds" 'BEGIN { printf "ratio %.2f\n", (e > 0 ? s / e : 0) }'
