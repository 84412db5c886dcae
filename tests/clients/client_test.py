# SPDX-License-Identifier: MIT
"""Runs a client module against plugins that answer, fail, print, crash or hang.

Usage: client_test.py python|asyncio|node PROGRAM FIXTURE_PLUGIN VERSION
"""

import ast
import importlib.util
import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
import unittest
import zipfile

from confinement import CONDITIONS, skip_unless_possible, write_condition, write_program
from named_tests import add_tests

KIND = sys.argv[1]
PROGRAM, FIXTURE = (str(pathlib.Path(path).resolve()) for path in sys.argv[2:4])
VERSION = sys.argv[4]
TESTS = pathlib.Path(__file__).resolve().parent
SOURCE = TESTS.parents[1]
CLIENTS = SOURCE / "clients"
DRIVERS = {
    "python": [sys.executable, "-B", TESTS / "driver.py"],
    "asyncio": [sys.executable, "-B", TESTS / "driver.py", "asyncio"],
    "node": ["node", TESTS / "driver.js"],
}
SKIPPED = 77

RESPONSE = '{"response":[{"name":"subject","value":"CN=x"}]}'
PLUGIN_ERROR = '{"error":[{"name":"errorCode","value":7},{"name":"erroMessage","value":"why"}]}'
LIMIT = 1000000

# Members of the request, and the result or a regular expression for the error.
BEHAVIOURS = {
    "answers": ({"response": RESPONSE}, {"subject": "CN=x"}),
    "prints_a_line_first": ({"do": "print", "response": RESPONSE}, {"subject": "CN=x"}),
    "reports_an_error": ({"error": PLUGIN_ERROR}, "PluginError: plugin error 7: why"),
    "sets_no_reply": ({"do": "nothing"}, "FatalError: fatal error 100: no output"),
    "throws": ({"do": "throw"}, "NoAnswer: no answer: exit status 2"),
    "exits_with_status_0": ({"do": "exit"}, "NoAnswer: no answer: exit status 0"),
    "aborts": ({"locale": "no such locale"}, "NoAnswer: no answer: signal 6"),
    "redirects_standard_output": ({"do": "close"}, "NoAnswer: no answer: exit status 0"),
    "hangs": ({"do": "hang"}, "TimedOut: no answer within 1 seconds"),
    "answers_too_much": ({"text": "x" * LIMIT}, f"NoAnswer: no answer: more than {LIMIT} bytes"),
    "gets_a_lone_surrogate": ({"text": "\ud800"}, "FatalError: fatal error 102"),
    "gets_an_action": ({"action": "getCertificate"}, '(ValueError|TypeError): "action" is set by'),
    "gets_infinity": ({"number": float("inf")}, "(ValueError|TypeError): "),
}

# Leaves the process group before the program ends.
ORPHAN = """setsid sh -c 'touch started; sleep 5' & until test -e started; do sleep 0.1; done
echo '{"getCertificate":{}}'"""

# Script that takes the role of the program, and the result or a regular expression for the error.
PROGRAMS = {
    "error_with_status_0": ("""echo '{"error":{}}'""", "NoAnswer: .*contradicts exit status 0"),
    "result_with_status_2": ("""echo '{"getCertificate":{}}'; exit 2""", "NoAnswer: .*contradicts exit status 2"),
    "result_and_error": ("""echo '{"getCertificate":{},"error":{}}'""", "NoAnswer: .*contradicts"),
    "incomplete_fatal_error": ("""echo '{"error":[{"name":"errorCode"}]}'; exit 2""", "NoAnswer: .*malformed"),
    "error_without_members": ("""echo '{"error":{}}'; exit 2""", "PluginError: plugin error (None|undefined)"),
    "result_then_crash": ("""echo '{"getCertificate":{}}'; kill -9 $$""", "NoAnswer: no answer: signal 9"),
    "incomplete_line": ("""printf '{"getCertificate":{}}'""", "NoAnswer: no answer: exit status 0"),
    "malformed_line": ("""echo '{"getCertificate":{'""", "NoAnswer: .*malformed"),
    "invalid_utf8": ("""printf '{"getCertificate":{"a":"\\377"}}\\n'""", "NoAnswer: .*malformed"),
    "text_after_the_line": ("""echo '{"getCertificate":{}}'; echo bye""", {}),
    "request_not_read": ("""exec 0<&-; echo '{"getCertificate":{}}'""", {}),
    "child_holds_output": ("""sleep 60 & echo '{"getCertificate":{}}'""", {}),
    "orphan_holds_output": (ORPHAN, "TimedOut: "),
}

