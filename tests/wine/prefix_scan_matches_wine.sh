#!/usr/bin/env bash
# The offline reading of a Wine prefix against Wine itself: a throwaway prefix gets a
# generated registry and a set of awkward keys and values imported with regedit, then
# the Windows command line scans it inside Wine and the native one reads its files. Both
# must print exactly the same findings, in the same order, and the same counts.
#
# usage: tests/wine/prefix_scan_matches_wine.sh NATIVE_CLI WINDOWS_CLI.exe GENERATOR
#   GENERATOR is regvex_scan_bench (its write-reg command makes the registry).
set -euo pipefail

if [ $# -ne 3 ]; then
    echo "usage: $0 NATIVE_CLI WINDOWS_CLI.exe GENERATOR" >&2
    exit 2
fi
native=$1
windows=$2
generator=$3
repo=$(cd "$(dirname "$0")/../.." && pwd)
# shellcheck source=scripts/wine-env
source "$repo/scripts/wine-env"

WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/regvex-wine-offline.XXXXXX")
export WINEPREFIX
work="$WINEPREFIX/regvex-test"
# shellcheck disable=SC2317 # run by the trap below
cleanup() {
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
}
trap cleanup EXIT
trap 'exit 130' INT TERM
mkdir -p "$work"

windows_path() {
    printf 'Z:%s' "${1//\//\\}"
}

ensure_wine_prefix >/dev/null

"$generator" write-reg --keys 4000 --values 20000 --seed 11 \
    --out "$work/generated.reg" --files "$WINEPREFIX/drive_c" >/dev/null

# What the generator does not make: names that Wine and Windows order differently, names
# and data that need escapes in Wine's files, the places HKEY_CLASSES_ROOT and
# HKEY_CURRENT_CONFIG come from, and data and names too long for the scan's buffers.
long_data=$(printf 'x%.0s' $(seq 4090))
long_name=$(printf 'n%.0s' $(seq 300))
{
    printf 'Windows Registry Editor Version 5.00\n\n'
    for key in '_under' '[bracket]' 'Zeta' 'alpha' 'a^b' '~tilde' 'Ärger' 'éclair' '日本' '🌎x' \
        'MiXeD' 'mixed2'; do
        printf '[HKEY_CURRENT_USER\\Software\\RvOdd\\%s]\n"v"="C:\\\\RvGone\\\\%s.exe"\n\n' \
            "$key" "$key"
    done
    printf '[HKEY_CURRENT_USER\\Software\\RvOdd\\Values]\n'
    for name in 'b' '_v' 'A' 'a1' '[x]' 'quote\"d' 'back\\\\slash' 'é' '🌎' 'tab	in'; do
        printf '"%s"="C:\\\\RvGone\\\\value.exe"\n' "$name"
    done
    printf '@="C:\\\\RvGone\\\\default.dll"\n'
    printf '"exists"="C:\\\\windows\\\\notepad.exe"\n'
    printf '"expand"=hex(2):43,00,3a,00,5c,00,52,00,76,00,2e,00,65,00,78,00,65,00,00,00\n'
    printf '"multi"=hex(7):43,00,3a,00,5c,00,6d,00,2e,00,65,00,78,00,65,00,00,00,43,00,3a,00,5c,00,6e,00,2e,00,65,00,78,00,65,00,00,00,00,00\n'
    printf '"line"=hex(1):43,00,3a,00,5c,00,61,00,0a,00,62,00,2e,00,65,00,78,00,65,00,00,00\n'
    printf '"nearly too long"="%sC:\\\\RvGone\\\\long.exe"\n\n' "${long_data:0:4000}"
    printf '[HKEY_CURRENT_USER\\Software\\RvOdd\\TooLong]\n"a"="C:\\\\RvGone\\\\before.exe"\n'
    printf '"b"="%s"\n"c"="C:\\\\RvGone\\\\hidden.exe"\n\n' "$long_data"
    printf '[HKEY_CURRENT_USER\\Software\\RvOdd\\LongName]\n"a"="C:\\\\RvGone\\\\before.exe"\n'
    printf '"%s"="C:\\\\RvGone\\\\named.exe"\n"z"="C:\\\\RvGone\\\\hidden.exe"\n\n' "$long_name"
    printf '[HKEY_LOCAL_MACHINE\\Software\\Classes\\RvMachineClass]\n@="C:\\\\RvGone\\\\m.ocx"\n\n'
    printf '[HKEY_CURRENT_USER\\Software\\Classes\\RvUserClass]\n@="C:\\\\RvGone\\\\u.ocx"\n\n'
    printf '[HKEY_CURRENT_CONFIG\\Software\\RvConfig]\n"v"="C:\\\\RvGone\\\\cc.sys"\n\n'
    printf '[HKEY_USERS\\.Default\\Software\\RvDefault]\n"v"="C:\\\\RvGone\\\\d.exe"\n\n'
    printf '[HKEY_LOCAL_MACHINE\\Software\\Wow6432Node\\RvWow]\n"v"="C:\\\\RvGone\\\\w.exe"\n\n'
    # Values of the files' own root keys, which Wine writes under "[]".
    printf '[HKEY_USERS\\.Default]\n"RvRoot"="C:\\\\RvGone\\\\r.exe"\n\n'
    printf '[HKEY_CURRENT_USER]\n"RvRoot"="C:\\\\RvGone\\\\r.exe"\n\n'
} | iconv -f UTF-8 -t UTF-16LE | { printf '\xff\xfe'; cat; } >"$work/odd.reg"

for file in generated.reg odd.reg; do
    wine regedit /s "$(windows_path "$work/$file")" >>"$work/wine.log" 2>&1
done
# Wine writes its registry files when its server ends; only then are they settled.
wineserver -w

wine "$windows" scan --drive C: >"$work/wine.out" 2>"$work/wine.err" || true
wineserver -w
"$native" scan --drive C: --wine-prefix "$WINEPREFIX" >"$work/native.out" 2>"$work/native.err" || true

# Wine's console ends lines with CR LF; the counts are the lines of standard error that
# are not progress.
tr -d '\r' <"$work/wine.out" >"$work/wine.lines"
counts() {
    tr '\r' '\n' <"$1" | grep -E 'errors found|not examined' || true
}
failed=0
if ! diff -u "$work/wine.lines" "$work/native.out" >"$work/diff"; then
    echo "$0: the findings differ (--- Wine's own scan, +++ the prefix read offline):" >&2
    head -40 "$work/diff" >&2
    failed=1
fi
if [ "$(counts "$work/wine.err")" != "$(counts "$work/native.err")" ]; then
    echo "$0: the counts differ: Wine's scan said" >&2
    counts "$work/wine.err" >&2
    echo "the offline one said" >&2
    cat "$work/native.err" >&2
    failed=1
fi
findings=$(wc -l <"$work/native.out")
if [ "$findings" -lt 100 ] || ! grep -q 'RvOdd' "$work/native.out" ||
    ! counts "$work/native.err" | grep -q 'not examined'; then
    echo "$0: only $findings findings: the imported registry did not arrive" >&2
    failed=1
fi
if [ $failed -eq 0 ]; then
    echo "Wine prefix read offline: the same $findings findings as Wine's own scan, and"
    counts "$work/native.err" | sed 's/^/  /'
fi
exit $failed
