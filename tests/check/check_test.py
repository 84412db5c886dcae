"""Runs each row of data/check.txt through the built checker.

Usage: check_test.py PROGRAM PLUGIN_FOLDER MINIMAL_PLUGIN [RUNNER]
"""
import concurrent.futures, json, os, pathlib, re, subprocess, sys, tempfile

sys.path.append(str(pathlib.Path(__file__).parent.parent))
from table import read_rows

PROGRAM, PLUGINS, MINIMAL = map(os.path.abspath, sys.argv[1:4])
SUFFIX = ".dll" if PROGRAM.endswith(".exe") else ".so"
NOTED = {"typical-request", "second-call", "reply-lifetime", "exit"}


def run(*arguments):
    return subprocess.run([*sys.argv[4:], PROGRAM, *arguments], cwd=PLUGINS, encoding="utf-8",
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=240)


def check_plugin(row):
    """Runs the checker; what it did, and whether it said of each check what the row wants."""
    name = {"MINIMAL": MINIMAL, "THIS": __file__}.get(row["plugin"], "./" + row["plugin"] + SUFFIX)
    with tempfile.TemporaryDirectory() as folder:
        request = pathlib.Path(folder, "request")
        request.write_text(row.get("request", "{}"))
        limit = "5" if "hang" in row.get("request", "") else "60"
        result = run("--json", "--timeout", limit, "--request", str(request), name)
    wanted = {row["fails"]: "failed: .*(%s)" % row["says"]} if "fails" in row else {}
    if "noted" in row:
        wanted = dict.fromkeys(NOTED, "passed: " + row["noted"])
    report = json.loads(result.stdout.splitlines()[-1])
    said = {check["id"]: check["outcome"] + ": " + check["detail"] for check in report["checks"]
            if check["outcome"] == "failed" or not re.match("$|needs", check["detail"])}
    return result, report["passed"] == (result.returncode == 0) == ("fails" not in row) and (
        said.keys() == wanted.keys()) and all(re.search(wanted[key], said[key]) for key in said)


def check_options(row):
    result = run(*row["args"].replace("MINIMAL", MINIMAL).split())
    return result, result.returncode == int(row["status"]) and re.search(row["prints"], result.stdout)


def check(row):
    row = {key: value.decode() for key, value in row.items()}
    result, good = (check_options if "args" in row else check_plugin)(row)
    return None if good else "FAILED %s: %s" % (row, result)


with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    sys.exit("\n".join(filter(None, pool.map(check, read_rows("check.txt")))) or None)
