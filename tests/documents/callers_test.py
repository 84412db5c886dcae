# SPDX-License-Identifier: MIT
"""Runs the callers in docs/protocol.md against each outcome.

Usage: callers_test.py BUILD_FOLDER CXX_COMPILER [FLAG...]
"""

import json
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

from documents import SOURCE, read
from folder_test import FolderTest
from named_tests import add_tests
from table import read_text_rows, request_members

BUILD = pathlib.Path(sys.argv[1]).resolve()
COMPILER = sys.argv[2:]
PROTOCOL = read("docs/protocol.md")

PLUGINS = {
    "MINIMAL": BUILD / "minimal_plugin.so",
    "FIXTURE": BUILD / "tests/fixtures/fixture.so",
}
OUTCOMES = read_text_rows("callers.txt")

# Command that runs the caller, and the commands that it needs.
CALLERS = {
    "ask.sh": (["sh"], ["jq"]),
    "ask.py": ([sys.executable, "-B"], []),
    "ask.js": (["node"], ["node"]),
    "ask.cpp": ([], []),
}


def source_of(name):
    return re.search(rf"`{re.escape(name)}`:\n\n```\w+\n(.*?)^```", PROTOCOL, re.DOTALL | re.MULTILINE)[1]


class Callers(FolderTest):
    def prepare(self, name):
        """Writes and, if necessary, compiles the caller. Returns the command that runs it."""
        interpreter, needed = CALLERS[name]
        for command in needed:
            if not shutil.which(command):
                self.skipTest(f"{command} is not installed")
        if name == "ask.js":
            (self.folder / "node_modules").mkdir()
            (self.folder / "node_modules/certbridge").symlink_to(SOURCE / "clients/node")
        source = self.folder / name
        source.write_text(source_of(name), encoding="utf-8")
        if source.suffix != ".cpp":
            return [*interpreter, source]
        program = source.with_suffix("")
        library = BUILD / "vexil/libvexil.a"
        options = ["-std=c++20", "-I", SOURCE, source, library, "-ldl", "-o", program]
        subprocess.run([*COMPILER, *options], check=True)
        return [program]

    def run_caller(self, command, row, path):
        plugin = PLUGINS.get(row["plugin"], row["plugin"])
        request = {"action": "getCertificate", **request_members(row)}
        environment = dict(os.environ, PATH=path, PYTHONPATH=str(SOURCE / "clients/python"))
        environment.pop("CERTBRIDGE_PROGRAM", None)
        return subprocess.run(
            [*command, plugin, row.get("seconds", "60")],
            input=json.dumps(request),
            stdout=subprocess.PIPE,
            encoding="utf-8",
            cwd=self.folder,
            env=environment,
        )

    def check_caller(self, name):
        command = self.prepare(name)
        path = f"{BUILD}:{os.environ['PATH']}"
        for row in OUTCOMES:
            with self.subTest(row["name"]):
                result = self.run_caller(command, row, path)
                self.assertRegex(result.stdout, f"^{row['prints']}\n$")
                self.assertEqual(result.returncode, int(row["status"]))
        if not shutil.which("certbridge"):
            with self.subTest("program_is_missing"):
                result = self.run_caller(command, OUTCOMES[0], os.environ["PATH"])
                self.assertRegex(result.stdout, "^certbridge is not installed")
                self.assertEqual(result.returncode, 127)


add_tests(Callers, "check_caller", {name: [name] for name in CALLERS})
unittest.main(argv=sys.argv[:1])
