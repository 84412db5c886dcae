#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Writes benchmarks.md and benchmarks.svg from the results of the benchmarks.

Usage: report.py RESULTS BUILD TARGET

RESULTS is the folder of the results, BUILD the build that produced them, TARGET the output folder.
The text around the figures is report.md in the folder of this script.
"""

import csv
import json
import math
import pathlib
import platform
import re
import statistics
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
OURS = "vexil"

# Name of the row, package, differences from a strict and exact reader and writer.
LIBRARIES = [
    (OURS, None, "this library; keeps the order of members and repeated names; writes six digits"),
    ("nlohmann", "nlohmann-json3-dev", "sorts members and keeps one member per name"),
    ("rapidjson", "rapidjson-dev", "full precision and validated encodings, both enabled"),
    (
        "boost.json",
        "libboost-json[0-9.]*-dev",
        "keeps one member per name; a float may be off by its last bit, as for 8 % of the number "
        "texts below",
    ),
    ("jsoncpp", "libjsoncpp-dev", "strict mode; sorts members; accepts any bytes as text"),
    ("jansson", "libjansson-dev", "keeps one member per name; refuses NUL characters"),
    (
        "json-c",
        "libjson-c-dev",
        "strict and validated, both enabled; keeps one member per name; accepts surrogates as "
        "characters; writes a float by copying the text it was read from",
    ),
    (
        "yajl",
        "libyajl-dev",
        "tree parser; accepts surrogates as characters; a text ends at a NUL character",
    ),
    (
        "simdjson",
        "libsimdjson-dev",
        "a bound for comparison: a read-only tape instead of a tree of values; a new parser for "
        "each text, as for all others",
    ),
]
COLOURS = {
    "vexil": "#d62728",
    "nlohmann": "#1f77b4",
    "rapidjson": "#2ca02c",
    "boost.json": "#9467bd",
    "jsoncpp": "#8c564b",
    "jansson": "#e377c2",
    "json-c": "#7f7f7f",
    "yajl": "#bcbd22",
    "simdjson": "#17becf",
}
LISTS_AND_TEXTS = ["list", "ascii", "non-ascii", "escapes"]


def run(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, cwd=ROOT).stdout.strip()
    except OSError:
        return ""


def median_of_rows(file, measure):
    """Maps each row to its median and its interquartile range relative to the median."""
    rows = {}
    measured = json.loads(file.read_text())["benchmarks"]
    for row in sorted(measured, key=lambda row: row["family_index"]):
        if row["run_type"] == "iteration":
            name = re.sub(r"/(repeats:\d+|real_time)", "", row["run_name"])
            rows.setdefault(name, []).append(measure(row))
    result = {}
    for name, values in rows.items():
        low, middle, high = statistics.quantiles(values, n=4, method="inclusive")
        result[name] = (middle, (high - low) / middle)
    return result


def split(rows):
    """{"a/b/c": value} becomes {"a": {"b": {"c": value}}}; the last key may contain slashes."""
    tree = {}
    for name, value in rows.items():
        first, second, third = name.split("/", 2)
        tree.setdefault(first, {}).setdefault(second, {})[third] = value
    return tree


def geometric_mean(values):
    return math.exp(statistics.fmean(math.log(value) for value in values))


def show(value):
    return f"{value:.0f}" if value >= 100 else f"{value:.3g}"


def table(heads, rows, rulers=None):
    rulers = rulers or ["---"] + ["---:"] * (len(heads) - 1)
    return "".join("| " + " | ".join(row) + " |\n" for row in [heads, rulers] + rows)


def matrix(corner, cells, columns, mean=None):
    """One row for each key of cells and, with the name mean, one for the geometric means."""
    rows = []
    for name, values in cells.items():
        shown = [show(values[column]) if column in values else "-" for column in columns]
        rows.append([name] + shown)
    if mean:
        means = [geometric_mean([values[column] for values in cells.values()]) for column in columns]
        rows.append([mean] + [show(value) for value in means])
    return table([corner] + columns, rows)


def present(libraries, group):
    """The libraries that have rows in a group."""
    return [name for name in libraries if all(name in values for values in group.values())]


def medians(group):
    return {
        name: {key: median for key, (median, _) in values.items()}
        for name, values in group.items()
    }


class Goals:
    def __init__(self):
        self.rows = []

    def at_least(self, name, limit, measured):
        self.add(name, f"at least {limit:g}", measured, measured >= limit)

    def at_most(self, name, limit, measured):
        self.add(name, f"at most {limit:g}", measured, measured <= limit)

    def add(self, name, goal, measured, is_reached):
        verdict = "reached" if is_reached else "**not reached**"
        self.rows.append([name, goal, f"{measured:.2f}", verdict])


def times_faster(group, peer):
    return geometric_mean([values[OURS] / values[peer] for values in group.values()])


JSON_GOALS = {
    "parse": ("parse and free", {"nlohmann": 3, "jansson": 4.5, "yajl": 2, "rapidjson": 1}),
    "write": ("write", {"nlohmann": 2.5, "jansson": 6, "rapidjson": 1.3}),
    "clone": ("clone and free", {"nlohmann": 1.7}),
}


def json_goals(goals, groups):
    for kind, (name, peers) in JSON_GOALS.items():
        for peer, limit in peers.items():
            if all(peer in values for values in groups[kind].values()):
                factor = times_faster(groups[kind], peer)
                goals.at_least(f"{name}, times as fast as {peer}", limit, factor)


def number_goals(goals, sets):
    ratios = {name: values["strToDouble"] / values["strtod"] for name, values in sets.items()}
    goals.at_most("text to double, relative to strtod", 0.9, geometric_mean(ratios.values()))
    worst = max(ratios, key=ratios.get)
    goals.at_most(f"the same, the slowest set ({worst})", 1.15, ratios[worst])


def heap_goals(goals, peaks):
    for name in LISTS_AND_TEXTS:
        ratio = peaks[name][OURS] / peaks[name]["nlohmann"]
        goals.at_most(f"peak heap for {name}, relative to nlohmann", 1, ratio)


def program_goals(goals, sizes, link):
    for plugin, language in [("c", "C"), ("cpp", "C++")]:
        row = {
            name: sizes["1KB"][f"{name}/{link}/{plugin}"]
            for name in ("certbridge", "floor", "handwritten")
        }
        name = f"program at 1 KB, plugin in {language}, relative to the "
        goals.at_most(name + "floor", 1.25, row["certbridge"] / row["floor"])
        goals.at_most(name + "hand-written one", 0.95, row["certbridge"] / row["handwritten"])
    time = {size: values[f"certbridge/{link}/cpp"] for size, values in sizes.items()}
    handwritten = sizes["10MB"][f"handwritten/{link}/cpp"]
    goals.at_most(
        "program at 10 MB, relative to the hand-written one", 0.8, time["10MB"] / handwritten
    )
    start = time["1KB"]
    per_megabyte = [
        (time[size] - start) / megabytes for size, megabytes in [("1MB", 1), ("10MB", 10), ("100MB", 100)]
    ]
    goals.at_most(
        "time per MB above the 1 KB run, the worst of 1, 10 and 100 MB relative to the best",
        1.25,
        max(per_megabyte) / min(per_megabyte),
    )


def read_heap(file):
    peaks, blocks = {}, {}
    for row in csv.DictReader(file.open()):
        size = int(row["bytes"])
        peaks.setdefault(row["document"], {})[row["library"]] = int(row["peak"]) / size
        blocks.setdefault(row["document"], {})[row["library"]] = int(row["blocks"]) / size * 1000
    return peaks, blocks


def machine(context, build):
    def find(file, pattern):
        found = re.search(pattern, pathlib.Path(file).read_text(), re.M)
        return found.group(1) if found else "unknown"

    def setting(name):
        return find(build / "CMakeCache.txt", rf"^{name}:\w+=(.*)$")

    compiler = run(setting("CMAKE_CXX_COMPILER"), "--version").splitlines()[0]
    sources = ("vexil", "certbridge", "tool", "benchmarks")
    changed = run("git", "status", "--porcelain", "--", *sources)
    commit = run("git", "rev-parse", "--short", "HEAD")
    memory = int(find("/proc/meminfo", r"^MemTotal:\s*(\d+)")) / 1e6
    model = find("/proc/cpuinfo", r"^model name.*: (.*)$")
    processor = f"{context['num_cpus']} x {model}, {context['mhz_per_cpu']} MHz"
    release = platform.freedesktop_os_release()["PRETTY_NAME"]
    library = " ".join(platform.libc_ver())
    rows = [
        ["processor", f"{processor}, {memory:.0f} GB of memory"],
        ["system", f"{release}, Linux {platform.release()}, {library}"],
        ["compiler", f"{compiler}, `{setting('CMAKE_CXX_FLAGS_RELEASE')}`"],
        ["commit", commit + (" with uncommitted changes" if changed else "")],
        ["date", context["date"][:10]],
    ]
    return table(["", ""], rows, ["---", "---"])


def peers():
    rows = []
    for name, package, remark in LIBRARIES:
        version = package and run("dpkg-query", "-W", "-f", "${Version} ", package).split(" ")[0]
        rows.append([name, version or "", remark])
    return table(["library", "version", "remarks"], rows, ["---"] * 3)


def spread_table(runs):
    rows = []
    for name, medians_and_spreads in runs.items():
        spreads = sorted(spread for _, spread in medians_and_spreads.values())
        rows.append([name, str(len(spreads)), f"{spreads[len(spreads) // 2]:.1%}",
                     f"{spreads[int(len(spreads) * 0.95)]:.1%}"])
    return table(["", "rows", "half of the rows within", "19 of 20 within"], rows)


class Plot:
    """Two panels of dots: a line for each document, MB/s on a logarithmic scale."""

    WIDTH, LEFT, TOP, PANEL, GAP, LINE = 1000, 110, 74, 410, 40, 26
    TITLES = {"parse": "parse and free, MB/s", "write": "write, MB/s"}

    def __init__(self, groups, libraries):
        self.groups, self.libraries = groups, libraries
        self.documents = list(groups["parse"])
        self.height = self.TOP + self.LINE * len(self.documents) + 40
        speeds = [
            speed
            for group in groups.values()
            for values in group.values()
            for speed in values.values()
        ]
        self.first = math.floor(math.log10(min(speeds)))
        self.last = math.ceil(math.log10(max(speeds)))
        self.elements = []

    def draw(self):
        """The image as the text of an SVG file."""
        self.add_legend()
        for number, kind in enumerate(self.TITLES):
            start = self.LEFT + number * (self.PANEL + self.GAP)
            self.add_scale(kind, start)
            for line, document in enumerate(self.documents):
                self.add_dots(kind, start, self.TOP + line * self.LINE + 8, document)
        head = (
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {self.WIDTH} {self.height}" '
            'font-family="sans-serif" font-size="13">'
        )
        background = f'<rect width="{self.WIDTH}" height="{self.height}" fill="white"/>'
        return "\n".join([head + background, *self.elements, "</svg>"]) + "\n"

    def add_legend(self):
        for position, library in enumerate(self.libraries):
            x = self.LEFT + position * 96
            self.add_dot(x, 18, 5, library)
            self.add_text(x + 9, 22, library)

    def add_scale(self, kind, start):
        self.add_text(start, 52, self.TITLES[kind], 'font-weight="bold"')
        for power in range(self.first, self.last + 1):
            x = self.x_of(10**power, start)
            self.add_line(x, x, self.TOP - 10, self.height - 34, "#ddd")
            self.add_text(x, self.height - 16, f"{10**power:g}", 'text-anchor="middle"')

    def add_dots(self, kind, start, y, document):
        self.add_line(start, start + self.PANEL, y, y, "#eee")
        if start == self.LEFT:
            self.add_text(self.LEFT - 12, y + 4, document, 'text-anchor="end"')
        speeds = self.groups[kind][document]
        for library in reversed(self.libraries):
            if library in speeds:
                x = self.x_of(speeds[library], start)
                self.add_dot(x, y, 7 if library == OURS else 5, library)

    def x_of(self, speed, start):
        position = (math.log10(speed) - self.first) / (self.last - self.first)
        return start + position * self.PANEL

    def add_dot(self, x, y, radius, library):
        colour = COLOURS[library]
        self.elements.append(
            f'<circle cx="{x:.1f}" cy="{y}" r="{radius}" fill="{colour}" fill-opacity="0.85"/>'
        )

    def add_line(self, x1, x2, y1, y2, colour):
        self.elements.append(
            f'<line x1="{x1:.1f}" x2="{x2:.1f}" y1="{y1}" y2="{y2}" stroke="{colour}"/>'
        )

    def add_text(self, x, y, text, style=""):
        self.elements.append(f'<text x="{x:.1f}" y="{y}" {style}>{text}</text>')


def program_tables(sizes, link):
    """The tables of the combinations at 1 KB and of the shipped one at each size."""
    combinations = {}
    for name, value in sizes["1KB"].items():
        program, runtime, plugin = name.split("/")
        language = {"c": "C", "cpp": "C++"}[plugin]
        combinations.setdefault(f"{runtime} runtime, plugin in {language}", {})[program] = value
    shipped = {
        size: {
            name.split("/")[0]: value
            for name, value in values.items()
            if name.endswith(f"/{link}/cpp")
        }
        for size, values in sizes.items()
    }
    names = ["floor", "handwritten", "certbridge"]
    return matrix("1 KB", combinations, names), matrix("request", shipped, names)


def usage_table(results, counter, link):
    """A counter of the shipped program and its peers at each size."""
    rows = median_of_rows(results / "programs.json", lambda row: row[counter])
    return program_tables(medians(split(rows)["program"]), link)[1]


def read_rows(results):
    """The medians and spreads of each benchmark program by row."""
    return {
        "parse, read, write and clone": median_of_rows(
            results / "json.json", lambda row: row["bytes_per_second"] / 1e6
        ),
        "text to double": median_of_rows(
            results / "numbers.json", lambda row: 1e9 / row["items_per_second"]
        ),
        "whole programs": median_of_rows(
            results / "programs.json", lambda row: row["real_time"]
        ),
    }


def main():
    results, build, target = map(pathlib.Path, sys.argv[1:])
    context = json.loads((results / "programs.json").read_text())["context"]
    link = context["shipped_link"]
    rows = read_rows(results)
    groups = {kind: medians(group) for kind, group in split(rows["parse, read, write and clone"]).items()}
    numbers = medians(split(rows["text to double"])["number"])
    programs = medians(split(rows["whole programs"])["program"])
    peaks, blocks = read_heap(results / "heap.csv")
    libraries = [name for name, _, _ in LIBRARIES if name in groups["parse"]["request"]]

    goals = Goals()
    json_goals(goals, groups)
    number_goals(goals, numbers)
    heap_goals(goals, peaks)
    program_goals(goals, programs, link)
    at_one_kilobyte, at_all_sizes = program_tables(programs, link)
    converters = list(next(iter(numbers.values())))
    values = {
        "goals": table(["measurement", "goal", "measured", ""], goals.rows),
        "parse": matrix("MB/s", groups["parse"], libraries, "geometric mean"),
        "write": matrix("MB/s", groups["write"], libraries, "geometric mean"),
        "read": matrix("MB/s", groups["read"], present(libraries, groups["read"]), "geometric mean"),
        "clone": matrix(
            "MB/s", groups["clone"], present(libraries, groups["clone"]), "geometric mean"
        ),
        "numbers": matrix("ns", numbers, converters, "geometric mean"),
        "peaks": matrix("bytes", peaks, libraries),
        "blocks": matrix("blocks", blocks, libraries),
        "programs": at_one_kilobyte,
        "sizes": at_all_sizes,
        "memory": usage_table(results, "peak_megabytes", link),
        "faults": usage_table(results, "page_faults", link),
        "link": link,
        "machine": machine(context, build),
        "peers": peers(),
        "spread": spread_table(rows),
    }
    template = (ROOT / "benchmarks/report.md").read_text()
    page = re.sub(r"\{\{(\w+)\}\}", lambda mark: values[mark[1]].rstrip("\n"), template)
    target.mkdir(exist_ok=True)
    (target / "benchmarks.md").write_text(page)
    (target / "benchmarks.svg").write_text(Plot(groups, libraries).draw())
    print(values["goals"])


main()