# Name of the plugin, value of CERTBRIDGE_PROGRAM, and a regular expression for the error.
MISSING = {
    "program": (FIXTURE, "/no/such/program", "NotFound: CERTBRIDGE_PROGRAM does not name a program"),
    "plugin": ("no_such_plugin", PROGRAM, "NotFound: no plugin folder contains no_such_plugin.so"),
    "plugin_with_a_path": ("./missing.so", PROGRAM, "FatalError: .* LoadLibrary failed, error 126"),
    "empty_name": ("", PROGRAM, "NotFound: the name of the plugin is empty"),
    "name_too_long": ("/" + "x" * 200000, PROGRAM, "NotFound: cannot run"),
}

# Arguments, standard input, exit status and standard error of the command.
COMMANDS = {
    "help": (["--help"], "", 0, ""),
    "result": ([FIXTURE], '{"a":1}', 0, ""),
    "no_plugin": ([], "", 1, "required: PLUGIN"),
    "request_is_a_list": ([FIXTURE], "[]", 1, "not a JSON object"),
    "request_is_not_json": ([FIXTURE], "{", 1, "invalid request"),
    "request_with_action": ([FIXTURE], '{"action":"getCertificate"}', 1, '"action" is set'),
    "request_with_an_option": ([FIXTURE], '{"timeout":1}', 1, "cannot be named timeout"),
    "plugin_error": ([FIXTURE], json.dumps({"error": PLUGIN_ERROR}), 2, "plugin error 7: why"),
    "fatal_error": (["./missing.so"], "", 2, "fatal error 100"),
    "crash": ([FIXTURE], '{"do":"throw"}', 3, "exit status 2"),
    "answer_too_long": (["--max-answer", "9", FIXTURE], "", 3, "more than 9 bytes"),
    "timeout": (["--timeout", "1", FIXTURE], '{"do":"hang"}', 124, "within 1 seconds"),
    "unknown_plugin": (["no_such_plugin"], "", 127, "no plugin folder"),
}


class ClientTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.environment = {
            **os.environ,
            "CERTBRIDGE_PROGRAM": PROGRAM,
            "CLIENT": str(CLIENTS / "node"),
            "PYTHONPATH": str(CLIENTS / "python"),
            "SECRET_VARIABLE": "secret",
        }

    def run_command(self, command, text):
        return subprocess.run(
            command, input=text, env=self.environment, cwd=self.folder, capture_output=True, encoding="utf-8"
        )

    def expect(self, expected, members=None, plugin=FIXTURE, cancel=None, **options):
        options = {"timeout": 20, "max_answer": LIMIT, **options}
        request = {"plugin": plugin, "members": members or {}, "options": options, "cancel": cancel}
        text = json.dumps(request).replace("Infinity", "1e999")
        run = self.run_command(DRIVERS[KIND], text)
        self.assertEqual(run.returncode, 0, run.stderr)
        answer = json.loads(run.stdout)
        if isinstance(expected, dict):
            self.assertEqual(answer, {"result": expected})
        else:
            self.assertRegex(answer.get("error", ""), "^" + expected)

    def use_script(self, text):
        self.environment["CERTBRIDGE_PROGRAM"] = str(write_program(self.folder, text))


class Behaviours(ClientTest):
    def check_behaviour(self, members, expected):
        self.expect(expected, members, timeout=1 if members.get("do") == "hang" else 20)


class Programs(ClientTest):
    def check_program(self, script, expected):
        self.use_script(script)
        self.expect(expected, timeout=2 if str(expected).startswith("TimedOut") else 20)


class Missing(ClientTest):
    def check_missing(self, plugin, program, expected):
        self.environment["CERTBRIDGE_PROGRAM"] = program
        self.expect(expected, plugin=plugin)

    def test_bare_name_is_looked_up_in_the_plugin_folder(self):
        self.environment["CERTBRIDGE_PLUGINS"] = str(pathlib.Path(FIXTURE).parent)
        self.expect({"subject": "CN=x"}, {"response": RESPONSE}, plugin="fixture")


class Processes(ClientTest):
    def expect_end_of_children(self, expected, **options):
        child = self.folder / "child"
        self.use_script(f"sleep 60 & echo $! > {child}.new; mv {child}.new {child}; wait")
        self.expect(expected, **options)
        self.wait_until_gone(child.read_text().strip())

    def wait_until_gone(self, process):
        stat = pathlib.Path(f"/proc/{process}/stat")
        deadline = time.monotonic() + 10
        while stat.exists() and stat.read_text().rpartition(")")[2].split()[0] != "Z":
            self.assertLess(time.monotonic(), deadline, "the process still runs")
            time.sleep(0.01)

    def test_children_end_with_the_time_limit(self):
        self.expect_end_of_children("TimedOut: ", timeout=2)

    @unittest.skipIf(KIND == "python", "a blocking call cannot be cancelled")
    def test_children_end_with_cancellation(self):
        self.expect_end_of_children("(CancelledError|AbortError): ", cancel=str(self.folder / "child"))


