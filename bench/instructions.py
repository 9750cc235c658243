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


# The same on every machine: callgrind counts what its own processor executes, which is the host's only in
# which extensions it has; without them the C library takes the plain variants of its string functions
# everywhere. Addresses are valgrind's own, the records are those of the repository, loaded by one thread as if
# from a disk of one name, and nothing of the environment reaches the program. What remains are compiler and libraries: they are
# Debian's, and 5 % leave room for their updates.
PLAIN = "glibc.cpu.hwcaps=" + ",".join("-" + name for name in (
    "SSSE3", "SSE4_1", "SSE4_2", "AVX", "AVX2", "AVX512F", "AVX512VL", "AVX512BW", "BMI1", "BMI2", "ERMS", "FSRM",
    "LZCNT", "MOVBE", "POPCNT", "RTM", "AVX_Fast_Unaligned_Load"))


def count(program, work):
    environment = {"GLIBC_TUNABLES": PLAIN, "PATH": os.environ["PATH"], "LC_ALL": "C"}
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
