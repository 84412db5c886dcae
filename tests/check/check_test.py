# SPDX-License-Identifier: MIT
"""Runs each row of data/check.txt through the built checker, and tests the checker as a process.

Usage: check_test.py PROGRAM PLUGIN_FOLDER MINIMAL_PLUGIN features=FEATURE,... [RUNNER]
"""
import concurrent.futures, json, os, pathlib, pty, re, signal, subprocess, sys, tempfile, time
import unittest

from folder_test import FolderTest
from named_tests import add_table
from table import read_text_rows

PROGRAM, PLUGINS, MINIMAL = map(os.path.abspath, sys.argv[1:4])
FEATURES, RUNNER = sys.argv[4].split("=")[1].split(","), sys.argv[5:]
SUFFIX = ".dll" if PROGRAM.endswith(".exe") else ".so"
COMPLETIONS = pathlib.Path(__file__).parents[2] / "check/completions"
# The checks that send the typical request and report a note about its reply.
NOTED = {"typical-request", "second-call", "reply-lifetime", "exit", "unload"}


def run(*arguments, memory=None):
    def limit():
        import resource
        resource.setrlimit(resource.RLIMIT_AS, (int(memory) * 1024, int(memory) * 1024))
    return subprocess.run([*RUNNER, PROGRAM, *arguments], cwd=PLUGINS, encoding="utf-8", timeout=240,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          preexec_fn=limit if memory else None)


def run_plugin_row(row):
    name = {"MINIMAL": MINIMAL, "THIS": __file__}.get(row["plugin"], "./" + row["plugin"] + SUFFIX)
    with tempfile.TemporaryDirectory() as folder:
        request = pathlib.Path(folder, "request")
        request.write_text(row.get("request", "{}"))
        limit = "5" if "hang" in row.get("request", "") else "60"
        return run("--json", "--timeout", limit, "--request", str(request),
                   *row.get("with", "").split(), name)


def run_row(row):
    if "args" in row:
        return run(*row["args"].replace("MINIMAL", MINIMAL).split(), memory=row.get("memory"))
    return run_plugin_row(row)


class Rows(unittest.TestCase):
    maxDiff = None

    def check_plugin_row(self, row, result):
        """Each check fails or carries a note exactly where the row says so."""
        expected = {row["fails"]: "failed: .*(%s)" % row["says"]} if "fails" in row else {}
        if "noted" in row:
            noted = row["by"].split() if "by" in row else NOTED
            expected = dict.fromkeys(noted, "passed: .*(%s)" % row["noted"])
        report = json.loads(result.stdout.splitlines()[-1])
        actual = {check["id"]: check["outcome"] + ": " + check["detail"] for check in report["checks"]
                  if check["outcome"] == "failed" or not re.match("$|needs", check["detail"])}
        self.assertEqual(report["passed"], "fails" not in row, result)
        self.assertEqual(result.returncode, int("fails" in row), result)
        self.assertEqual(actual.keys(), expected.keys(), result)
        for key, pattern in expected.items():
            self.assertRegex(actual[key], pattern)

    def check_row(self, row):
        if "needs" in row and row["needs"] not in FEATURES:
            self.skipTest("needs " + row["needs"])
        result = RESULTS[row["name"]].result()
        if "args" not in row:
            return self.check_plugin_row(row, result)
        self.assertEqual(result.returncode, int(row["status"]), result)
        self.assertRegex(result.stdout, row["prints"])


@unittest.skipUnless("posix" in FEATURES, "needs posix")
class Process(FolderTest):
    def setUp(self):
        super().setUp()
        self.request = self.folder / "request"
        self.request.write_text('{"do":"hang"}')

    def test_ended_checker_leaves_no_child(self):
        for number in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number.name):
                command = [PROGRAM, "--include", "exit", "--request", self.request, "./rogue.so"]
                checker = subprocess.Popen(command, cwd=PLUGINS, stdout=subprocess.DEVNULL)
                children = pathlib.Path("/proc/{0}/task/{0}/children".format(checker.pid))
                while not (found := children.read_text().split()):
                    time.sleep(0.01)
                checker.send_signal(number)
                checker.wait()
                self.expect_end(found[0])

    def test_progress_on_a_terminal(self):
        controller, terminal = pty.openpty()
        options = ["--include=exit", "--timeout=2", "--request", self.request]
        subprocess.run([PROGRAM, *options, "./fixture.so"], cwd=PLUGINS, stdout=terminal,
                       env=dict(os.environ, TERM="xterm"))
        self.assertRegex(os.read(controller, 65536).decode(), r"\r\x1b\[K\.{4}  exit .*, 1 s\r\x1b\[K.*FAIL")


class Help(unittest.TestCase):
    def test_completions(self):
        """The completions offer exactly the options of the program."""
        options = set(re.findall(r"--[a-z-]+", run("--help").stdout))
        for name in ("certbridge-check.bash", "_certbridge-check", "certbridge-check.fish"):
            with self.subTest(name):
                text = (COMPLETIONS / name).read_text()
                found = set(re.findall(r"(?<![\w-])--([a-z-]+)", text.replace("-l ", "--")))
                self.assertEqual({"--" + option for option in found}, options)


ROWS = read_text_rows("check.txt")
add_table(Rows, "check_row", "check.txt")
with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    RESULTS = {row["name"]: pool.submit(run_row, row) for row in ROWS
               if row.get("needs", "posix") in FEATURES or "needs" not in row}
    unittest.main(argv=sys.argv[:1])
