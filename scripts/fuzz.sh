#!/bin/sh
# Fuzzes the decoders, the channels and the metadata parser, each target for so many seconds, under the
# address, leak and undefined-behaviour sanitizers; a finding fails the run and is kept.
# The targets start from fuzz/corpus and the sample library and go on from where the last run ended.
# Usage: scripts/fuzz.sh [SECONDS [TARGET...]]   each target, or those named, for that long: 60 if not given
#        scripts/fuzz.sh corpus [TARGET...]      every input of the corpus once
set -eu
cd "$(dirname "$0")/.."

seconds=${1:-60}
case $seconds in
corpus) ;;
*[!0-9]* | '')
    echo "usage: scripts/fuzz.sh [SECONDS | corpus] [TARGET...]" >&2
    exit 2
    ;;
esac
[ $# -eq 0 ] || shift
[ $# -ne 0 ] || set -- decode_fuzz long_body_fuzz metadata_fuzz record_fuzz text_head_fuzz trlv_fuzz

scripts/packages.sh clang libclang-rt-dev llvm cmake ninja-build pkgconf libxml2-dev
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz -- --quiet

export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1
work=build/fuzz/runs
failed=

# The options of a target beside libFuzzer's own, and the folders that it only reads.
options_of() {
    case $1 in
    metadata_fuzz) echo "-max_len=8192 -dict=fuzz/xml.dict" ;;
    *) echo "-max_len=4096" ;;
    esac
}
seeds_of() {
    echo "fuzz/corpus/$1"
    [ "$1" != metadata_fuzz ] || echo samples/library
}

# Runs a target; its words go to its log. The time limit of an input is one by the clock, and a busy machine
# may leave a process without its turn for most of a minute.
run() {
    target=$1
    shift
    mkdir -p "$work/$target" "$work/findings"
    # shellcheck disable=SC2046 # options and folders are words
    if ! "build/fuzz/fuzz/$target" $(options_of "$target") -timeout=300 -print_final_stats=1 \
        "-artifact_prefix=$work/findings/$target-" "$@" $(seeds_of "$target") >"$work/$target.log" 2>&1; then
        failed="$failed $target"
        tail -n 60 "$work/$target.log" >&2
        echo "$target: a finding; see above, all of it in $work/$target.log:" >&2
        grep -m 1 -E '^found: |ERROR: |runtime error: ' "$work/$target.log" >&2 || true
    fi
}

# The numbers of the last line that tells them: executions, covered edges, features.
numbers() {
    sed -nE 's/^#([0-9]+).*cov: ([0-9]+) ft: ([0-9]+).*/\1 \2 \3/p' "$work/$1.log" | tail -n 1
}

[ "$seconds" = corpus ] || printf '%-16s %12s %8s %10s\n' target executions edges features
for target; do
    if [ "$seconds" = corpus ]; then
        run "$target" -runs=0
    else
        run "$target" "-max_total_time=$seconds" "$work/$target"
        # shellcheck disable=SC2046,SC2183 # three numbers
        printf '%-16s %12s %8s %10s\n' "$target" $(numbers "$target")
    fi
done

[ -z "$failed" ] && exit 0
echo "findings in $work/findings:" >&2
ls "$work/findings" >&2
exit 1
