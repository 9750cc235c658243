#!/bin/sh
# Builds a release and lets it serve under load: `load`, whose every reply is compared with what the library
# holds, for so many seconds, then `hostile`, with 100000 peers that misbehave. Prints what they measured;
# ends with 1 when anything was wrong. TAVISYS_DATA=DIR names a library folder, else it is the sample library.
# Usage: scripts/soak.sh [SECONDS]
set -eu
cd "$(dirname "$0")/.."
seconds=${1:-600}

scripts/packages.sh programs libgtest-dev libbenchmark-dev python3 iproute2
cmake --preset release >/dev/null
cmake --build --preset release --target load hostile -- --quiet

# In a network of its own, where that is allowed, no other server can hold port 40001.
alone() {
    if unshare -n true 2>/dev/null; then
        unshare -n sh -c 'ip link set lo up && exec "$@"' alone "$@"
    else
        "$@"
    fi
}
status=0
alone build/release/bench/load --seconds "$seconds" || status=1
alone build/release/bench/hostile || status=1
exit "$status"
