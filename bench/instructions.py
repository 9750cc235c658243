#!/usr/bin/env python3
"""Counts the instructions of each work of bench/instructions.cpp with callgrind.

instructions.py --check PROGRAM    fails when a count has grown by more than 5 % over bench/baseline.json
instructions.py --update PROGRAM   writes bench/baseline.json
"""
import json
import os
import re
import subprocess
import sys
import tempfile

BASELINE = os.path.join(os.path.dirname(__file__), "baseline.json")
WORKS = ("encode", "decode", "parse", "page")
ALLOWED = 1.05


def count(program, work):
    # The C library has its string functions in variants for each kind of processor: the plain ones are
    # the same everywhere.
    environment = dict(os.environ, GLIBC_TUNABLES="glibc.cpu.hwcaps=-AVX2,-AVX,-AVX512F,-AVX512VL,-BMI2,-ERMS")
    with tempfile.TemporaryDirectory() as folder:
        out = os.path.join(folder, "out")
        run = subprocess.run(
            ["valgrind", "--tool=callgrind", "--collect-atstart=no", "--toggle-collect=measured_work",
             f"--callgrind-out-file={out}", program, work],
            env=environment, capture_output=True, text=True)
        if run.returncode != 0:
            sys.exit(f"{work}: {run.stderr}")
        with open(out, encoding="utf-8") as file:
            found = re.search(r"^(?:totals|summary): (\d+)", file.read(), re.MULTILINE)
    if found is None or int(found.group(1)) == 0:
        sys.exit(f"{work}: callgrind has counted nothing")
    return int(found.group(1))


def check(counts):
    with open(BASELINE, encoding="utf-8") as file:
        baseline = json.load(file)
    grown = []
    for work, instructions in counts.items():
        ratio = instructions / baseline[work]
        print(f"{work:8} {instructions:>12,} instructions, {100 * (ratio - 1):+.2f} % over the baseline")
        if ratio > ALLOWED:
            grown.append(f"{work} takes {100 * (ratio - 1):.1f} % more instructions than bench/baseline.json has"
                         f" ({baseline[work]:,}): make it faster, or run scripts/bench.sh --update and say why")
    if grown:
        sys.exit("\n".join(grown))


def main():
    if len(sys.argv) != 3 or sys.argv[1] not in ("--check", "--update"):
        sys.exit(__doc__)
    counts = {work: count(sys.argv[2], work) for work in WORKS}
    if sys.argv[1] == "--check":
        check(counts)
        return
    with open(BASELINE, "w", encoding="utf-8") as file:
        json.dump(counts, file, indent=4)
        file.write("\n")


main()
