# SPDX-License-Identifier: MIT
"""Writes the coverage report.

Usage: coverage_report.py LINES_JSON REASONS REPORT

LINES_JSON is the output of gcovr. Each line of REASONS is "file | text | reason": why the tests do not
reach the lines of that file with that text. Fails if an uncovered line has no reason, if a reason is
not needed, or if the tests reach less than 98 % of all lines. Lines of the checker and of the plugins
need no reason: most of those that no test reaches handle failures of the system.
"""

import json
import pathlib
import subprocess
import sys

REQUIRED_PERCENTAGE = 98
REASON_IS_OPTIONAL = ("check/", "plugins/")

REPORT = """# Coverage

Written by `scripts/coverage` at commit {commit} from all tests that run the programs natively, except
those of the installation and of the documents. Branches taken only by exceptions are omitted.

| file | lines | reached | branches | reached |
| --- | ---: | ---: | ---: | ---: |
{rows}

## Lines that no test reaches

| file | line | reason |
| --- | --- | --- |
{uncovered}
"""


class Count:
    """Numbers of lines and branches, all and reached."""

    def __init__(self):
        self.lines = 0
        self.reached_lines = 0
        self.branches = 0
        self.reached_branches = 0

    def add(self, line):
        self.lines += 1
        self.reached_lines += line["count"] > 0
        self.branches += len(line["branches"])
        self.reached_branches += sum(branch["count"] > 0 for branch in line["branches"])

    def percentage(self):
        return 100 * self.reached_lines / self.lines

    def row(self, name):
        lines = share(self.reached_lines, self.lines)
        branches = share(self.reached_branches, self.branches)
        return f"| {name} | {self.lines} | {lines} | {self.branches} | {branches} |"


def share(part, whole):
    return f"{100 * part / whole:.1f} %" if whole else "-"


def read_reasons(path):
    """Maps file and text of a line to the reason."""
    reasons = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            file, text, reason = line.split(" | ", 2)
            reasons[file, text] = reason
    return reasons


def read_lines(entry):
    """The lines of a source file that contain code, each with its text."""
    source = pathlib.Path(entry["file"]).read_text(encoding="utf-8").splitlines()
    for line in entry["lines"]:
        if not line.get("gcovr/noncode"):
            yield line, source[line["line_number"] - 1].strip()


class Report:
    def __init__(self, reasons):
        self.reasons = reasons
        self.unused = dict(reasons)
        self.total = Count()
        self.rows = []
        self.uncovered = []
        self.unexplained = []

    def add_file(self, entry):
        name = entry["file"]
        count = Count()
        for line, text in read_lines(entry):
            count.add(line)
            self.total.add(line)
            if line["count"] == 0:
                self.add_uncovered(name, text)
        if count.lines:
            self.rows.append(count.row(f"`{name}`"))

    def add_uncovered(self, name, text):
        reason = self.reasons.get((name, text))
        self.unused.pop((name, text), None)
        escaped = text.replace("|", r"\|")
        self.uncovered.append(f"| `{name}` | `{escaped}` | {reason or ''} |")
        if not reason and not name.startswith(REASON_IS_OPTIONAL):
            self.unexplained.append(f"{name} | {text} | ")

    def text(self):
        command = ["git", "rev-parse", "--short", "HEAD"]
        return REPORT.format(
            commit=subprocess.check_output(command, text=True).strip(),
            rows="\n".join([*self.rows, self.total.row("all")]),
            uncovered="\n".join(self.uncovered),
        )

    def problems(self):
        found = [f"No test reaches, without a reason: {line}" for line in self.unexplained]
        found += [f"Reached or removed, but with a reason: {' | '.join(key)}" for key in self.unused]
        if self.total.percentage() < REQUIRED_PERCENTAGE:
            found.append(f"The tests reach less than {REQUIRED_PERCENTAGE} % of the lines")
        return found


def main(lines_path, reasons_path, report_path):
    report = Report(read_reasons(pathlib.Path(reasons_path)))
    files = json.loads(pathlib.Path(lines_path).read_text())["files"]
    for entry in sorted(files, key=lambda entry: entry["file"]):
        report.add_file(entry)
    pathlib.Path(report_path).write_text(report.text(), encoding="utf-8")
    print(report.total.row("all"))
    problems = report.problems()
    print("\n".join(problems), file=sys.stderr)
    return 1 if problems else 0


sys.exit(main(*sys.argv[1:]))
