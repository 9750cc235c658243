#!/bin/sh
# Installs what is needed, builds and passes all tests:
#   - the whole suite under the address, leak and undefined-behaviour sanitizers
#   - the tests with threads under the thread sanitizer
#   - the whole suite once more as a release, compiled by Clang (GCC compiles the other two), with
#     warnings as errors in all three
#   - the fuzz targets: their corpora, and each for 10 seconds
#   - the reference of the headers: nothing may be undocumented
#   - clang-format and clang-tidy
#   - the instructions that the main paths take, which must not have grown: scripts/bench.sh --check
# TAVISYS_DATA=DIR names a folder of generated movie documents for the tests on large input.
# Usage: scripts/test.sh
set -eu
cd "$(dirname "$0")/.."

scripts/packages.sh programs clang clang-format clang-tidy libgtest-dev libbenchmark-dev python3 binutils iproute2 \
    tshark dpkg-dev file lintian abigail-tools doxygen valgrind zsh

step() { printf '\n== %s\n' "$*"; }

build() {
    step "build: $1"
    cmake --preset "$1" >/dev/null
    cmake --build --preset "$1" -- --quiet
}

suite() {
    name=$1
    shift
    step "tests: $name"
    ctest --test-dir "build/$name" --output-on-failure --no-tests=error -j "$(nproc)" "$@"
}

export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1
export TSAN_OPTIONS=halt_on_error=1

step "clang-format"
git ls-files '*.h' '*.cpp' '*.c' | xargs clang-format --dry-run -Werror
build asan
suite asan
build tsan
suite tsan -L threads
build clang
suite clang
step "fuzz"
scripts/fuzz.sh corpus
scripts/fuzz.sh 10
step "reference"
scripts/reference.sh
step "clang-tidy"
git ls-files 'support/*.cpp' 'comm/*.cpp' 'codec/*.cpp' 'dbdata_*/*.cpp' 'utils/*.cpp' 'agent/*.cpp' 'apps/*.cpp' |
    xargs -n 4 -P "$(nproc)" clang-tidy --quiet -p build/clang
step "instruction counts"
scripts/bench.sh --check
step "all passed"
