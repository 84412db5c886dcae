# SPDX-License-Identifier: MIT
"""Runs the rows of data/end_to_end.txt through the built program. Each row is a test.

A row that stands for several, because a key has several values, is numbered: name_1, name_2.
The exit status is 77 if all rows were skipped.
"""

import argparse
import functools
import json
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile
import unittest

from table import read_rows

TIMEOUT_SECONDS = 120
BROKEN_PIPE = 9
ALL_SKIPPED = 77
LOCALE_SOURCE = """LC_NUMERIC
decimal_point ","
thousands_sep "."
END LC_NUMERIC
"""
# Root without the permission to read every file.
NOBODY = "" if os.geteuid() else "setpriv --bounding-set=-dac_override,-dac_read_search"


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("program")
    parser.add_argument("plugins", help="the folder of the fixture plugins")
    parser.add_argument("--sanitized", action="store_true", help="built with the sanitizers")
    parser.add_argument("--emulator", default=[], nargs=1, help="runs a Windows program")
    parser.add_argument("--rows", nargs="+", help="the names of the rows, all by default")
    return parser.parse_args()


ARGUMENTS = parse_arguments()
PROGRAM = os.path.abspath(ARGUMENTS.program)
IS_WINDOWS = PROGRAM.endswith(".exe")
SCRATCH = tempfile.TemporaryDirectory()


@functools.lru_cache(maxsize=None)
def comma_locale():
    """The name of a locale whose decimal point is a comma; None if it cannot be made."""
    if IS_WINDOWS:
        return b"German"
    folder = pathlib.Path(SCRATCH.name)
    source = folder / "comma.src"
    source.write_text(LOCALE_SOURCE)
    # The command fails although it writes the locale, because the other categories are missing.
    subprocess.run(["localedef", "-c", "-i", source, folder / "comma"], check=False,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return b"comma" if (folder / "comma").exists() else None


def request(row):
    if "input" in row:
        return row["input"]
    members = [b'"action":"getCertificate"']
    if "members" in row:
        members.append(row["members"])
    for key in ("do", "locale", "response", "error"):
        if key in row:
            value = row[key].replace(b"LOCALE", comma_locale() or b"").decode()
            members.append(('"%s":%s' % (key, json.dumps(value, ensure_ascii=False))).encode())
    return b"{" + b",".join(members) + b"}"


def expected_line(row):
    """The line on standard output without its end; empty if there is none."""
    if IS_WINDOWS and "windows" in row:
        return row["windows"].decode()
    if "output" in row:
        return row["output"].decode()
    if "certificate" in row:
        return '{"getCertificate":{%s}}' % row["certificate"].decode()
    if "sent" in row:
        text = '{"request":[%s]}' % row["sent"].decode()
        return '{"getCertificate":{"request":%s}}' % json.dumps(text, ensure_ascii=False)
    if "fatal" in row:
        code, message = row["fatal"].decode().split(" ", 1)
        return ('{"error":[{"name":"errorCode","value":%s},{"name":"errorMessage","value":%s}]}'
                % (code, json.dumps(message)))
    return ""


def expected_status(row):
    if "status" in row:
        status = int(row["status"])
        return 2 if IS_WINDOWS and status < 0 else status  # there are no signals
    return 0 if expected_line(row).startswith('{"getCertificate"') else 2


def expected_error(row):
    shown = "Z:" + PROGRAM.replace("/", "\\") if IS_WINDOWS else PROGRAM
    return row.get("stderr", b"").decode().replace("PROGRAM", shown)


def with_line_end(text):
    if not text:
        return b""
    end = "\r\n" if IS_WINDOWS else "\n"
    return (text.replace("\n", end) + end).encode()


def command(row):
    arguments = ["./" + row.get("plugin", b"fixture").decode() + (".dll" if IS_WINDOWS else ".so")]
    if "args" in row:
        arguments = shlex.split(row["args"].decode())
    shell = ["sh", "-c", row["shell"], "sh"] if "shell" in row and not IS_WINDOWS else []
    return [*shell, *ARGUMENTS.emulator, PROGRAM, *arguments]


def shortened(value):
    text = repr(value)
    return text if len(text) <= 2000 else text[:1000] + " ... " + text[-900:]


class EndToEnd(unittest.TestCase):
    def skip_unless_possible(self, row):
        if IS_WINDOWS and "posix" in row:
            self.skipTest(row["posix"].decode())
        if ARGUMENTS.sanitized and "unsanitized" in row:
            self.skipTest(row["unsanitized"].decode())
        if "locale" in row and not comma_locale():
            self.skipTest("localedef cannot make a locale here")

    def open_pipe(self):
        reader, writer = os.pipe()
        self.addCleanup(os.close, reader)
        self.addCleanup(os.close, writer)
        return reader, writer

    def standard_input(self, row):
        """The arguments of subprocess.run() for standard input."""
        if "stdin" not in row:
            return {"input": request(row)}
        reader, writer = self.open_pipe()
        if row["stdin"] == b"broken":
            os.write(writer, b'{"action"')
            os.set_blocking(reader, False)
        return {"stdin": reader}

    def run_row(self, row):
        self.skip_unless_possible(row)
        result = subprocess.run(
            command(row), stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            pass_fds=[] if IS_WINDOWS else [BROKEN_PIPE],
            cwd=ARGUMENTS.plugins, env=dict(os.environ, LOCPATH=SCRATCH.name, NOBODY=NOBODY),
            timeout=TIMEOUT_SECONDS, **self.standard_input(row))
        actual = result.returncode, result.stdout, result.stderr
        expected = (expected_status(row), with_line_end(expected_line(row)),
                    with_line_end(expected_error(row)))
        if actual != expected:
            self.fail("\nrow      %s\nexpected %s\nactual   %s"
                      % (shortened(row), shortened(expected), shortened(actual)))


def add_tests(rows):
    names = [row["name"].decode() for row in rows]
    count = {}
    for name, row in zip(names, rows):
        count[name] = count.get(name, 0) + 1
        number = "_%d" % count[name] if names.count(name) > 1 else ""
        if not ARGUMENTS.rows or name in ARGUMENTS.rows or name + number in ARGUMENTS.rows:
            setattr(EndToEnd, "test_" + name + number, lambda self, row=row: self.run_row(row))


def main():
    add_tests(read_rows("end_to_end.txt"))
    reader, writer = os.pipe()
    os.dup2(writer, BROKEN_PIPE)
    os.close(reader)
    os.close(writer)
    tests = unittest.main(argv=sys.argv[:1], verbosity=2, exit=False).result
    SCRATCH.cleanup()
    if tests.testsRun == 0:
        sys.exit("no such row")
    if not tests.wasSuccessful():
        sys.exit(1)
    sys.exit(ALL_SKIPPED if len(tests.skipped) == tests.testsRun else 0)


if __name__ == "__main__":
    main()
