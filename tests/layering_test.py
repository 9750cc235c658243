#!/usr/bin/env python3
"""The layers call each other in one direction only, and the support layer by its declared functions; the picture of
docs/architecture.md shows who calls whom.

usage: layering_test.py [--draw] SOURCE_DIRECTORY OBJECT...
Judges the symbols that each object of the library and the programs defines and wants, and what the programs include.
With --draw it draws the picture anew, by Graphviz."""
import pathlib
import re
import subprocess
import sys

CATALOGUE = {"dbdata_movinfo", "dbdata_position", "dbdata_misc"}
MAY_CALL = {
    "zlog": set(),
    "support": set(),
    "comm": {"support", "zlog"},
    "codec": {"support", "zlog"},
    "dbdata_movinfo": CATALOGUE | {"support", "zlog"},
    "dbdata_position": CATALOGUE | {"support", "zlog"},
    "dbdata_misc": CATALOGUE | {"support", "zlog"},
    "utils": CATALOGUE | {"support", "zlog"},
    "agent": {"comm", "codec", "support"},
}
PROGRAMS = {"server": "tavisys-server", "client": "tavisys", "common": "apps/common"}
WALKS_ITS_LIST = re.compile(r"(?:add|insert)_\w*node_to_\w+")  # n of them cost n squared
MAY_WALK = {  # lists of one or two nodes, or one node of a list
    "utils/metadata_parse.cpp.o": {f"add_node_to_dbdata_{of}_information_list" for of in
                                   ("dimension", "resolution", "year", "kind")},
    "apps/server/storage.cpp.o": {"insert_node_to_dbdata_host_information_list"},
}
WALL_CLOCK = re.compile(r"^(gettimeofday|time|ftime|\w*system_clock3now\w*)$")  # it may jump while one waits
THREAD_START = re.compile(r"^(pthread_create|thrd_create|_ZNSt6thread\w*start_thread\w*)$")


def layer_of(name):
    """support/zlog is logging, which stands where zlog itself would."""
    if name.startswith("apps/"):
        return PROGRAMS[name.split("/")[1]]
    return "zlog" if name.startswith("support/zlog/") else name.split("/")[0]


def complaints(objects, declared):
    """objects: {name: (defined, wanted)}; declared: the names in the support layer's headers."""
    home = {symbol: layer_of(name) for name, (defined, _) in objects.items() for symbol in defined}
    found = []
    for name, (defined, wanted) in sorted(objects.items()):
        layer = layer_of(name)
        if layer not in MAY_CALL:
            found.append(f"{name}: no such layer")
            continue
        for symbol in sorted(wanted - defined):
            callee = home.get(symbol)
            if callee not in (None, layer) and callee not in MAY_CALL[layer]:
                found.append(f"{name} calls {symbol} of {callee}")
            elif callee == "support" != layer and symbol not in declared:
                found.append(f"{name} calls {symbol}, which no support header declares")
            if symbol.startswith("xml") and layer != "support":
                found.append(f"{name} calls {symbol} of libxml2")
            if WALL_CLOCK.match(symbol) and layer in ("support", "comm", "agent"):
                found.append(f"{name} asks the wall clock: {symbol}")
            if THREAD_START.match(symbol):
                found.append(f"{name} starts a thread: {symbol}")
    return found


def slow_builders(objects):
    return [f"{name} builds a list with {symbol}" for name, (_, wanted) in sorted(objects.items())
            for symbol in sorted(wanted) if WALKS_ITS_LIST.fullmatch(symbol) and symbol not in MAY_WALK.get(name, ())]


def foreign_includes(program, text, public):
    """What a program's source includes that is neither public, the system's nor its own."""
    names = re.findall(r'^\s*#\s*include\s*([<"][^">]+)', text, re.M)
    return [name[1:] for name in names
            if (name[0] == '"' and name[1:] not in public and not (program / name[1:]).is_file())
            or name[1:].split("/")[0] in MAY_CALL]


def picture(objects):
    """Who calls whom, for Graphviz. Programs stand above the library, what each layer stands on below it."""
    home = {symbol: layer_of(name) for name, (defined, _) in objects.items() for symbol in defined}
    calls = {(layer_of(name), home[symbol]) for name, (defined, wanted) in objects.items()
             for symbol in wanted - defined if symbol in home}
    calls |= {(layer_of(name), outside) for name, (_, wanted) in objects.items()
              for prefix, outside in (("xml", "libxml2"), ("dzlog", "zlog")) if any(s.startswith(prefix) for s in wanted)}
    lines = [f'  "{caller}" -> "{callee}";' for caller, callee in sorted(calls) if caller != callee]
    layers = " ".join(f'"{layer}";' for layer in MAY_CALL)
    programs = " ".join(f'"{program}";' for program in PROGRAMS.values())
    return "\n".join(["digraph libtavisys {", "  node [shape=box, style=rounded, fontname=sans];",
                      f"  subgraph cluster_library {{ label=libtavisys; fontname=sans; {layers} }}",
                      f"  {{ rank=source; {programs} }}", *lines, "}", ""])


