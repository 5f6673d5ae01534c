#!/bin/sh
# Runs a Windows test program under Wine. Tests never touch the user's own prefix:
# scripts/test hands us a throwaway one in REGVEX_TEST_WINEPREFIX; without it we use a
# prefix of our own under the temporary folder, made on first use.
set -eu
prefix=${REGVEX_TEST_WINEPREFIX:-${TMPDIR:-/tmp}/regvexlor-test-wineprefix-$(id -u)}
export WINEPREFIX="$prefix"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
if [ ! -f "$prefix/system.reg" ]; then
    mkdir -p "$prefix"
    # Two tests may start together on a fresh prefix; only one may boot it.
    flock "$prefix/.boot-lock" sh -c '
        [ -f "$WINEPREFIX/system.reg" ] && exit 0
        wineboot -i >/dev/null 2>&1
        # Debian'"'"'s Wine finds its own fonts only inside the prefix.
        mkdir -p "$WINEPREFIX/drive_c/windows/Fonts"
        cp -n /usr/share/wine/fonts/*.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
        wine reg add "HKCU\\Software\\Wine\\Fonts\\Replacements" /v "Segoe UI" /d Tahoma /f >/dev/null 2>&1'
fi
# Windows need a display; without one, a virtual one serves this program alone.
if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x1024x24" wine "$@"
fi
exec wine "$@"
