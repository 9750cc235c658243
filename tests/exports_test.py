#!/usr/bin/env python3
"""What the headers declare, the export map lists and the libraries define are the same names, and those that
programs are built with (interface_names.txt) are among them.

usage: exports_test.py SOURCE_DIRECTORY SHARED_LIBRARY STATIC_LIBRARY"""
import pathlib
import re
import subprocess
import sys

LOGGING = {"dzlog", "dzlog_init", "zlog_fini"}  # the stand-in's, where it is built in; always weak


def output_of(*command, **options):
    return subprocess.run(command, check=True, capture_output=True, text=True, **options).stdout


def symbols(*command):
    """{name: kind} as nm prints them, without the version node itself."""
    lines = [line.split() for line in output_of("nm", "-P", "--defined-only", *command).splitlines()]
    return {line[0].split("@")[0]: line[1] for line in lines if len(line) > 1 and line[1] != "A"}


def is_declared(name, value, headers):
    """Whether the text of the headers declares a type, or an enumerator with its value."""
    if value:
        return re.search(rf"\b{name} = {value}\b", headers)
    return re.search(rf"\}} {name};|\btypedef [^;{{}}]+\b{name};|\(\*{name}\)\(", headers)


source, shared, static = map(pathlib.Path, sys.argv[1:])
declared = set(output_of(source / "cmake" / "exported-names", source / "include").split())
listed = set(re.findall(r"(\w+);", re.search(r"global:(.*?)local:", (source / "cmake/tavisys.map").read_text(), re.S)[1]))
exported = symbols("-D", shared)
archived = {name for name, kind in symbols(static).items() if kind in "TW"}

complaints = [f"declared, but not in cmake/tavisys.map: {name}" for name in declared - listed]
complaints += [f"in cmake/tavisys.map, but not declared: {name}" for name in listed - declared - LOGGING]
complaints += [f"declared, but not exported: {name}" for name in declared - exported.keys()]
complaints += [f"exported, but not declared: {name}" for name in exported.keys() - declared - LOGGING]
complaints += [f"declared, but not in the static library: {name}" for name in declared - archived]
complaints += [f"a program could not bring its own {name}" for name in LOGGING & exported.keys()
               if exported[name] not in "Ww"]
for header in sorted(source.glob("include/*.h")):
    for described, name in re.findall(r"(\*/\s*)?^TAVISYS_API[^;(]*?(\w+)\s*\(", header.read_text(), re.M):
        if not described:
            complaints.append(f"{header.name}: no comment before {name}")

overview = (source / "docs/man/libtavisys.3").read_text()
grouped = output_of("sh", "-c", "for header in include/*.h; do docs/reference/into-group $header | head -1; done",
                    cwd=source).splitlines()
for header, first in zip(sorted(source.glob("include/*.h")), grouped):
    if header.name == "tavisys.h":
        continue
    if f"Xr {header.name} 3" not in overview:
        complaints.append(f"not in docs/man/libtavisys.3: {header.name}")
    if "@addtogroup" not in first:
        complaints.append(f"in no group of the reference: {header.name}")
sample = (source / "samples/browse.c").read_text().split("*/\n")[1].replace("\\n", "\\en")
if sample not in overview:
    complaints.append("docs/man/libtavisys.3 has another samples/browse.c")

needed = [line.partition(" = ") for line in (source / "tests/interface_names.txt").read_text().splitlines()
          if line and line[0] != "#"]
functions = {name for name, _, _ in needed if name.islower()}
headers = "".join(header.read_text() for header in source.glob("include/*.h"))
headers = re.sub(r"/\*.*?\*/", "", headers, flags=re.S)
complaints += [f"programs need it, but no header declares it: {name}" for name in functions - declared]
complaints += [f"programs need it, but the library lacks it: {name}" for name in functions - exported.keys()]
complaints += [f"programs need it, but no header declares it: {name}{equals}{value}" for name, equals, value in needed
               if name not in functions and not is_declared(name, value, headers)]
print("\n".join(sorted(complaints)) or f"{len(declared)} names agree, {len(functions)} of them needed")
sys.exit(1 if complaints or len(functions) < 400 else 0)
