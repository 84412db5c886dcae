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
import shlex
import shutil
import subprocess
import sys
import unittest
import zipfile

from confinement import skip_unless_possible, write_condition, write_program
from folder_test import FolderTest
from named_tests import add_table
from table import request_members

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

RESPONSE = {"response": '{"response":[]}'}
LIMIT = 1000000


class ClientTest(FolderTest):
    def setUp(self):
        super().setUp()
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


class Calls(ClientTest):
    def check_row(self, row):
        expected = json.loads(row["result"]) if "result" in row else row["fails"]
        if "script" in row:
            self.use_script(row["script"])
        elif "program" in row:
            self.environment["CERTBRIDGE_PROGRAM"] = row["program"]
        self.expect(expected, request_members(row), row.get("plugin", FIXTURE), timeout=int(row.get("timeout", 20)))

    def test_bare_name_is_looked_up_in_the_plugin_folder(self):
        self.environment["CERTBRIDGE_PLUGINS"] = str(pathlib.Path(FIXTURE).parent)
        self.expect({}, RESPONSE, plugin="fixture")


class Processes(ClientTest):
    def expect_end_of_children(self, expected, **options):
        child = self.folder / "child"
        self.use_script(f"sleep 60 & echo $! > {child}.new; mv {child}.new {child}; wait")
        self.expect(expected, **options)
        self.expect_end(child.read_text().strip())

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

    def check_condition(self, row):
        program, files = write_condition(self.folder, row)
        self.environment["CERTBRIDGE_PROGRAM"] = str(program)
        self.expect({}, confine={"files": files})

    def test_plugin_answers(self):
        self.expect({}, RESPONSE, confine={})

    def test_crash_gives_no_answer(self):
        self.expect("NoAnswer: no answer: exit status 134", {"locale": "no such locale"}, confine={})

    def test_time_limit_ends_the_plugin(self):
        self.expect("TimedOut: ", {"do": "hang"}, confine={}, timeout=1)


class Commands(ClientTest):
    """The command, the syntax and the wheel of the Python module."""

    def check_row(self, row):
        arguments = shlex.split(row["args"].replace("FIXTURE", FIXTURE))
        run = self.run_command([sys.executable, "-Bm", "certbridge", *arguments], row.get("input", ""))
        self.assertEqual(run.returncode, int(row["status"]), run.stderr)
        self.assertEqual(bool(run.stdout), run.returncode == 0)
        self.assertIn(row.get("prints", ""), run.stderr)

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
add_table(Calls, "check_row", "clients.txt")
add_table(Confined, "check_condition", "confinement.txt")
add_table(Commands, "check_row", "client_command.txt")
if KIND != "python":
    del Commands
if KIND != "node":
    del Package
unittest.main(argv=sys.argv[:1])
