# SPDX-License-Identifier: MIT
"""Runs the script of SECURITY.md that confines a plugin.

Usage: confined_script_test.py PROGRAM FIXTURE_PLUGIN
"""

import os
import pathlib
import re
import subprocess
import sys
import unittest

from confinement import skip_unless_possible, write_condition
from folder_test import FolderTest
from named_tests import add_table, add_tests

PROGRAM, FIXTURE = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
SECURITY = (pathlib.Path(__file__).resolve().parents[2] / "SECURITY.md").read_text(encoding="utf-8")
SCRIPT = re.search(r"^```sh\n(#!/bin/sh\n.*?)^```$", SECURITY, re.DOTALL | re.MULTILINE)[1]

# Request, exit status, and standard output.
REQUESTS = {
    "answer": ('"response":"{\\"response\\":[]}"', 0, '{"getCertificate":{}}\n'),
    "exception": ('"do":"throw"', 2, ""),
}


class Prlimit(FolderTest):
    LIMITS = "prlimit"

    def setUp(self):
        skip_unless_possible(self, "prlimit")
        super().setUp()

    def run_script(self, program, members, files=(), seconds=20):
        path = f"{program.parent}:{os.environ['PATH']}"
        return subprocess.run(
            ["sh", "-c", SCRIPT, "sh", self.LIMITS, FIXTURE, *files],
            input="{%s}" % ",".join(['"action":"getCertificate"', *members]),
            env={**os.environ, "PATH": path, "SECRET_VARIABLE": "secret", "TIME_LIMIT": str(seconds)},
            capture_output=True,
            encoding="utf-8",
        )

    def check_condition(self, row):
        program, files = write_condition(self.folder, row)
        run = self.run_script(program, [], files)
        self.assertEqual((run.returncode, run.stdout), (0, '{"getCertificate":{}}\n'), run.stderr)

    def check_request(self, members, status, output):
        run = self.run_script(PROGRAM, [members])
        self.assertEqual((run.returncode, run.stdout), (status, output), run.stderr)

    def test_time_limit_ends_the_plugin(self):
        run = self.run_script(PROGRAM, ['"do":"hang"'], seconds=1)
        self.assertNotIn(run.returncode, (0, 2), run.stderr)
        self.assertEqual(run.stdout, "")


class Systemd(Prlimit):
    LIMITS = "systemd"

    def setUp(self):
        skip_unless_possible(self, "systemd-run", "systemctl")
        manager = ["systemctl", "--user", "show-environment"]
        if subprocess.run(manager, capture_output=True).returncode:
            self.skipTest("no user manager of systemd runs")
        super().setUp()


add_table(Prlimit, "check_condition", "confinement.txt")
add_tests(Prlimit, "check_request", REQUESTS)
unittest.main(argv=sys.argv[:1])
