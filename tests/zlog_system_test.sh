#!/bin/sh
# The library against an installed zlog, for which the stand-in is put into a scratch prefix: it then
# comes from there. And the ways in which asking for zlog can go wrong are told.
# usage: zlog_system_test.sh SOURCE_DIRECTORY SCRATCH_DIRECTORY C++_COMPILER
set -eu
source=$1
scratch=$2
compiler=$3

configure() {
    directory=$1
    shift
    cmake -S "$source" -B "$scratch/$directory" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=None \
        -DTAVISYS_BUILD_PROGRAMS=OFF -DTAVISYS_BUILD_TESTS=OFF "$@" 2>&1
}

# expect_refusal TEXT OPTION...: configuring fails and says why.
expect_refusal() {
    text=$1
    shift
    if output=$(configure refused "$@"); then
        echo "configured with $*"
        exit 1
    fi
    echo "$output" | grep -qF "$text" || { echo "$* does not say \"$text\": $output"; exit 1; }
}

expect_refusal 'TAVISYS_ZLOG is "YES"; it takes AUTO, SYSTEM or BUNDLED' -DTAVISYS_ZLOG=YES
expect_refusal 'zlog.h or libzlog was not found' -DTAVISYS_ZLOG=SYSTEM -DZLOG_LIBRARY= -DZLOG_INCLUDE_DIR=

prefix=$scratch/prefix
mkdir -p "$prefix/include" "$prefix/lib"
cmp -s "$source/support/zlog/zlog.h" "$prefix/include/zlog.h" || cp "$source/support/zlog/zlog.h" "$prefix/include/"
"$compiler" -std=c++20 -D_GNU_SOURCE -O0 -fPIC -shared -Wl,-soname,libzlog.so.1 -I "$prefix/include" \
    "$source/support/zlog/zlog.cpp" -o "$prefix/lib/libzlog.so"
configure system -DTAVISYS_ZLOG=SYSTEM -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_FLAGS=-O0 >"$scratch/log" ||
    { cat "$scratch/log"; exit 1; }
cmake --build "$scratch/system" --target tavisys_shared -j 2 >"$scratch/log" || { cat "$scratch/log"; exit 1; }

library=$scratch/system/libtavisys.so
readelf -d "$library" | grep -q 'NEEDED.*libzlog\.so\.1' || { echo "libtavisys does not need libzlog"; exit 1; }
if nm -D --defined-only "$library" | grep -E ' (dzlog|dzlog_init|zlog_fini)(@|$)'; then
    echo "libtavisys defines what zlog defines"
    exit 1
fi
nm -D --undefined-only "$library" | grep -qw dzlog || { echo "libtavisys does not call dzlog"; exit 1; }
