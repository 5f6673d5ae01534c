#!/usr/bin/env bash
# Fixing a Wine prefix from outside Wine, and restoring it, checked with Wine itself: a
# throwaway prefix gets values that name missing files, the native command line deletes
# them from the prefix's files, `wine reg query` must no longer see them, and after the
# restore it must see them again with the same data. On the way: the refusal while the
# prefix's wineserver runs and of a read-only file (each leaving the files as they were),
# and a fix ended after each of its steps (the files stay whole).
#
# usage: tests/wine/prefix_repair_round_trip.sh NATIVE_CLI
set -euo pipefail

if [ $# -ne 1 ]; then
    echo "usage: $0 NATIVE_CLI" >&2
    exit 2
fi
cli=$1
repo=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=scripts/wine-env
source "$repo/scripts/wine-env"

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/regvex-wine-repair.XXXXXX")
export WINEPREFIX
work=$(mktemp -d "${TMPDIR:-/tmp}/regvex-wine-repair-work.XXXXXX")
# shellcheck disable=SC2317 # run by the trap below
cleanup() {
    # KEEP=1 leaves the prefix and the work folder for a look.
    [ -z "${KEEP:-}" ] || return 0
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX" "$work"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

failed=0
fail() {
    echo "$0: $*" >&2
    failed=1
}

ensure_wine_prefix >/dev/null

# Values that name missing files, of each kind of data and with names that need escapes
# in Wine's files, in each of the prefix's three files; the classes are reached through
# HKEY_CLASSES_ROOT and HKEY_LOCAL_MACHINE\Software\Classes alike.
{
    printf 'Windows Registry Editor Version 5.00\n\n'
    printf '[HKEY_CURRENT_USER\\Software\\RvFix]\n'
    printf '"plain"="C:\\\\RvGone\\\\plain.exe"\n'
    printf '"back\\\\slash"="C:\\\\RvGone\\\\back.exe"\n'
    printf '"quote\\"d"="\\"C:\\\\RvGone\\\\quoted.exe\\" /arg"\n'
    printf '"Ärger 🌎"="C:\\\\RvGone\\\\ärger.dll"\n'
    printf '@="C:\\\\RvGone\\\\default.dll"\n'
    printf '"expand"=hex(2):43,00,3a,00,5c,00,52,00,76,00,47,00,6f,00,6e,00,65,00,5c,00,65,00,2e,00,65,00,78,00,65,00,00,00\n'
    printf '"multi"=hex(7):43,00,3a,00,5c,00,6d,00,2e,00,65,00,78,00,65,00,00,00,00,00\n'
    printf '"kept"="C:\\\\windows\\\\notepad.exe"\n\n'
    printf '[HKEY_CURRENT_USER\\Software\\RvFix\\Sub]\n"v"="C:\\\\RvGone\\\\sub.exe"\n\n'
    printf '[HKEY_LOCAL_MACHINE\\Software\\RvFix]\n"v"="C:\\\\RvGone\\\\machine.exe"\n'
    printf '"kept"="C:\\\\windows\\\\notepad.exe"\n\n'
    printf '[HKEY_LOCAL_MACHINE\\Software\\Classes\\RvFixClass]\n@="C:\\\\RvGone\\\\class.ocx"\n\n'
    printf '[HKEY_USERS\\.Default\\Software\\RvFix]\n"v"="C:\\\\RvGone\\\\default-user.exe"\n\n'
} | iconv -f UTF-8 -t UTF-16LE | { printf '\xff\xfe'; cat; } >"$work/values.reg"
wine regedit /s "Z:${work//\//\\}\\values.reg" >"$work/wine.log" 2>&1
# Wine writes its registry files when its server ends; only then are they settled.
wineserver -w

files=(system.reg user.reg userdef.reg)
save_files() {
    mkdir -p "$work/$1"
    for file in "${files[@]}"; do
        cp -p "$WINEPREFIX/$file" "$work/$1/$file"
    done
}
# The files' bytes and modification times, to show that a refusal touched nothing.
fingerprint() {
    for file in "${files[@]}"; do
        sha256sum "$WINEPREFIX/$file"
        stat -c '%n %.9Y' "$WINEPREFIX/$file"
    done
    find "$WINEPREFIX" -maxdepth 1 -name '*.regvexlor-*' | sort
}
# The export as UTF-8 logical lines: wrapped hex joined.
export_lines() {
    # 1 is allowed: a prefix that has run programs holds links to keys that Wine makes
    # afresh at each start, which no file holds.
    local status=0
    "$cli" export --wine-prefix "$WINEPREFIX" --out "$work/export.reg" 2>"$work/export.err" ||
        status=$?
    [ $status -le 1 ] || { cat "$work/export.err" >&2; return 1; }
    iconv -f UTF-16 -t UTF-8 "$work/export.reg" | tr -d '\r' | sed -e ':a' -e '/\\$/N; s/\\\n  //; ta'
}
# What Wine itself sees below the keys the values went to. Wine may write its registry
# back as it ends, so this is done before the files are saved or compared.
query_all() {
    for key in 'HKCU\Software\RvFix' 'HKLM\Software\RvFix' 'HKU\.Default\Software\RvFix'; do
        wine reg query "$key" /s 2>/dev/null | tr -d '\r' | grep -av '^$' || true
    done
    wineserver -w
}

fix=(fix --drive C: --wine-prefix "$WINEPREFIX")
backups=(--backups "$work/backups")

# Refusals: nothing written, no backup.
refused() {
    local why=$1 message=$2
    local before
    before=$(fingerprint)
    if "$cli" "${fix[@]}" "${backups[@]}" >/dev/null 2>"$work/err"; then
        fail "$why: the fix was not refused"
    elif ! grep -q "$message" "$work/err"; then
        fail "$why: the refusal does not say \"$message\": $(cat "$work/err")"
    fi
    [ "$(fingerprint)" = "$before" ] || fail "$why: the prefix's files changed"
    [ ! -e "$work/backups" ] || fail "$why: a backup was written"
}
wineserver -p
refused "wineserver running" "wineserver is running"
# The server writes the registry back as it ends: what it wrote is the prefix from here.
wineserver -k
wineserver -w
chmod a-w "$WINEPREFIX/user.reg"
refused "read-only file" "read-only"
chmod u+w "$WINEPREFIX/user.reg"

query_all >"$work/query-before"
save_files original
export_lines >"$work/before.lines"
# A fix ended after each of its steps leaves every file whole: the old one up to the
# rename, then the new one.
for step in written flushed verified linked renamed; do
    status=0
    REGVEX_STOP_AFTER=$step "$cli" "${fix[@]}" --backups "$work/stopped" >/dev/null \
        2>"$work/err" || status=$?
    [ $status -eq 86 ] || fail "stopped after $step: exit $status: $(cat "$work/err")"
    changed=0
    cmp -s "$WINEPREFIX/system.reg" "$work/original/system.reg" || changed=1
    [ $changed -eq "$([ "$step" = renamed ] && echo 1 || echo 0)" ] ||
        fail "stopped after $step: system.reg is $([ $changed -eq 1 ] || echo "not ")changed"
    "$cli" export --wine-prefix "$WINEPREFIX" --out "$work/stopped.reg" 2>"$work/err" ||
        [ $? -eq 1 ] || fail "stopped after $step: the prefix cannot be read"
    if grep -q 'warning' "$work/err"; then
        fail "stopped after $step: $(cat "$work/err")"
    fi
    for file in "${files[@]}"; do
        cp -p "$work/original/$file" "$WINEPREFIX/$file"
    done
    rm -rf "$WINEPREFIX"/*.regvexlor-* "$work/stopped"
done

"$cli" "${fix[@]}" --dry-run >"$work/planned" 2>"$work/err" ||
    fail "the dry run failed: $(cat "$work/err")"
planned=$(wc -l <"$work/planned")
# Each imported value that names a missing file, found through every root that reaches it.
if [ "$(grep -ac 'RvGone' "$work/planned")" -ne 16 ]; then
    fail "the dry run did not find the 16 findings of the values imported:"
    cat "$work/planned" >&2
fi
"$cli" "${fix[@]}" "${backups[@]}" >"$work/deleted" 2>"$work/err" ||
    fail "the fix failed: $(cat "$work/err")"
deleted=$(grep -c '^Deleted' "$work/deleted" || true)
grep -a 'changes written' "$work/err" | sed "s|$WINEPREFIX/||; s|(the file.*||; s|^|  |" >"$work/per-file"
[ "$deleted" -eq "$planned" ] || fail "$deleted values deleted, $planned planned"
# Only lines taken out, none added or changed.
for file in "${files[@]}"; do
    if diff "$work/original/$file" "$WINEPREFIX/$file" | grep -aq '^>'; then
        fail "$file: the fix added or changed lines"
    fi
done
export_lines >"$work/after.lines"
gone=$(comm -23 <(sort "$work/before.lines") <(sort "$work/after.lines") | grep -ac '=' || true)
added=$(comm -13 <(sort "$work/before.lines") <(sort "$work/after.lines") | wc -l)
[ "$added" -eq 0 ] || fail "the export after the fix has $added lines that were not there"
"$cli" backups "${backups[@]}" restore 1 --wine-prefix "$WINEPREFIX" >"$work/restored" \
    2>"$work/err" || fail "the restore failed: $(cat "$work/err")"
export_lines >"$work/restored.lines"
if ! diff -u "$work/before.lines" "$work/restored.lines" >"$work/diff"; then
    fail "the restored prefix differs from the one before the fix:"
    head -20 "$work/diff" >&2
fi

# Again, with Wine itself looking between the fix and the restore. Wine rewrites its
# files as it ends (a key left without values loses its section), and updates a few
# values of its own, so from here Wine's view is compared, not the export.
rm -rf "$work/backups"
"$cli" "${fix[@]}" "${backups[@]}" >/dev/null 2>"$work/err" ||
    fail "the second fix failed: $(cat "$work/err")"
query_all >"$work/query-after"
# REG_EXPAND_SZ data is not among what the scan checks, so that value stays.
if grep -av 'REG_EXPAND_SZ' "$work/query-after" | grep -aq 'RvGone' ||
    ! grep -q 'notepad' "$work/query-after"; then
    fail "Wine does not see the fix:"
    cat "$work/query-after" >&2
fi
"$cli" backups "${backups[@]}" restore 1 --wine-prefix "$WINEPREFIX" >/dev/null \
    2>"$work/err" || fail "the restore after Wine ran failed: $(cat "$work/err")"
query_all >"$work/query-restored"
if ! diff -u "$work/query-before" "$work/query-restored" >"$work/diff"; then
    fail "Wine does not see the values restored as they were:"
    head -20 "$work/diff" >&2
fi

if [ $failed -eq 0 ]; then
    echo "Wine prefix fixed from outside: $deleted findings deleted ($gone values of the" \
        "export), all restored as they were; Wine saw them gone and back; refusals and" \
        "stopped fixes left the files whole"
    cat "$work/per-file"
fi
exit $failed
