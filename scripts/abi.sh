#!/bin/sh
# Holds a library against the recorded ABI of its SONAME, or records it anew after functions were added.
# Usage: scripts/abi.sh [--update] LIBRARY      a libtavisys.so that GCC has compiled with -g
# Exit status 77 where abigail-tools isn't installed.
set -eu
update=
if [ "${1-}" = --update ]; then
    update=yes
    shift
fi
[ $# -eq 1 ] || {
    echo "usage: scripts/abi.sh [--update] LIBRARY" >&2
    exit 2
}
library=$(realpath "$1")
cd "$(dirname "$0")/.."
command -v abidw >/dev/null || exit 77

soname=$(objdump -p "$library" | awk '$1 == "SONAME" { print $2 }')
record=docs/abi/$soname.abi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# Only what the headers declare, without what depends on the machine or on the compiler's options.
abidw --exported-interfaces-only --headers-dir include --drop-private-types --type-id-style hash \
    --no-corpus-path --no-comp-dir-path --no-show-locs --no-parameter-names --no-elf-needed "$library" |
    sed "s| path='[^']*/\([^/']*/[^/']*\)'| path='\1'|" >"$work/now"

if [ -n "$update" ]; then
    mkdir -p docs/abi
    cp "$work/now" "$record"
    exit 0
fi
[ -f "$record" ] || {
    echo "$soname is new: record it with scripts/abi.sh --update $1" >&2
    exit 1
}
status=0
abidiff "$record" "$work/now" >"$work/difference" || status=$?
[ "$status" -ne 0 ] || exit 0
cat "$work/difference" >&2
if [ "$((status & 8))" -ne 0 ] || grep -q ' [1-9][0-9]* \(Removed\|Changed\)' "$work/difference"; then
    echo "programs that were built with $soname may break: it needs a new SONAME, or the change to go" >&2
else
    echo "$soname has grown: record that with scripts/abi.sh --update $1" >&2
fi
exit 1
