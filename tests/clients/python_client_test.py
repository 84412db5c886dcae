# SPDX-License-Identifier: MIT
"""Runs the Python client against plugins that answer, fail, print, crash or hang.

Usage: python_client_test.py PROGRAM FIXTURE_PLUGIN
"""

import asyncio
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

PROGRAM, FIXTURE = (str(pathlib.Path(path).resolve()) for path in sys.argv[1:3])
CLIENT = pathlib.Path(__file__).resolve().parents[2] / "clients/python"
sys.path.insert(0, str(CLIENT))
sys.dont_write_bytecode = True

import certbridge  # noqa: E402

RESPONSE = '{"response":[{"name":"subject","value":"CN=x"}]}'
PLUGIN_ERROR = '{"error":[{"name":"errorCode","value":7},{"name":"erroMessage","value":"why"}]}'
LIMIT = 1000000

# Members of the request, and the result or the exception with a part of its text.
BEHAVIOURS = {
    "answers": ({"response": RESPONSE}, {"subject": "CN=x"}),
    "prints_a_line_first": ({"do": "print", "response": RESPONSE}, {"subject": "CN=x"}),
    "reports_an_error": ({"error": PLUGIN_ERROR}, (certbridge.PluginError, "plugin error 7: why")),
    "sets_no_reply": ({"do": "nothing"}, (certbridge.FatalError, "fatal error 100: no output")),
    "throws": ({"do": "throw"}, (certbridge.NoAnswer, "exit status 2")),
    "exits_with_status_0": ({"do": "exit"}, (certbridge.NoAnswer, "exit status 0")),
    "aborts": ({"locale": "no such locale"}, (certbridge.NoAnswer, "signal 6")),
    "redirects_standard_output": ({"do": "close"}, (certbridge.NoAnswer, "exit status 0")),
    "hangs": ({"do": "hang"}, (certbridge.TimedOut, "within 1 seconds")),
    "answers_too_much": ({"text": "x" * LIMIT}, (certbridge.NoAnswer, f"more than {LIMIT} bytes")),
    "gets_a_lone_surrogate": ({"text": "\ud800"}, (certbridge.FatalError, "fatal error 102")),
}

# Script that takes the role of the program, and the result or the exception with a part of its text.
PROGRAMS = {
    "error_with_status_0": ("""echo '{"error":{}}'""", (certbridge.NoAnswer, "contradicts")),
    "result_with_status_2": ("""echo '{"getCertificate":{}}'; exit 2""", (certbridge.NoAnswer, "contradicts")),
    "result_then_crash": ("""echo '{"getCertificate":{}}'; kill -9 $$""", (certbridge.NoAnswer, "signal 9")),
    "incomplete_line": ("""printf '{"getCertificate":{}}'""", (certbridge.NoAnswer, "exit status 0")),
    "malformed_line": ("""echo '{"getCertificate":{'""", (certbridge.NoAnswer, "malformed")),
    "text_after_the_line": ("""echo '{"getCertificate":{}}'; echo bye""", {}),
    "child_holds_output": ("""sleep 60 & echo '{"getCertificate":{}}'""", {}),
}

# Arguments, standard input and exit status of the command.
COMMANDS = {
    "help": (["--help"], "", 0),
    "result": ([FIXTURE], '{"a":1}', 0),
    "no_plugin": ([], "", 1),
    "request_is_a_list": ([FIXTURE], "[]", 1),
    "request_is_not_json": ([FIXTURE], "{", 1),
    "request_with_action": ([FIXTURE], '{"action":"getCertificate"}', 1),
    "fatal_error": (["./missing.so"], "", 2),
    "no_answer": ([FIXTURE], '{"do":"throw"}', 3),
    "timeout": (["--timeout", "1", FIXTURE], '{"do":"hang"}', 124),
    "unknown_plugin": (["no_such_plugin"], "", 127),
}


def add_tests(test_case, method, rows):
    def add_test(label, row):
        setattr(test_case, f"test_{label}", lambda self: getattr(self, method)(*row))

    for label, row in rows.items():
        add_test(label, row)


class ClientTest(unittest.TestCase):
    def setUp(self):
        os.environ["CERTBRIDGE_PROGRAM"] = PROGRAM
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def expect(self, expected, members, **options):
        options = {"timeout": 20, "max_answer": LIMIT, **options}
        if isinstance(expected, dict):
            self.assertEqual(certbridge.get_certificate(FIXTURE, **options, **members), expected)
            return
        kind, text = expected
        with self.assertRaises(kind) as caught:
            certbridge.get_certificate(FIXTURE, **options, **members)
        self.assertIn(text, str(caught.exception))

    def use_script(self, text):
        program = self.folder / "certbridge"
        program.write_text(f"#!/bin/sh\ncat > /dev/null\n{text}\n")
        program.chmod(0o755)
        os.environ["CERTBRIDGE_PROGRAM"] = str(program)


class Behaviours(ClientTest):
    def check_behaviour(self, members, expected):
        self.expect(expected, members, timeout=1 if members.get("do") == "hang" else 20)


