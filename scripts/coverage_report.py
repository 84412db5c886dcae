"""Writes the coverage report: coverage_report.py LINES_JSON REASONS REPORT.

A reason stands in a line of its own: the file, the text of the uncovered line, the reason, with
" | " between them. It holds for every uncovered line of that text in that file."""
import json
import subprocess
import sys
from pathlib import Path


def read_reasons(path):
    reasons = {}
    for line in Path(path).read_text(encoding="utf-8").splitlines():
        if line and not line.startswith("#"):
            file, text, reason = line.split(" | ", 2)
            reasons[file, text] = reason
    return reasons


def percent(part, whole):
    return f"{100 * part / whole:.1f} %" if whole else "-"


class Count:
    """Lines and branches, reached and in all."""

    def __init__(self):
        self.lines = self.reached_lines = self.branches = self.reached_branches = 0

    def add(self, line):
        branches = line["branches"]
        self.lines += 1
        self.reached_lines += line["count"] > 0
        self.branches += len(branches)
        self.reached_branches += sum(branch["count"] > 0 for branch in branches)

    def row(self, name):
        return (f"| {name} | {self.lines} | {percent(self.reached_lines, self.lines)} "
                f"| {self.branches} | {percent(self.reached_branches, self.branches)} |")


def main(lines_path, reasons_path, report_path):
    reasons = read_reasons(reasons_path)
    total, rows, uncovered, unexplained = Count(), [], [], []
    for entry in sorted(json.loads(Path(lines_path).read_text())["files"],
                        key=lambda entry: entry["file"]):
        name, count = entry["file"], Count()
        source = Path(name).read_text(encoding="utf-8").splitlines()
        for line in entry["lines"]:
            if line.get("gcovr/noncode"):
                continue
            count.add(line)
            total.add(line)
            if line["count"] > 0:
                continue
            text = source[line["line_number"] - 1].strip()
            reason = reasons.get((name, text))
            if reason:
                uncovered.append(f"| `{name}` | `{text.replace('|', chr(92) + '|')}` | {reason} |")
            else:
                unexplained.append(f"{name} | {text} | ")
        if count.lines:
            rows.append(count.row(f"`{name}`"))
    commit = subprocess.check_output(["git", "rev-parse", "--short", "HEAD"], text=True).strip()
    Path(report_path).write_text("\n".join([
        "# Coverage", "",
        f"Written by `scripts/coverage` at commit {commit} from the unit tests and the end-to-end",
        "tables. Branches that only exceptions take are left out.", "",
        "| file | lines | reached | branches | reached |", "| --- | ---: | ---: | ---: | ---: |",
        *rows, total.row("all"), "", "## Lines that no test reaches", "",
        *(["| file | line | why |", "| --- | --- | --- |", *uncovered] if uncovered else ["None."]),
        ""]), encoding="utf-8")
    print(total.row("all"))
    if unexplained:
        print("\n".join(["No reason is given for:", *unexplained]), file=sys.stderr)
    return 1 if unexplained else 0


sys.exit(main(*sys.argv[1:]))
