#!/usr/bin/env bash
# Times the Windows command line's whole-registry scan against Wine's own regedit
# exporting the whole registry, both on the same throwaway Wine prefix into which a
# generated registry was imported. The export reads every key and value once through the
# same registry server, so it is the floor a scan can be held to. See README.md.
#
# usage: bench/wine_scan_vs_export.sh [--bench FILE] [--cli FILE.exe] [--keys N]
#                                     [--values N] [--seed N] [--baseline FILE.exe]
#
# --baseline times a second command line (another build, say the one before a change)
# in the same run, on the same server, after the first.
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
bench="$repo/build/linux-release/bench/regvex_scan_bench"
cli="$repo/build/windows/program/regvexlor-cli.exe"
keys=20000
values=100000
seed=1
runs=3
baseline=

while [ $# -gt 0 ]; do
    case "$1" in
        --bench) bench=$2 ;;
        --cli) cli=$2 ;;
        --keys) keys=$2 ;;
        --values) values=$2 ;;
        --seed) seed=$2 ;;
        --baseline) baseline=$2 ;;
        *) echo "usage: $0 [--bench FILE] [--cli FILE.exe] [--keys N] [--values N] [--seed N]" \
                "[--baseline FILE.exe]" >&2
           exit 2 ;;
    esac
    shift 2
done

for tool in wine wineboot wineserver iconv; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is not installed" >&2; exit 2; }
done
if [ ! -x "$bench" ]; then
    echo "$0: no $bench; build it with" >&2
    echo "  cmake --preset linux-release && cmake --build --preset linux-release --target regvex_scan_bench" >&2
    exit 2
fi

# shellcheck source=bench/wine_bench_lib.sh
source "$(dirname "$0")/wine_bench_lib.sh"
start_bench_prefix regvex-wine-bench
import_generated_tree

# From here on one server holds the registry for every timed command, so that none of
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
echo "registry    $exported_keys keys in the export ($(du -h "$work/export.reg" | cut -f1))"
echo "export      $export_seconds s (best of $runs)"

if [ ! -f "$cli" ]; then
    echo "scan        not run: no $cli" >&2
    echo "  (build it with: cmake --build --preset windows --target regvexlor-cli)" >&2
    exit 3
fi
# Into a file, as the export writes one: under Wine, output to a character device such as
# the null device costs a console-mode request for every line.
scan_once() {
    wine "$scan_cli" scan --drive C: >"$work/scan.tsv" 2>"$work/scan.err" ||
        { cat "$work/scan.err" >>"$log"; return 1; }
}
scan_cli=$cli
scan_seconds=$(best_of scan_once)
found=$(tr '\r' '\n' <"$work/scan.err" | grep -E 'errors? found' | tail -1 || true)
echo "scan        $scan_seconds s (best of $runs)${found:+, $found}"
if [ -n "$baseline" ]; then
    scan_cli=$baseline
    baseline_seconds=$(best_of scan_once)
    found=$(tr '\r' '\n' <"$work/scan.err" | grep -E 'errors? found' | tail -1 || true)
    echo "baseline    $baseline_seconds s (best of $runs)${found:+, $found}"
    awk -v s="$baseline_seconds" -v e="$export_seconds" \
        'BEGIN { printf "baseline ratio %.2f\n", (e > 0 ? s / e : 0) }'
fi
awk -v s="$scan_seconds" -v e="$export_seconds" 'BEGIN { printf "ratio %.2f\n", (e > 0 ? s / e : 0) }'
