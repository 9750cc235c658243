#!/bin/sh
# Makes the reference of the public headers with Doxygen, for a browser: DIRECTORY/html/index.html, in build/reference
# if not given. What isn't documented is an error. Usage: scripts/reference.sh [DIRECTORY]
set -eu
cd "$(dirname "$0")/.."
out=${1:-build/reference}
scripts/packages.sh doxygen
mkdir -p "$out"
{ cat docs/reference/Doxyfile && printf 'OUTPUT_DIRECTORY = %s\n' "$out"; } | doxygen -
echo "$out/html/index.html"
