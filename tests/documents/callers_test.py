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

# Plugin, members of the request, output of the caller.
OUTCOMES = {
    "result": (MINIMAL, r'"subject":"CN=Zo\u00eb"', "result: CN=Zoë"),
    "long_result": (MINIMAL, f'"subject":"{LONG_TEXT}"', f"result: {LONG_TEXT}"),
    "plugin_error": (FIXTURE, f'"error":"{PLUGIN_ERROR}"', "plugin error 7: why"),
    "fatal_error": (
        "./missing.so",
        "",
        "fatal error 100: cannot load DLL, LoadLibrary failed, error 126",
    ),
    "nothing": (FIXTURE, '"do":"throw"', "nothing: status 2"),
}

# Command that runs the caller, and the commands that it needs.
CALLERS = {
    "ask.sh": (["sh"], ["jq"]),
    "ask.py": ([sys.executable], []),
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
        source = self.folder / name
        source.write_text(source_of(name), encoding="utf-8")
        if source.suffix != ".cpp":
            return [*interpreter, source]
        program = source.with_suffix("")
        library = BUILD / "vexil/libvexil.a"
        options = ["-std=c++20", "-I", SOURCE, source, library, "-ldl", "-o", program]
        subprocess.run([*COMPILER, *options], check=True)
        return [program]

    def check_caller(self, name):
        command = self.prepare(name)
        environment = dict(os.environ, PATH=f"{BUILD}:{os.environ['PATH']}")
        for outcome, (plugin, members, output) in OUTCOMES.items():
            with self.subTest(outcome):
                request = ",".join(filter(None, ['"action":"getCertificate"', members]))
                result = subprocess.run(
                    [*command, plugin],
                    input=f"{{{request}}}",
                    stdout=subprocess.PIPE,
                    encoding="utf-8",
                    cwd=self.folder,
                    env=environment,
                )
                self.assertEqual(result.stdout.strip(), output)


add_tests(Callers, "check_caller", {name: [name] for name in CALLERS})
unittest.main(argv=sys.argv[:1])
