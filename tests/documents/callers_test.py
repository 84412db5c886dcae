# SPDX-License-Identifier: MIT
"""Runs the callers in docs/protocol.md against each outcome.

Usage: callers_test.py BUILD_FOLDER CXX_COMPILER [FLAG...]
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

from documents import SOURCE, read
from named_tests import add_tests

BUILD = pathlib.Path(sys.argv[1]).resolve()
COMPILER = sys.argv[2:]
PROTOCOL = read("docs/protocol.md")

MINIMAL = BUILD / "minimal_plugin.so"
FIXTURE = BUILD / "tests/fixtures/fixture.so"
PLUGIN_ERROR = (
    r'{\"error\":[{\"name\":\"errorCode\",\"value\":7},'
    r'{\"name\":\"erroMessage\",\"value\":\"why\"}]}'
)
LONG_TEXT = "x" * 2000000

PRINTING = r'"do":"print","response":"{\"response\":[{\"name\":\"subject\",\"value\":\"CN=x\"}]}"'

# Plugin, members of the request, output and exit status of the caller.
OUTCOMES = {
    "result": (MINIMAL, r'"subject":"CN=Zo\u00eb"', "result: CN=Zoë", 0),
    "long_result": (MINIMAL, f'"subject":"{LONG_TEXT}"', f"result: {LONG_TEXT}", 0),
    "result_after_a_printed_line": (FIXTURE, PRINTING, "result: CN=x", 0),
    "plugin_error": (FIXTURE, f'"error":"{PLUGIN_ERROR}"', "plugin error 7: why", 2),
    "fatal_error": (
        "./missing.so",
        "",
        "fatal error 100: cannot load DLL, LoadLibrary failed, error 126",
        2,
    ),
    "exception": (FIXTURE, '"do":"throw"', "no answer: exit status 2", 3),
    "exit_with_status_0": (FIXTURE, '"do":"exit"', "no answer: exit status 0", 3),
    "abort": (FIXTURE, '"locale":"no such locale"', "no answer: (signal 6|exit status 134)", 3),
    "time_out": (FIXTURE, '"do":"hang"', "no answer within 2 seconds", 124),
}

# Command that runs the caller, and the commands that it needs.
CALLERS = {
    "ask.sh": (["sh"], ["jq"]),
    "ask.py": ([sys.executable, "-B"], []),
    "ask.js": (["node"], ["node"]),
    "ask.cpp": ([], []),
}


def source_of(name):
    return re.search(rf"`{re.escape(name)}`:\n\n```\w+\n(.*?)^```", PROTOCOL, re.DOTALL | re.MULTILINE)[1]


class Callers(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

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

    def run_caller(self, command, plugin, members, seconds, path):
        environment = dict(os.environ, PATH=path, PYTHONPATH=str(SOURCE / "clients/python"))
        environment.pop("CERTBRIDGE_PROGRAM", None)
        return subprocess.run(
            [*command, plugin, str(seconds)],
            input="{%s}" % ",".join(filter(None, ['"action":"getCertificate"', members])),
            stdout=subprocess.PIPE,
            encoding="utf-8",
            cwd=self.folder,
            env=environment,
        )

    def check_caller(self, name):
        command = self.prepare(name)
        path = f"{BUILD}:{os.environ['PATH']}"
        for outcome, (plugin, members, output, status) in OUTCOMES.items():
            with self.subTest(outcome):
                seconds = 2 if outcome == "time_out" else 60
                result = self.run_caller(command, plugin, members, seconds, path)
                self.assertRegex(result.stdout, f"^{output}\n$")
                self.assertEqual(result.returncode, status)
        if not shutil.which("certbridge"):
            with self.subTest("program_is_missing"):
                result = self.run_caller(command, MINIMAL, "", 60, os.environ["PATH"])
                self.assertRegex(result.stdout, "^certbridge is not installed")
                self.assertEqual(result.returncode, 127)


add_tests(Callers, "check_caller", {name: [name] for name in CALLERS})
unittest.main(argv=sys.argv[:1])
