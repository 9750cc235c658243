#!/usr/bin/env python3
"""Writes performance.md and its plots from the results of the benchmarks.

report.py RESULTS DOCS
"""
import json
import math
import operator
import os
import re
import sys

# What the tables show of each benchmark. A column is a counter, or the quotient of two (a/b), with its heading
# and its target: a comparison with a number or with another counter, or none. a@NAME is a over that of the first
# benchmark whose name begins so. A column that no result has is left out, as is a benchmark without results. `rows` chooses the benchmarks of a table by how their names
# begin. `plot` names the counters that are drawn.
AT_MOST, MORE, AT_LEAST = ("at most", operator.le), ("more than", operator.gt), ("at least", operator.ge)


def peers(names, target):
    return [(name, name, target) for name in names]


CODECS = ["protobuf", "msgpack", "flatbuffers", "json"]
SECTIONS = [
    dict(benchmark="codec_bench", title="Codec", floor="code written by hand for each record",
         about="Time over that of the floor: straight-line code with the same allocations and copies, no checks,"
               " and the length of the body known beforehand. Encoding makes one fresh body; decoding makes the"
               " same owned records, each string an allocation of its own, and frees them.",
         tables=[("encode/", [("library", "library", (AT_MOST, 1.15))] + peers(CODECS, (MORE, "library"))),
                 ("decode/", [("library", "library", (AT_MOST, 1.10))] + peers(CODECS, (MORE, "library")))],
         plot=["library"] + CODECS),
    dict(benchmark="exchange_bench", title="Exchange", floor="raw sockets",
         about="Exchanges per second over those of the floor: raw sockets that move the same bytes, with connect,"
               " one send, receive and close. `channel` is the library's and moves them as well. `agent`, the"
               " library's agent calls, and all peers encode the reply from records and decode it into records."
               " Each exchange has a connection of its own, but for `grpc` and `http_kept`.",
         tables=[("", [("channel", "channel", (AT_LEAST, 0.90)), ("channel_p50", "its median latency", None),
                       ("channel_p99", "its p99 latency", (AT_MOST, 1.2)), ("agent", "agent", None)]
                  + peers(["grpc", "http", "http_kept"], None)),
                 ("page/", [("agent/grpc", "agent over grpc", (MORE, 2)),
                            ("agent/http", "agent over http", (MORE, 5)),
                            ("agent/http_kept", "agent over http_kept", (MORE, 5)),
                            ("floor/http_kept", "the floor over http_kept", None)])],
         plot=["channel", "agent", "grpc", "http", "http_kept"]),
    dict(benchmark="load_bench", title="Loading", floor="the XML parser alone",
         about="Time over that of reading the documents and parsing them into trees on one thread.",
         tables=[("", [("ratio", "time", (AT_MOST, 0.8)), ("cpu_ratio", "time on processors", None),
                       ("document_us@load", "a document's time over that in the first library", (AT_MOST, 1.15)),
                       ("document_cpu_us@load", "the same on processors", None),
                       ("memory", "peak memory over the bytes of the strings kept", (AT_MOST, 2.5)),
                       ("reparsed", "documents parsed by a second scan", (AT_MOST, 0)),
                       ("rescan", "second scan over the first", (AT_MOST, 0.1))])],
         plot=["ratio"]),
    dict(benchmark="query_bench", title="Queries", floor="SQLite",
         about="How many times faster than SQLite in memory with covering indices and totals kept in a table. From"
               " the request to the encoded body, inside the server.",
         tables=[(("page/category", "page/kind/", "page/kind_deep"), [("ratio", "times faster", (AT_LEAST, 15))]),
                 (("page/area", "page/year", "page/dimension", "page/kind_a", "page/kind_y", "page/kind_di", "page/all"),
                  [("ratio", "times faster", (AT_LEAST, 5))]),
                 (("detail", "filter", "category", "random"), [("ratio", "times faster", None)])], plot=["ratio"]),
    dict(benchmark="transfer_bench", title="Transfer", floor="copies of the strings",
         about="The movies of a partition from a server: time over that of copying the strings of the body into"
               " fresh allocations, and over that with the allocations of the records.",
         tables=[("", [("ratio", "over the strings", None), ("to_records", "over the records", None)])],
         plot=[]),
    dict(benchmark="decode_bench", title="Long bodies", floor="the shortest body",
         about="What a byte costs to decode, over the same in the shortest body of the kind.",
         tables=[("", [("ratio", "a byte", None)])], plot=[]),
    dict(benchmark="list_bench", title="Lists", floor="",
         about="Time for each node of a list that is built, over that of 1,000 nodes that are added at the tail.",
         tables=[("", [("node_ns@at_tail/1000", "a node", None)])], plot=[]),
]


def results_of(path):
    """The context, and [(name, {counter: value})]: medians where a benchmark was repeated."""
    with open(path, encoding="utf-8") as file:
        result = json.load(file)
    rows = {}
    for run in result["benchmarks"]:
        if run.get("aggregate_name", "median") != "median":
            continue
        name = re.sub(r"/(iterations|repeats|min_time|min_warmup_time):[^/]*|/(manual|real|process)_time", "",
                      run["run_name"])
        rows[re.sub(r"/{2,}.*/", "/", name)] = run
    return result["context"], list(rows.items())