class Programs(ClientTest):
    def check_program(self, script, expected):
        self.use_script(script)
        self.expect(expected, {})


class Commands(ClientTest):
    def check_command(self, arguments, text, status):
        command = [sys.executable, "-m", "certbridge", *arguments]
        result = subprocess.run(command, input=text, cwd=CLIENT, capture_output=True, encoding="utf-8")
        self.assertEqual(result.returncode, status, result.stderr)
        self.assertEqual(bool(result.stdout), status == 0)


class Processes(ClientTest):
    def wait_until_gone(self, process):
        deadline = time.monotonic() + 10
        while pathlib.Path(f"/proc/{process}/stat").exists():
            state = pathlib.Path(f"/proc/{process}/stat").read_text().rpartition(")")[2].split()[0]
            if state == "Z":
                return
            self.assertLess(time.monotonic(), deadline, "the process still runs")
            time.sleep(0.01)

    def use_hanging_script(self):
        child = self.folder / "child"
        self.use_script(f"sleep 60 & echo $! > {child}.new; mv {child}.new {child}; wait")
        return child

    def test_children_end_with_the_time_limit(self):
        child = self.use_hanging_script()
        self.expect((certbridge.TimedOut, ""), {}, timeout=1)
        self.wait_until_gone(child.read_text().strip())

    def test_cancelling_a_task_kills_the_program(self):
        child = self.use_hanging_script()

        async def cancel():
            task = asyncio.ensure_future(certbridge.get_certificate_async(FIXTURE))
            while not child.exists():
                await asyncio.sleep(0.01)
            task.cancel()
            with self.assertRaises(asyncio.CancelledError):
                await task

        asyncio.run(cancel())
        self.wait_until_gone(child.read_text().strip())

    def test_async_result(self):
        result = asyncio.run(certbridge.get_certificate_async(FIXTURE, response=RESPONSE))
        self.assertEqual(result, {"subject": "CN=x"})

    def test_bare_name_is_looked_up_in_the_plugin_folder(self):
        os.environ["CERTBRIDGE_PLUGINS"] = str(pathlib.Path(FIXTURE).parent)
        self.addCleanup(os.environ.pop, "CERTBRIDGE_PLUGINS")
        result = certbridge.get_certificate("fixture", response=RESPONSE)
        self.assertEqual(result, {"subject": "CN=x"})

    def test_missing_program(self):
        os.environ["CERTBRIDGE_PROGRAM"] = str(self.folder / "missing")
        self.expect((certbridge.NotFound, "does not name a program"), {})


class Confined(ClientTest):
    """Reads /proc and the file system from a script that takes the role of the program."""

    def setUp(self):
        super().setUp()
        for command in ("bwrap", "prlimit"):
            if not shutil.which(command):
                self.skipTest(f"{command} is not installed")
        trial = ["bwrap", "--unshare-all", "--ro-bind", "/", "/", "true"]
        if subprocess.run(trial, stderr=subprocess.DEVNULL).returncode:
            self.skipTest("this system does not permit bwrap to create namespaces")
        self.secret = self.folder / "secret"
        self.secret.write_text("secret")

    def check_command(self, condition, files=()):
        self.use_script(f"""if {condition}; then echo '{{"getCertificate":{{}}}}'; else exit 9; fi""")
        self.expect({}, {}, confine=certbridge.Confinement(files=files))

    def test_plugin_answers(self):
        self.expect({"subject": "CN=x"}, {"response": RESPONSE}, confine=certbridge.Confinement())

    def test_crash_gives_no_answer(self):
        expected = (certbridge.NoAnswer, "exit status 134")
        self.expect(expected, {"locale": "no such locale"}, confine=certbridge.Confinement())

    def test_other_files_are_hidden(self):
        self.check_command(f"! test -e {self.secret}")

    def test_named_files_are_readable(self):
        self.check_command(f"grep -q secret {self.secret}", files=[str(self.secret)])

    def test_named_files_are_read_only(self):
        self.check_command(f"! (echo x > {self.secret}) 2>/dev/null", files=[str(self.secret)])
        self.assertEqual(self.secret.read_text(), "secret")

    def test_root_is_read_only(self):
        self.check_command("! mkdir /new 2>/dev/null")

    def test_only_the_loopback_interface_exists(self):
        self.check_command("test $(grep -c : /proc/net/dev) = 1")

    def test_environment_is_empty(self):
        os.environ["SECRET_VARIABLE"] = "secret"
        self.addCleanup(os.environ.pop, "SECRET_VARIABLE")
        self.check_command('test -z "$SECRET_VARIABLE"')

    def test_memory_is_limited(self):
        self.check_command("test $(ulimit -v) = 1048576")


add_tests(Behaviours, "check_behaviour", BEHAVIOURS)
add_tests(Programs, "check_program", PROGRAMS)
add_tests(Commands, "check_command", COMMANDS)
unittest.main(argv=sys.argv[:1])
