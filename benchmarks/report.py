#!/usr/bin/env python3
"""Makes benchmarks.md and benchmarks.svg of what the benchmarks measured.

Usage: report.py RESULTS BUILD TARGET: the folder of the results, the build they come from and the
folder to write to. The text around the figures is report.md beside this script."""
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

# Name of the row, package, how it differs from a strict and exact reader and writer.
LIBRARIES = [
    (OURS, None, "this one; keeps members in order, and all of a name; writes six digits"),
    ("nlohmann", "nlohmann-json3-dev", "sorts members and keeps one of a name"),
    ("rapidjson", "rapidjson-dev", "full precision and validated encodings, both switched on"),
    ("boost.json", "libboost-json[0-9.]*-dev", "keeps one of a name; a float may be off by its "
     "last bit, as 8 % of the number texts below are"),
    ("jsoncpp", "libjsoncpp-dev", "strict mode; sorts members; takes any bytes for text"),
    ("jansson", "libjansson-dev", "keeps one of a name; refuses zero characters"),
    ("json-c", "libjson-c-dev", "strict and validated, both switched on; keeps one of a name; "
     "takes surrogates for characters; writes a float by copying the text it was read from"),
    ("yajl", "libyajl-dev", "its tree parser; takes surrogates for characters; a text ends at a "
     "zero character"),
    ("simdjson", "libsimdjson-dev", "the mark near the limit: a read-only tape, no tree of values "
     "to change; a new parser for each text, as for all others"),
]
COLOURS = dict(zip([name for name, _, _ in LIBRARIES],
                   ["#d62728", "#1f77b4", "#2ca02c", "#9467bd", "#8c564b",
                    "#e377c2", "#7f7f7f", "#bcbd22", "#17becf"]))
LISTS_AND_TEXTS = ["list", "ascii", "non-ascii", "escapes"]


def run(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True, cwd=ROOT).stdout.strip()
    except OSError:
        return ""


def median_of_rows(file, measure):
    """Row name -> (median, spread), the spread being the middle half of the repetitions."""
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
    """{"a/b/c": value} -> {"a": {"b": {"c": value}}}, the rest of the name in the last key."""
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
    """One row for each key of cells, and a last one with what mean makes of each column."""
    rows = [[name] + [show(values[column]) if column in values else "-" for column in columns]
            for name, values in cells.items()]
    if mean:
        rows.append([mean] + [show(geometric_mean([values[column] for values in cells.values()]))
                              for column in columns])
    return table([corner] + columns, rows)


def medians(group):
    return {name: {key: value[0] for key, value in values.items()}
            for name, values in group.items()}


class Goals:
    def __init__(self):
        self.rows = []

    def at_least(self, what, limit, measured):
        self.add(what, f"at least {limit:g}", measured, measured >= limit)

    def at_most(self, what, limit, measured):
        self.add(what, f"at most {limit:g}", measured, measured <= limit)

    def add(self, what, goal, measured, reached):
        verdict = "reached" if reached else "**not reached**"
        self.rows.append([what, goal, f"{measured:.2f}", verdict])


def times_faster(group, peer):
    return geometric_mean([values[OURS] / values[peer] for values in group.values()])


def json_goals(goals, groups):
    limits = {"parse": {"nlohmann": 3, "jansson": 4.5, "yajl": 2, "rapidjson": 1},
              "write": {"nlohmann": 2.5, "jansson": 6, "rapidjson": 1.3}}
    for kind, peers in limits.items():
        what = {"parse": "parse and free", "write": "write"}[kind]
        for peer, limit in peers.items():
            if all(peer in values for values in groups[kind].values()):
                goals.at_least(f"{what}, times as fast as {peer}", limit,
                               times_faster(groups[kind], peer))


def number_goals(goals, sets):
    ratios = {name: values["strToDouble"] / values["strtod"] for name, values in sets.items()}
    goals.at_most("text to double, part of strtod's time", 0.9, geometric_mean(ratios.values()))
    worst = max(ratios, key=ratios.get)
    goals.at_most(f"the same, the slowest set ({worst})", 1.15, ratios[worst])


