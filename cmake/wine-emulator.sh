#!/usr/bin/env bash
# Runs a Windows test program under Wine. Tests never touch the user's own prefix:
# scripts/test hands us a throwaway one in REGVEX_TEST_WINEPREFIX; without it we use a
# prefix of our own under the temporary folder, made on first use.
set -eu
# shellcheck source=scripts/wine-env
source "$(dirname "$0")/../scripts/wine-env"
export WINEPREFIX=${REGVEX_TEST_WINEPREFIX:-${TMPDIR:-/tmp}/regvexlor-test-wineprefix-$(id -u)}
ensure_wine_prefix >/dev/null
# Windows need a display; without one, a virtual one serves this program alone.
if [ -z "${DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x1024x24" wine "$@"
fi
exec wine "$@"