def read_object(path):
    lines = subprocess.run(["nm", "-P", path], check=True, capture_output=True, text=True).stdout.splitlines()
    symbols = [line.split()[:2] for line in lines]
    # An inline function is defined, weakly, by everyone that uses it.
    return ({name for name, kind in symbols if kind in "TDBRVWu"}, {name for name, kind in symbols if kind in "Uw"})


def self_test():
    """Every rule finds its own breach, and nothing else."""
    good = {
        "support/support_codec.cpp": ({"encode_int", "_Zhidden"}, {"malloc", "xmlReadMemory"}),
        "support/zlog/zlog.cpp": ({"dzlog"}, {"write"}),
        "comm/tavisys_comm.cpp": ({"exchange"}, {"encode_int", "dzlog", "printf"}),
        "agent/tavisys_agent_api.cpp": ({"query"}, {"exchange", "encode_int"}),
    }
    assert complaints(good, {"encode_int"}) == []
    for name, symbol in [("comm/tavisys_comm.cpp", "_Zhidden"), ("comm/tavisys_comm.cpp", "query"),
                         ("support/support_codec.cpp", "exchange"), ("support/support_codec.cpp", "dzlog"),
                         ("comm/tavisys_comm.cpp", "xmlFreeDoc"), ("agent/tavisys_agent_api.cpp", "pthread_create"),
                         ("comm/tavisys_comm.cpp", "_ZNSt6chrono3_V212system_clock3nowEv"),
                         ("support/zlog/zlog.cpp", "_ZNSt6thread15_M_start_threadESt10unique_ptr")]:
        bad = {**good, name: (good[name][0], good[name][1] | {symbol})}
        assert len(complaints(bad, {"encode_int"})) == 1, (name, symbol)
    assert complaints({"elsewhere/file.cpp": (set(), set())}, set()) == ["elsewhere/file.cpp: no such layer"]
    for name, slow in [("utils/metadata_parse.cpp.o", 0), ("agent/tavisys_agent_api.cpp.o", 1)]:
        assert len(slow_builders({name: (set(), {"add_node_to_dbdata_year_information_list", "dzlog"})})) == slow
    text = '#include <vector>\n#include "tavisys.h"\n#include "support/list.h"\n #include <codec/wire.h>\n'
    assert foreign_includes(pathlib.Path("none"), text, {"tavisys.h"}) == ["support/list.h", "codec/wire.h"]


def main():
    self_test()
    arguments = [argument for argument in sys.argv[1:] if argument != "--draw"]
    source = pathlib.Path(arguments[0])
    all_objects = {re.sub(r"^.*?(tavisys_objects\.dir/|(?=apps/\w+/))|CMakeFiles/\w+\.dir/|\./", "", path): read_object(path)
                   for path in arguments[1:]}
    objects = {name: symbols for name, symbols in all_objects.items() if not name.startswith("apps/")}
    headers = "".join(header.read_text() for header in source.glob("include/support_*.h"))
    declared = set(re.findall(r"TAVISYS_API[^;(]*?(\w+)\s*\(", headers))
    # What the layers above share with it alone: functions of C linkage, so that their symbols are their names.
    for header in source.glob("support/*.h"):
        for block in re.findall(r'extern "C" \{(.*?)\n\}', header.read_text(), re.S):
            declared |= set(re.findall(r"^\w[\w *]*?(\w+)\(", block, re.M))
    found = complaints(objects, declared) + slow_builders(all_objects)
    drawn = source / "docs/architecture.dot"
    if "--draw" in sys.argv:
        drawn.write_text(picture(all_objects))
        subprocess.run(["dot", "-Tsvg", drawn, "-o", drawn.with_suffix(".svg")], check=True)
    elif drawn.read_text() != picture(all_objects):
        found.append(f"{drawn} shows other calls than there are: draw it anew with --draw")
    public = {header.name for header in source.glob("include/*.h")}
    public |= {f"common/{header.name}" for header in source.glob("apps/common/*.h")}  # the programs' own
    programs = [path for path in source.glob("apps/*/**/*") if path.suffix in (".h", ".cpp", ".c")]
    for path in programs:
        own = source / "apps" / path.relative_to(source / "apps").parts[0]
        found += [f"{path} includes {name}" for name in foreign_includes(own, path.read_text(), public)]
    print("\n".join(found) or f"{len(objects)} objects and {len(programs)} program sources keep to their layers")
    return 1 if found or len(objects) < 10 or len(declared) < 10 else 0


sys.exit(main())