def heap_goals(goals, peaks):
    for name in LISTS_AND_TEXTS:
        goals.at_most(f"peak heap for {name}, part of nlohmann's", 1,
                      peaks[name][OURS] / peaks[name]["nlohmann"])


def program_goals(goals, sizes, link):
    for plugin, language in [("c", "C"), ("cpp", "C++")]:
        row = {name: sizes["1KB"][f"{name}/{link}/{plugin}"]
               for name in ("certbridge", "floor", "handwritten")}
        what = f"program at 1 KB, plugin in {language}, part of "
        goals.at_most(what + "the floor's time", 1.25, row["certbridge"] / row["floor"])
        goals.at_most(what + "the hand-written one's", 0.95,
                      row["certbridge"] / row["handwritten"])
    time = {size: values[f"certbridge/{link}/cpp"] for size, values in sizes.items()}
    goals.at_most("program at 10 MB, part of the hand-written one's time", 0.8,
                  time["10MB"] / sizes["10MB"][f"handwritten/{link}/cpp"])
    start = time["1KB"]
    per_megabyte = [(time[size] - start) / megabytes
                    for size, megabytes in [("1MB", 1), ("10MB", 10), ("100MB", 100)]]
    goals.at_most("linear: time a MB above the 1 KB run, the worst of 1, 10 and 100 MB to the best",
                  1.25, max(per_megabyte) / min(per_megabyte))


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
    changed = run("git", "status", "--porcelain", "--", "vexil", "tool", "benchmarks")
    memory = int(find("/proc/meminfo", r"^MemTotal:\s*(\d+)")) / 1e6
    model = find("/proc/cpuinfo", r"^model name.*: (.*)$")
    return table(["", ""], [
        ["processor", f"{context['num_cpus']} x {model}, {context['mhz_per_cpu']} MHz, "
         f"{memory:.0f} GB of memory"],
        ["system", f"{platform.freedesktop_os_release()['PRETTY_NAME']}, Linux "
         f"{platform.release()}, {' '.join(platform.libc_ver())}"],
        ["compiler", f"{compiler}, `{setting('CMAKE_CXX_FLAGS_RELEASE')}`"],
        ["commit", run("git", "rev-parse", "--short", "HEAD") +
         (" with uncommitted changes" if changed else "")],
        ["date", context["date"][:10]],
    ], ["---", "---"])


def peers():
    rows = []
    for name, package, remark in LIBRARIES:
        version = package and run("dpkg-query", "-W", "-f", "${Version} ", package).split(" ")[0]
        rows.append([name, version or "", remark])
    return table(["library", "version", "what to know"], rows, ["---"] * 3)


def spread_table(runs):
    rows = []
    for name, medians_and_spreads in runs.items():
        spreads = sorted(spread for _, spread in medians_and_spreads.values())
        rows.append([name, str(len(spreads)), f"{spreads[len(spreads) // 2]:.1%}",
                     f"{spreads[int(len(spreads) * 0.95)]:.1%}"])
    return table(["", "rows", "half of the rows within", "19 of 20 within"], rows)