class Confined(ClientTest):
    """Reads /proc and the file system from a script that takes the role of the program."""

    def setUp(self):
        super().setUp()
        skip_unless_possible(self, "prlimit")

    def check_condition(self, condition, is_named):
        program, secret = write_condition(self.folder, condition)
        self.environment["CERTBRIDGE_PROGRAM"] = str(program)
        self.expect({}, confine={"files": [str(secret)] if is_named else []})

    def test_plugin_answers(self):
        self.expect({"subject": "CN=x"}, {"response": RESPONSE}, confine={})

    def test_crash_gives_no_answer(self):
        self.expect("NoAnswer: no answer: exit status 134", {"locale": "no such locale"}, confine={})

    def test_time_limit_ends_the_plugin(self):
        self.expect("TimedOut: ", {"do": "hang"}, confine={}, timeout=1)


class Commands(ClientTest):
    """The command, the syntax and the wheel of the Python module."""

    def check_command(self, arguments, text, status, message):
        run = self.run_command([sys.executable, "-Bm", "certbridge", *arguments], text)
        self.assertEqual(run.returncode, status, run.stderr)
        self.assertEqual(bool(run.stdout), status == 0)
        self.assertIn(message, run.stderr)

    def test_standard_output_is_full(self):
        run = self.run_command(["sh", "-c", f"{sys.executable} -Bm certbridge {FIXTURE} > /dev/full"], "{}")
        self.assertEqual(run.returncode, 3, run.stderr)
        self.assertIn("No space left", run.stderr)

    def test_syntax_is_that_of_python_3_9(self):
        for source in (CLIENTS / "python").rglob("*.py"):
            with self.subTest(source.name):
                ast.parse(source.read_text(encoding="utf-8"), feature_version=(3, 9))

    @unittest.skipUnless(
        importlib.util.find_spec("setuptools") and importlib.util.find_spec("wheel"), "needs setuptools and wheel"
    )
    def test_wheel_contains_the_package(self):
        copy = self.folder / "clients/python"
        shutil.copytree(CLIENTS / "python", copy, ignore=shutil.ignore_patterns("__pycache__"))
        shutil.copy(SOURCE / "CMakeLists.txt", self.folder)
        build = "import setuptools.build_meta as backend; backend.build_wheel('.')"
        subprocess.run([sys.executable, "-c", build], cwd=copy, check=True, capture_output=True)
        names = zipfile.ZipFile(copy / f"certbridge-{VERSION}-py3-none-any.whl").namelist()
        files = {f"certbridge/{path.name}" for path in (copy / "certbridge").iterdir()}
        self.assertEqual({name for name in names if name.startswith("certbridge/")}, files)


class Package(ClientTest):
    """The package of the Node.js module."""

    def test_version_is_that_of_the_project(self):
        package = json.loads((CLIENTS / "node/package.json").read_text(encoding="utf-8"))
        self.assertEqual(package["version"], VERSION)

    def test_declared_names_can_be_imported(self):
        declarations = (CLIENTS / "node/index.d.ts").read_text(encoding="utf-8")
        names = ", ".join(re.findall(r"^export (?:class|function) (\w+)", declarations, re.MULTILINE))
        (self.folder / "import.mjs").write_text(
            f'import {{ {names} }} from "{CLIENTS / "node/index.js"}";\nconsole.log([{names}].length);\n'
        )
        run = self.run_command(["node", "import.mjs"], "")
        self.assertEqual((run.returncode, run.stdout), (0, "7\n"), run.stderr)

    @unittest.skipUnless(shutil.which("npm"), "npm is not installed")
    def test_archive_contains_the_module(self):
        pack = ["npm", "pack", "--dry-run", "--json", CLIENTS / "node"]
        archive, = json.loads(self.run_command(pack, "").stdout)
        packed = {entry["path"] for entry in archive["files"]}
        files = (path for path in (CLIENTS / "node").rglob("*") if path.is_file())
        self.assertEqual(packed, {str(path.relative_to(CLIENTS / "node")) for path in files})


if not shutil.which(DRIVERS[KIND][0]):
    print(f"skipped: {DRIVERS[KIND][0]} is not installed")
    sys.exit(SKIPPED)
add_tests(Behaviours, "check_behaviour", BEHAVIOURS)
add_tests(Programs, "check_program", PROGRAMS)
add_tests(Missing, "check_missing", MISSING)
add_tests(Confined, "check_condition", CONDITIONS)
add_tests(Commands, "check_command", COMMANDS)
if KIND != "python":
    del Commands
if KIND != "node":
    del Package
unittest.main(argv=sys.argv[:1])
