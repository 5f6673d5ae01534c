#!/usr/bin/env bash
# Times our scan of each real hive against reglookup listing the same hive, in one run,
# and measures the peak memory of our scan against the hive's size. reglookup only reads
# and prints every key and value; the scan also renders and judges every reference to
# drive C: (an empty folder here, so each one is a finding). See README.md.
#
# usage: bench/hive_scan_vs_reglookup.sh [--hives DIR] [--runs N]
#   DIR holds the xz-compressed hives (default: $REGVEX_SHARED_HIVES, else ../shared/hives
#   beside the repository).
set -euo pipefail

repo=$(cd "$(dirname "$0")/.." && pwd)
hives=${REGVEX_SHARED_HIVES:-$repo/../shared/hives}
runs=3

while [ $# -gt 0 ]; do
    case "$1" in
        --hives) hives=$2 ;;
        --runs) runs=$2 ;;
        *) echo "usage: $0 [--hives DIR] [--runs N]" >&2; exit 2 ;;
    esac
    shift 2
done

for tool in reglookup xz cmake /usr/bin/time; do
    command -v "$tool" >/dev/null || { echo "$0: $tool is not installed (scripts/setup)" >&2; exit 2; }
done
if ! ls "$hives"/*.xz >/dev/null 2>&1; then
    echo "$0: no xz-compressed hives in $hives" >&2
    exit 2
fi

cmake --preset linux-release >/dev/null
cmake --build --preset linux-release --target regvexlor-cli >/dev/null
cli="$repo/build/linux-release/src/cli/regvexlor-cli"

work=$(mktemp -d "${TMPDIR:-/tmp}/regvex-hive-bench.XXXXXX")
trap 'rm -rf "$work"' EXIT
mkdir "$work/drive-c" "$work/hives"

# Our scan of one hive (or, given a folder, of the partition it is the root of), its
# output dropped.
source_of() {
    if [ -d "$1" ]; then
        source=(--windows "$1")
    else
        source=(--hive "HKLM\\HIVE=$1")
    fi
}
our_scan() {
    source_of "$1"
    "$cli" scan --drive C: "${source[@]}" --map C:="$work/drive-c" >/dev/null 2>&1
}
# reglookup lists hive files, so for a partition each of its hives in turn.
their_listing() {
    if [ -d "$1" ]; then
        for hive in "$1"/Windows/System32/config/*; do
            reglookup "$hive" >/dev/null 2>&1
        done
    else
        reglookup "$1" >/dev/null 2>&1
    fi
}

# Best wall-clock time of $runs runs of a command, in nanoseconds.
best_time() {
    local best=0 start elapsed
    for _ in $(seq "$runs"); do
        start=$(date +%s%N)
        "$@" || { echo "$0: $* failed" >&2; exit 1; }
        elapsed=$(( $(date +%s%N) - start ))
        if [ "$best" -eq 0 ] || [ "$elapsed" -lt "$best" ]; then
            best=$elapsed
        fi
    done
    echo "$best"
}

ms() { awk -v ns="$1" 'BEGIN { printf "%.1f", ns / 1e6 }'; }

printf '%-34s %9s %9s %10s %6s %9s %9s\n' hive "size KB" "scan ms" "reglookup" ratio "peak KB" "over KB"
ours_total=0
theirs_total=0
for packed in "$hives"/*.xz; do
    xz -dc "$packed" >"$work/hives/$(basename "$packed" .xz)"
done
# A partition as --windows reads it: the machine's hives that the shared ones offer.
mkdir -p "$work/partition/Windows/System32/config"
cp "$work/hives/regipy-SYSTEM" "$work/partition/Windows/System32/config/SYSTEM"
cp "$work/hives/hivex-minimal" "$work/partition/Windows/System32/config/DEFAULT"

for hive in "$work"/hives/* "$work/partition"; do
    name=$(basename "$hive")
    size_kb=$(( $(du -sb "$hive" | cut -f1) / 1024 ))
    ours=$(best_time our_scan "$hive")
    theirs=$(best_time their_listing "$hive")
    source_of "$hive"
    peak_kb=$(/usr/bin/time -f %M "$cli" scan --drive C: "${source[@]}" --map C:="$work/drive-c" \
        2>&1 >/dev/null | tail -1)
    ours_total=$(( ours_total + ours ))
    theirs_total=$(( theirs_total + theirs ))
    printf '%-34s %9d %9s %10s %6s %9d %9d\n' "$name" "$size_kb" "$(ms "$ours")" "$(ms "$theirs")" \
        "$(awk -v a="$ours" -v b="$theirs" 'BEGIN { printf "%.2f", a / b }')" "$peak_kb" \
        $(( peak_kb - size_kb ))
done
printf 'total: scan %s ms, reglookup %s ms\n' "$(ms "$ours_total")" "$(ms "$theirs_total")"
awk -v a="$ours_total" -v b="$theirs_total" 'BEGIN { printf "ratio %.2f\n", a / b }'
