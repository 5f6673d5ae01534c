# shellcheck shell=bash disable=SC2154  # the variables the sourcing script sets
# What the Wine benchmarks share: a throwaway prefix with a generated tree imported, and
# timing. Sourced; expects $bench (regvex_scan_bench), $keys, $values, $seed and $runs.

# Makes the prefix (removed at exit) and its work folder; sets WINEPREFIX, work and log.
start_bench_prefix() {
    WINEPREFIX=$(mktemp -d "${TMPDIR:-/tmp}/$1.XXXXXX")
    export WINEPREFIX
    export WINEDEBUG=-all
    export WINEDLLOVERRIDES="mscoree,mshtml="
    work="$WINEPREFIX/regvex-bench"
    log="$work/wine.log"
    trap cleanup_bench_prefix EXIT
    trap 'exit 130' INT TERM
    mkdir -p "$work"
    echo "prefix      $WINEPREFIX (removed at exit)"
    wineboot -i >>"$log" 2>&1
    wineserver -w
}

# shellcheck disable=SC2317 # run by the trap above
cleanup_bench_prefix() {
    wineserver -k >/dev/null 2>&1 || true
    rm -rf "$WINEPREFIX"
}

# Wine takes paths below / as drive Z:.
windows_path() {
    printf 'Z:%s' "${1//\//\\}"
}

# Generates the tree (with its files on C:) and imports it; the server writes the
# registry out when it ends, and only then is the import settled.
import_generated_tree() {
    "$bench" write-reg --keys "$keys" --values "$values" --seed "$seed" \
        --out "$work/generated.reg" --files "$WINEPREFIX/drive_c" >"$work/generated.txt"
    sed 's/^/generated   /' "$work/generated.txt"
    wine regedit /s "$(windows_path "$work/generated.reg")" >>"$log" 2>&1
    wineserver -w
}

# Seconds, with milliseconds, that the command took.
seconds_of() {
    local start end
    start=$(date +%s%N)
    "$@" || { echo "$0: $* failed; the end of $log:" >&2; tail -20 "$log" >&2; return 1; }
    end=$(date +%s%N)
    awk -v ns=$((end - start)) 'BEGIN { printf "%.3f", ns / 1e9 }'
}

# The best of $runs runs.
best_of() {
    local best="" t
    for _ in $(seq "$runs"); do
        t=$(seconds_of "$@") || return 1
        if [ -z "$best" ] || awk -v a="$t" -v b="$best" 'BEGIN { exit !(a < b) }'; then
            best=$t
        fi
    done
    printf '%s' "$best"
}