def plot(groups, libraries):
    """Two panels of dots: a line for each document, MB/s on a logarithmic scale."""
    width, left, gap, panel, line = 1000, 110, 40, 410, 26
    documents = list(groups["parse"])
    top, height = 74, 74 + line * len(documents) + 40
    everything = [value for group in groups.values() for values in group.values()
                  for value in values.values()]
    first, last = math.floor(math.log10(min(everything))), math.ceil(math.log10(max(everything)))
    svg = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {width} {height}" '
           f'font-family="sans-serif" font-size="13"><rect width="{width}" height="{height}" '
           'fill="white"/>']
    for i, library in enumerate(libraries):
        x = left + i * 96
        svg.append(f'<circle cx="{x}" cy="18" r="5" fill="{COLOURS[library]}"/>'
                   f'<text x="{x + 9}" y="22">{library}</text>')
    for number, (kind, title) in enumerate([("parse", "parse and free, MB/s"),
                                            ("write", "write, MB/s")]):
        start = left + number * (panel + gap)

        def place(value):
            return start + (math.log10(value) - first) / (last - first) * panel

        svg.append(f'<text x="{start}" y="52" font-weight="bold">{title}</text>')
        for power in range(first, last + 1):
            x = place(10 ** power)
            svg.append(f'<line x1="{x:.1f}" x2="{x:.1f}" y1="{top - 10}" y2="{height - 34}" '
                       f'stroke="#ddd"/><text x="{x:.1f}" y="{height - 16}" '
                       f'text-anchor="middle">{10 ** power:g}</text>')
        for i, document in enumerate(documents):
            y = top + i * line + 8
            svg.append(f'<line x1="{start}" x2="{start + panel}" y1="{y}" y2="{y}" stroke="#eee"/>')
            if number == 0:
                svg.append(f'<text x="{left - 12}" y="{y + 4}" text-anchor="end">{document}</text>')
            for library in reversed(libraries):
                if library in groups[kind][document]:
                    radius = 7 if library == OURS else 5
                    svg.append(f'<circle cx="{place(groups[kind][document][library]):.1f}" '
                               f'cy="{y}" r="{radius}" fill="{COLOURS[library]}" '
                               'fill-opacity="0.85"/>')
    return "\n".join(svg + ["</svg>"]) + "\n"


def program_tables(sizes, link):
    combinations = {}
    for name, value in sizes["1KB"].items():
        program, how, plugin = name.split("/")
        language = {"c": "C", "cpp": "C++"}[plugin]
        combinations.setdefault(f"{how} runtime, plugin in {language}", {})[program] = value
    shipped = {size: {name.split("/")[0]: value for name, value in values.items()
                      if name.endswith(f"/{link}/cpp")} for size, values in sizes.items()}
    names = ["floor", "handwritten", "certbridge"]
    return matrix("1 KB", combinations, names), matrix("request", shipped, names)


def main():
    results, build, target = map(pathlib.Path, sys.argv[1:])
    context = json.loads((results / "programs.json").read_text())["context"]
    link = context["shipped_link"]
    json_rows = median_of_rows(results / "json.json", lambda row: row["bytes_per_second"] / 1e6)
    number_rows = median_of_rows(results / "numbers.json",
                                 lambda row: 1e9 / row["items_per_second"])
    program_rows = median_of_rows(results / "programs.json", lambda row: row["real_time"])
    groups = {kind: medians(group) for kind, group in split(json_rows).items()}
    numbers = medians(split(number_rows)["number"])
    programs = medians(split(program_rows)["program"])
    peaks, blocks = read_heap(results / "heap.csv")
    libraries = [name for name, _, _ in LIBRARIES if name in groups["parse"]["request"]]

    goals = Goals()
    json_goals(goals, groups)
    number_goals(goals, numbers)
    heap_goals(goals, peaks)
    program_goals(goals, programs, link)
    at_one, at_all = program_tables(programs, link)
    text = (ROOT / "benchmarks/report.md").read_text()
    values = {
        "goals": table(["what", "goal", "measured", ""], goals.rows),
        "parse": matrix("MB/s", groups["parse"], libraries, "geometric mean"),
        "write": matrix("MB/s", groups["write"], libraries, "geometric mean"),
        "numbers": matrix("ns", numbers, list(next(iter(numbers.values()))), "geometric mean"),
        "peaks": matrix("bytes", peaks, libraries),
        "blocks": matrix("blocks", blocks, libraries),
        "programs": at_one, "sizes": at_all, "link": link,
        "machine": machine(context, build), "peers": peers(),
        "spread": spread_table({"parse and write": json_rows, "text to double": number_rows,
                                "whole programs": program_rows}),
    }
    target.mkdir(exist_ok=True)
    (target / "benchmarks.md").write_text(
        re.sub(r"\{\{(\w+)\}\}", lambda found: values[found.group(1)].rstrip("\n"), text))
    (target / "benchmarks.svg").write_text(plot(groups, libraries))
    print(values["goals"])


main()
