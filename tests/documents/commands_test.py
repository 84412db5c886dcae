# SPDX-License-Identifier: MIT
"""Runs the command blocks of the documents in the order in which they appear.

Usage: commands_test.py BUILD_FOLDER

The blocks of one document share a folder that looks like the root of the project after a build with
the preset "release". A transcript must be repeated exactly; other commands must succeed.
"""

import os
import pathlib
import subprocess
import sys
import unittest

from documents import SOURCE, blocks, manual_examples, read
from folder_test import FolderTest
from named_tests import add_tests
from transcripts import repeat

BUILD = pathlib.Path(sys.argv[1]).resolve()
IS_SANITIZED = "CERTBRIDGE_SANITIZE:BOOL=ON" in (BUILD / "CMakeCache.txt").read_text()

DOCUMENTS = [
    "README.md",
    "CONTRIBUTING.md",
    "SECURITY.md",
    *(f"docs/{path.name}" for path in sorted((SOURCE / "docs").glob("*.md"))),
]

# Transcripts that another test runs.
TESTED_ELSEWHERE = {"docs/plugin-authors.md": "the install test, with installed templates"}

# Beginnings of commands that do not run here, with the reason.
NOT_RUN = {
    "scripts/": "installs packages; run before every change lands",
    "cmake --preset": "builds the whole project, as the run of this test has done",
    "cmake --build": "builds the whole project, as the run of this test has done",
    "cmake -B build": "builds the whole project, as the run of this test has done",
    "ctest": "runs this test",
    "build/debug/": "runs unit tests",
    "sudo apt-get": "installs packages",
    "gdb": "interactive",
    "LD_PRELOAD": "needs a plugin built with the address sanitizer",
}

PLUGIN_ERROR = '{"error":{"code":2,"message":"a.pem: no such file"}}'
FATAL_ERROR = (
    '{"error":[{"name":"errorCode","value":100},{"name":"errorMessage","value":"wrong plugin type"}]}'
)
# Examples of the manual pages: page, position in it, standard input and last line of the output.
MANUAL_EXAMPLES = {
    "print_a_subject": ("docs/certbridge.1", 0, "", "CN=example.org,O=Café Müller"),
    "message_of_a_plugin": ("docs/certbridge.1", 1, PLUGIN_ERROR, "a.pem: no such file"),
    "message_of_a_fatal_error": ("docs/certbridge.1", 1, FATAL_ERROR, "wrong plugin type"),
    "check_a_plugin": ("docs/certbridge-check.1", 0, "", r"\d+ passed, 0 failed"),
    "send_random_requests": ("docs/certbridge-check.1", 1, "", r"\d+ passed, 0 failed"),
}


def lines_of(block):
    """The commands of a block; a backslash at the end of a line continues it."""
    return block.text.replace("\\\n", " ").splitlines()


def is_run(command):
    return not any(command.startswith(beginning) for beginning in NOT_RUN)


class Commands(FolderTest):
    maxDiff = None

    def setUp(self):
        super().setUp()
        (self.folder / "build").mkdir()
        (self.folder / "build/release").symlink_to(BUILD)
        for name in ("examples", "certbridge"):
            (self.folder / name).symlink_to(SOURCE / name)
        self.options = {
            "cwd": self.folder,
            "env": dict(os.environ, HOME=str(self.folder), PATH=f"{BUILD}:{os.environ['PATH']}"),
        }

    def run_script(self, commands, stdin=""):
        result = subprocess.run(
            ["bash", "-e", "-c", "\n".join(commands)],
            input=stdin,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            encoding="utf-8",
            **self.options,
        )
        self.assertEqual(result.returncode, 0, result.stdout)
        return result.stdout

    def check_document(self, name):
        for block in blocks(read(name)):
            with self.subTest(line=block.line):
                if block.language == "console":
                    self.assertEqual(repeat(block.text, **self.options), block.text)
                elif block.language == "sh" and not block.text.startswith("#!"):
                    self.run_script(filter(is_run, lines_of(block)))

    def check_manual_example(self, page, position, stdin, last_line):
        (self.folder / "a.pem").symlink_to(SOURCE / "examples/sample.pem")
        (self.folder / "certificate_file_plugin.so").symlink_to(BUILD / "certificate_file_plugin.so")
        (self.folder / "plugin.so").symlink_to(BUILD / "minimal_plugin.so")
        example = manual_examples(read(page))[position]
        if IS_SANITIZED and "--low-memory" in example:
            self.skipTest("the address sanitizer reserves more memory than the limit")
        output = self.run_script([example], stdin)
        self.assertRegex(output.splitlines()[-1], f"^{last_line}$")

    def test_every_exception_is_needed(self):
        commands = [
            line
            for name in DOCUMENTS
            for block in blocks(read(name))
            if block.language == "sh"
            for line in lines_of(block)
        ]
        for beginning in NOT_RUN:
            with self.subTest(beginning):
                self.assertTrue(any(command.startswith(beginning) for command in commands))


tested_here = [name for name in DOCUMENTS if name not in TESTED_ELSEWHERE]
add_tests(Commands, "check_document", {name: [name] for name in tested_here})
add_tests(Commands, "check_manual_example", MANUAL_EXAMPLES)
unittest.main(argv=sys.argv[:1])
