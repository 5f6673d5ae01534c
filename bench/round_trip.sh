#!/usr/bin/env bash
# Fix and restore under Wine with the real Registry Editor: writes a tree of string
# values with hard texts (quotes, backslashes, characters beyond ASCII, default values,
# long paths) into a throwaway prefix, lets the command line fix every finding below it
# (one backup of Western texts, "REGEDIT4", and one beyond them, Unicode), restores both
# backups with `regedit /s`, and compares every value with what it was.
# Usage: bench/round_trip.sh [VALUES]   (default 1200)
set -euo pipefail
repo=$(cd "$(dirname "$0")/.." && pwd)
cd "$repo"
values=${1:-1200}
cmake --preset windows >/dev/null
cmake --build --preset windows --target regvexlor-cli regvex_round_trip_tool >/dev/null
source scripts/wine-env

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/regvex-round-trip.XXXXXX")
export WINEPREFIX
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$WINEPREFIX"' EXIT
ensure_wine_prefix
# A program folder of its own, so that its RegBackups holds only this run's backups.
program="$WINEPREFIX/drive_c/vexlor"
mkdir -p "$program"
cp build/windows/program/regvexlor-cli.exe "$program/"
cli="$program/regvexlor-cli.exe"
tool=build/windows/bench/regvex_round_trip_tool.exe
work="$WINEPREFIX/work"
mkdir -p "$work"

wine "$tool" make "$values" | tr -d '\r'
echo "before      $(wine "$tool" snapshot "Z:${work//\//\\}\\before.txt" | tr -d '\r')"
found=0
for part in Ansi Unicode; do
    wine "$cli" fix --drive C: --only "Vexlor Round Trip\\$part\\" >"$work/fixed-$part.txt" \
        2>"$work/fix-$part.err"
    # Wine shows HKEY_CURRENT_USER again below HKEY_USERS; the scan finds each value
    # through both, and both rows are backed up and deleted.
    n=$(grep -c $'^Deleted\tHKEY_CURRENT_USER\t' "$work/fixed-$part.txt" || true)
    found=$((found + n))
    echo "fixed       $n values below $part: $(tr -d '\r' <"$work/fix-$part.err" | tail -1)"
    # Backups are named to the second.
    sleep 1.1
done
echo "after fix   $(wine "$tool" snapshot "Z:${work//\//\\}\\fixed.txt" | tr -d '\r') left"
wine "$cli" backups | tr -d '\r' | sed 's/^/backup      /'
wine "$cli" backups restore 1 | tr -d '\r' | sed 's/^/            /'
wine "$cli" backups restore 2 | tr -d '\r' | sed 's/^/            /'
wineserver -w
echo "restored    $(wine "$tool" snapshot "Z:${work//\//\\}\\after.txt" | tr -d '\r')"

total=$(wc -l <"$work/before.txt")
exact=$(comm -12 <(sort "$work/before.txt") <(sort "$work/after.txt") | wc -l)
if ! cmp -s "$work/before.txt" "$work/after.txt"; then
    echo "differences (before < > after):"
    diff "$work/before.txt" "$work/after.txt" | head -20 || true
fi
echo "findings    $found values of HKEY_CURRENT_USER"
echo "exact       $exact of $total values as before"