def value_of(counters, column, rows):
    column, _, unit = column.partition("@")
    parts = [counters.get(name) for name in column.split("/")]
    if None in parts:
        return None
    value = parts[0] / math.prod(parts[1:])
    return value / next(value_of(other, column, rows) for name, other in rows if name.startswith(unit)) if unit else value


def shown(value):
    return f"{value:,.0f}" if value >= 1000 else f"{value:.3g}" if value >= 100 else f"{value:.2f}"


def cell(counters, column, target, rows):
    value = value_of(counters, column, rows)
    if value is None:
        return ""
    if target is None:
        return shown(value)
    (_, is_reached), limit = target
    reached = is_reached(value, counters[limit] if isinstance(limit, str) else limit)
    return shown(value) if reached else f"**{shown(value)}** (missed)"


def heading(text, target):
    if target is None:
        return text
    (words, _), limit = target
    return f"{text}, {words} {limit if isinstance(limit, str) else format(limit, 'g')}"


def table(rows, columns):
    columns = [column for column in columns
               if any(value_of(counters, column[0], rows) is not None for _, counters in rows)]
    if not rows or not columns:
        return []
    lines = ["| | " + " | ".join(heading(text, target) for _, text, target in columns) + " |",
             "|---" + "|---:" * len(columns) + "|"]
    for name, counters in rows:
        cells = [cell(counters, column, target, rows) for column, _, target in columns]
        lines.append(f"| {name} | " + " | ".join(cells) + " |")
    return lines + [""]


COLOURS = ["#1b6ca8", "#d98324", "#5a9367", "#a23b52", "#7a6fae"]
LEFT, WIDTH, BAR = 190, 520, 11  # pixels: of the names, of the longest bar, of a bar's height


def plot(rows, columns, floor, path):
    """Bars on a logarithmic scale, with a line where the floor is. False when there is nothing to draw."""
    columns = [column for column in columns if any(column in counters for _, counters in rows)]
    values = [counters[column] for _, counters in rows for column in columns if column in counters]
    if not values:
        return False
    low = math.log10(min(values + [1])) - 0.1
    scale = WIDTH / (math.log10(max(values + [1])) - low)
    parts, y = [], 34
    for i, column in enumerate(columns):
        parts.append(f'<rect x="{LEFT + 100 * i}" y="6" width="10" height="10" fill="{COLOURS[i]}"/>'
                     f'<text x="{LEFT + 14 + 100 * i}" y="15">{column}</text>')
    for name, counters in rows:
        parts.append(f'<text x="4" y="{y + 10}">{name}</text>')
        for i, column in enumerate(columns):
            if column in counters:
                width = (math.log10(counters[column]) - low) * scale
                parts.append(f'<rect x="{LEFT}" y="{y}" width="{width:.0f}" height="{BAR - 1}" fill="{COLOURS[i]}"/>'
                             f'<text x="{LEFT + width + 4:.0f}" y="{y + 9}">{shown(counters[column])}</text>')
                y += BAR
        y += 8
    line = LEFT - low * scale
    parts.append(f'<path d="M{line:.0f} 24V{y}" stroke="#000" stroke-dasharray="3"/>'
                 f'<text x="{line + 3:.0f}" y="30">{floor}: 1</text>')
    with open(path, "w", encoding="utf-8") as file:
        file.write(f'<svg xmlns="http://www.w3.org/2000/svg" width="{LEFT + WIDTH + 60}" height="{y + 8}"'
                   ' font-family="sans-serif" font-size="10">\n<rect width="100%" height="100%" fill="#fff"/>\n'
                   + "\n".join(parts) + "\n</svg>\n")
    return True


def section_text(section, results, docs):
    name = section["benchmark"]
    path = os.path.join(results, name + ".json")
    notes = os.path.join(os.path.dirname(__file__), "notes", name + ".md")
    if not os.path.exists(path) and not os.path.exists(notes):
        return []
    context, rows = results_of(path) if os.path.exists(path) else (None, [])
    text = [f"## {section['title']}", "", section["about"], ""]
    for begin, columns in section["tables"]:
        text += table([row for row in rows if row[0].startswith(begin)], columns)
    if plot(rows, section["plot"], section["floor"], os.path.join(docs, name + ".svg")):
        text += [f"![{section['title']}, on a logarithmic scale]({name}.svg)", ""]
    if os.path.exists(notes):
        with open(notes, encoding="utf-8") as file:
            text += [file.read().rstrip(), ""]
    if context is None:
        return text + [f"`scripts/bench.sh {name}` measures it.", ""]
    load = ", ".join(f"{value:.1f}" for value in context["load_avg"])
    return text + [f"`scripts/bench.sh {name}`, {context['date'][:10]}, {context['num_cpus']} processors, load"
                   f" before {load}.", ""]


def main():
    results, docs = sys.argv[1:]
    text = ["# Performance", "",
            "Written by `scripts/bench.sh`. Every figure is a ratio measured in one run on one machine, the median of"
            " repetitions; what misses its target is marked. `TAVISYS_DATA` names the folder of documents that"
            " the records come from; without it they are those of `samples/library`.", ""]
    for section in SECTIONS:
        text += section_text(section, results, docs)
    with open(os.path.join(docs, "performance.md"), "w", encoding="utf-8") as file:
        file.write("\n".join(text).rstrip() + "\n")


if __name__ == "__main__":
    main()
