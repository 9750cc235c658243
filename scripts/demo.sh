#!/bin/sh
# Builds the server and the client, starts the server on the sample library and browses it.
# Leaves nothing running. Usage: scripts/demo.sh
set -eu
cd "$(dirname "$0")/.."

scripts/packages.sh programs
echo "building ..."
log=$(mktemp)
copy=build/demo/fetched
server=
# shellcheck disable=SC2317
finish() {
    status=$?
    if [ -n "$server" ]; then
        kill "$server" 2>/dev/null || true
        wait "$server" 2>/dev/null || true
    fi
    rm -rf "$log" "$copy"
    exit "$status"
}
trap finish EXIT
trap 'exit 130' INT TERM

{
    cmake -S . -B build/demo -G Ninja -DCMAKE_BUILD_TYPE=Release -DTAVISYS_BUILD_TESTS=OFF &&
        cmake --build build/demo
} >"$log" 2>&1 || {
    cat "$log" >&2
    exit 1
}

export LC_ALL=C.UTF-8 # Chinese, whatever the user's language: as README.md shows it
PATH=$PWD/build/demo/apps/server:$PWD/build/demo/apps/client:$PATH
show() {
    printf '\n$ %s\n' "$*"
    "$@"
}

printf '\n$ tavisys-server --library samples/library &\n'
tavisys-server --library samples/library --log-level NOTICE >"$log" 2>&1 &
server=$!
# The server listens before it scans; until then the client can't reach it.
tries=0
until tavisys uuid >/dev/null 2>&1; do
    tries=$((tries + 1))
    if ! kill -0 "$server" 2>/dev/null || [ "$tries" -gt 100 ]; then
        server=
        cat "$log" >&2
        exit 1
    fi
    sleep 0.1
done

show tavisys status --watch
grep -o '跳过影片.*' "$log" | sed "s|$PWD/||"
show tavisys categories
show tavisys movies --category 电影 --order score --size 5
show tavisys movies --category 电影 --area 香港 --kind 犯罪 --order publish
show tavisys disks | sed "s|$PWD/||"
show tavisys fetch sda sda1 --out "$copy"
printf '\n$ kill %%1\n'
kill "$server"
wait "$server" || true
server=
echo "the server has ended"
