#!/bin/sh
# Every public header compiles on its own, and twice, as C11 and as C++20, without a warning.
# usage: headers_test.sh INCLUDE_DIRECTORY
set -u
include=$1
checked=0
failed=0
for compiler in gcc:g++ clang:clang++; do
    command -v "${compiler%:*}" >/dev/null && command -v "${compiler#*:}" >/dev/null || continue
    for header in "$include"/*.h; do
        text="#include \"${header##*/}\"
#include \"${header##*/}\""
        for language in "${compiler%:*} -x c -std=c11" "${compiler#*:} -x c++ -std=c++20"; do
            echo "$text" | $language -Wall -Wextra -Wpedantic -Werror -fsyntax-only -I "$include" - || {
                echo "$header does not compile alone with $language"
                failed=$((failed + 1))
            }
            checked=$((checked + 1))
        done
    done
done
echo "$checked compilations, $failed failed"
[ "$checked" -gt 0 ] && [ "$failed" -eq 0 ]
