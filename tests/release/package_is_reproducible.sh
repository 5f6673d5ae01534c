#!/usr/bin/env bash
# The same commit gives the same release bytes: builds the package (scripts/package, into
# its build folders as they are), keeps the zips, cleans the build folders (their
# configuration stays), builds the package again and compares every byte. On a
# difference it names the files inside the zips that differ.
set -euo pipefail
cd "$(dirname "$0")/../.."
build_root=${REGVEX_PACKAGE_BUILD:-build}

scripts/package
first=$(mktemp -d "${TMPDIR:-/tmp}/regvexlor-first-package.XXXXXX")
trap 'rm -rf "$first"' EXIT
cp dist/RegistryVexlor-*.zip dist/SHA256SUMS "$first/"

for arch in win64 win32; do
    cmake --build "$build_root/package-$arch" --target clean >/dev/null
done
scripts/package

status=0
for file in "$first"/*; do
    name=$(basename "$file")
    if cmp -s "$file" "dist/$name"; then
        echo "same bytes: $name"
        continue
    fi
    status=1
    echo "DIFFERENT: $name" >&2
    case "$name" in
        *.zip)
            mkdir -p "$first/a" "$first/b"
            unzip -q -o "$file" -d "$first/a"
            unzip -q -o "dist/$name" -d "$first/b"
            diff -rq "$first/a" "$first/b" >&2 || true
            zipinfo -l "$file" >"$first/a.list"
            zipinfo -l "dist/$name" >"$first/b.list"
            diff "$first/a.list" "$first/b.list" >&2 || true
            rm -rf "$first/a" "$first/b"
            ;;
    esac
done
exit $status
