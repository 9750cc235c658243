#!/usr/bin/env python3
"""Writes performance.md with its plots from the results of the benchmarks.

report.py RESULTS DOCS BENCHMARK...
"""
import json
import os
import subprocess
import sys

# For each benchmark: its title, what its figures mean, and the counters that its plot shows (none: no plot).
SECTIONS = {
    "codec_bench": (
        "Codec",
        "Encoding into one fresh body; decoding into the same owned records, each string an allocation of its"
        " own, and freeing them. Each figure is a codec's time over the floor's, which is straight-line code"
        " by hand with the same allocations and copies, no checks, and the length of the body known"
        " beforehand; `floor_us` is the floor's own time in microseconds.",
        ("library", "protobuf", "msgpack", "flatbuffers", "json")),
    "exchange_bench": (
        "Exchange",
        "Request and reply on the loopback. Each"
        " figure is a transport's exchanges per second over the floor's, NAME_p99 its 99th percentile of"
        " latency over the floor's. The floor is raw sockets that move the same bytes: connect, one send,"
        " receive, close. `channel` is the library's and moves them as well, with a connection for each"
        " exchange; `agent`, the library's agent calls, and all others encode the reply from records and"
        " decode it into records; `grpc` and `http_kept` keep their connections.",
        ("channel", "agent", "grpc", "http", "http_kept")),
    "transfer_bench": (
        "Transfer",
        "The movies of a partition from a server. `ratio`: the time over that of copying the strings of the"
        " body into fresh allocations; `to_records`: over that of the copy and the allocations of the"
        " records.",
        ()),
    "load_bench": (
        "Loading",
        "`ratio`: loading a library over parsing its documents with the XML parser on one thread;"
        " `document_us`: microseconds for one document.",
        ()),
    "query_bench": (
        "Queries",
        "Inside the server, with the encoded body. `ratio`: how many times faster than SQLite in memory with"
        " covering indices.",
        ("ratio",)),
    "decode_bench": ("Lists", "What building lists costs.", ()),
}
STANDARD = {"name", "run_name", "run_type", "repetitions", "threads", "aggregate_name", "aggregate_unit",
            "iterations", "real_time", "cpu_time", "time_unit", "family_index", "per_family_instance_index",
            "repetition_index"}


def medians(result):
    """[(name, {counter: value})] of each benchmark."""
    rows = []
    for run in result["benchmarks"]:
        if run.get("aggregate_name") != "median":
            continue
        name = "/".join(part for part in run["run_name"].split("/")
                        if not part.startswith(("iterations:", "repeats:")) and part != "manual_time")
        rows.append((os.path.basename(name) if name.startswith("load//") else name,
                     {key: value for key, value in run.items() if key not in STANDARD}))
    return rows


def shown(value):
    if value is None:
        return ""
    return f"{value:,.0f}" if value >= 1000 else f"{value:.3g}" if value >= 100 else f"{value:.2f}"


def table(rows):
    columns = []
    for _, counters in rows:
        columns += [name for name in counters if name not in columns]
    lines = ["| | " + " | ".join(columns) + " |", "|---" * (len(columns) + 1) + "|"]
    lines += ["| " + name + " | " + " | ".join(shown(counters.get(column)) for column in columns) + " |"
              for name, counters in rows]
    return "\n".join(lines)


def plot(rows, columns, title, path):
    columns = [column for column in columns if any(column in counters for _, counters in rows)]
    if not columns:
        return False
    data = ["name " + " ".join(columns)]
    data += [name + " " + " ".join(str(counters.get(column, "nan")) for column in columns)
             for name, counters in rows]
    script = f"""
set terminal svg size 900,420 font "sans,11"
set output "{path}"
set title "{title}, the floor is 1"
set style data histogram
set style histogram clustered gap 1
set style fill solid 0.8 border -1
set logscale y
set grid ytics
set xtics rotate by -20 noenhanced
set key outside top right noenhanced
$data << END
{chr(10).join(data)}
END
plot 1 notitle with lines lc rgb "black", for [i=2:{len(columns) + 1}] $data using i:xtic(1) title columnheader(i)
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    return True


def main():
    results, docs, names = sys.argv[1], sys.argv[2], sys.argv[3:]
    text = ["# Performance", "",
            "Written by `scripts/bench.sh`. Every figure is a ratio measured in one run on one machine, the median"
            " of repetitions; absolute times stand beside them for orientation alone.", ""]
    for name in names:
        path = os.path.join(results, name + ".json")
        if not os.path.exists(path):
            continue
        with open(path, encoding="utf-8") as file:
            result = json.load(file)
        rows = medians(result)
        if not rows:
            continue
        title, meaning, columns = SECTIONS.get(name, (name, "", ()))
        context = result["context"]
        text += [f"## {title}", "", meaning, "", table(rows), ""]
        svg = name + ".svg"
        if plot(rows, columns, title, os.path.join(docs, svg)):
            text += [f"![{title}]({svg})", ""]
        load = ", ".join(f"{value:.1f}" for value in context["load_avg"])
        text += [f"`{name}`, {context['date'][:16].replace('T', ' ')}, {context['num_cpus']} processors of"
                 f" {context['mhz_per_cpu']} MHz, load before {load}.", ""]
    with open(os.path.join(docs, "performance.md"), "w", encoding="utf-8") as file:
        file.write("\n".join(text).rstrip() + "\n")


main()
