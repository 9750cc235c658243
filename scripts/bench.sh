#!/bin/sh
# Measures how fast the library and the server are.
#   scripts/bench.sh             run all benchmarks, write docs/performance.md and its plots
#   scripts/bench.sh NAME...     run these alone; the others keep the figures of their last run
#   scripts/bench.sh --check     count instructions: fails when one of the counts in bench/baseline.json has
#                                grown by more than 5 %
#   scripts/bench.sh --update    count instructions and write them into bench/baseline.json
# TAVISYS_DATA=DIR names a folder of generated movie documents to measure with. TAVISYS_LARGE=DIR names one with
# 6 GB of room, where libraries of 360,000 and 1,000,000 of these are made and kept, to load them as well.
# Port 40001 must be free, or this must be allowed to make a network of its own.
set -eu
cd "$(dirname "$0")/.."
unset CFLAGS CXXFLAGS LDFLAGS

# What a benchmark's figures mean is said in bench/report.py.
BENCHMARKS=$(cd bench && printf '%s\n' *_bench.cpp | sed 's/\.cpp$//')

need="programs libbenchmark-dev python3"

build() {
    cmake --preset release -DTAVISYS_BUILD_TESTS=OFF >/dev/null
    cmake --build --preset release --target "$@" -- --quiet
}

count_instructions() {
    # Words of $need are package names: they are to be split.
    # shellcheck disable=SC2086
    scripts/packages.sh $need valgrind
    build instructions
    python3 bench/instructions.py "$1" build/release/bench/instructions
}

# The libraries to load; none: load_bench chooses.
libraries() {
    if [ -n "${TAVISYS_DATA-}" ] && [ -n "${TAVISYS_LARGE-}" ]; then
        printf '%s\n' "$TAVISYS_DATA"
        for documents in 360000 1000000; do
            python3 bench/larger_library.py "$TAVISYS_DATA" "$TAVISYS_LARGE/$documents" "$documents"
            printf '%s\n' "$TAVISYS_LARGE/$documents"
        done
    fi
}

# A network of its own has port 40001 free.
run() {
    if unshare -rn true 2>/dev/null; then
        unshare -rn sh -c 'ip link set lo up && exec "$@"' sh "$@"
    else
        "$@"
    fi
}

case ${1-} in
--check | --update)
    count_instructions "$1"
    exit
    ;;
-*)
    sed -n '2,11s/^# \{0,1\}//p' "$0" >&2
    exit 2
    ;;
esac

# shellcheck disable=SC2086
scripts/packages.sh $need iproute2 libprotobuf-dev protobuf-compiler libgrpc++-dev \
    protobuf-compiler-grpc libmsgpack-cxx-dev libflatbuffers-dev flatbuffers-compiler libcpp-httplib-dev \
    libsqlite3-dev
names=${*:-$BENCHMARKS}
# shellcheck disable=SC2086
build $names
results=build/release/bench/results
mkdir -p "$results"
for name in $names; do
    printf '\n== %s\n' "$name"
    set --
    if [ "$name" = load_bench ]; then
        large=$(libraries)
        IFS='
'
        # shellcheck disable=SC2086
        set -- $large
        unset IFS
    fi
    run "build/release/bench/$name" "$@" --benchmark_out_format=json --benchmark_out="$results/$name.new"
    mv "$results/$name.new" "$results/$name.json"
done
python3 bench/report.py "$results" docs
