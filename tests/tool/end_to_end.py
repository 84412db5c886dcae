# SPDX-License-Identifier: MIT
"""Runs each row of data/end_to_end.txt through the built program, with the plugins made for it.

Usage: end_to_end.py PROGRAM PLUGIN_FOLDER SANITIZED [RUNNER]
SANITIZED is ON for a program built with the sanitizers. RUNNER is the command that runs a Windows
program.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import shlex
import subprocess
import sys
import tempfile

from table import read_rows

TIMEOUT = 120
# Root without the right to read everything.
NOBODY = "" if os.geteuid() else "setpriv --bounding-set=-dac_override,-dac_read_search"


def request(row):
    if "input" in row:
        return row["input"]
    members = [b'"%s":"%s"' % (key.encode(), row[key])
               for key in ("do", "locale", "response", "error") if key in row]
    members = [b'"action":"getCertificate"', row.get("members"), *members]
    return b"{%s}" % b",".join(filter(None, members))


def output(row):
    """The line on standard output, without its end."""
    line = row.get("output", b"").decode()
    if "sent" in row:
        sent = '{"request":[%s]}' % row["sent"].decode()
        line = '{"getCertificate":{"request":%s}}' % json.dumps(sent, ensure_ascii=False)
    if "certificate" in row:
        line = '{"getCertificate":{%s}}' % row["certificate"].decode()
    if "fatal" in row:
        code, message = row["fatal"].decode().split(" ", 1)
        line = ('{"error":[{"name":"errorCode","value":%s},{"name":"errorMessage","value":%s}]}'
                % (code, json.dumps(message)))
    return line


class Runner:
    def __init__(self, program, plugins, sanitized, runner, scratch):
        self.command = [*runner.split(), os.path.abspath(program)]
        self.plugins, self.sanitized = plugins, sanitized == "ON"
        self.foreign = program.endswith(".exe")
        self.shown = "Z:" + self.command[-1].replace("/", "\\") if self.foreign else self.command[-1]
        self.locale = "German" if self.foreign else make_locale(scratch)
        self.environment = dict(os.environ, LOCPATH=scratch, NOBODY=NOBODY)
        (silent, _), (cut, writer) = os.pipe(), os.pipe()  # their other ends stay open
        os.write(writer, b'{"action"')
        os.set_blocking(cut, False)
        self.inputs = {b"silent": silent, b"cut": cut}
        reader, broken_pipe = os.pipe()
        os.close(reader)
        os.dup2(broken_pipe, 9)

    def reason_to_skip(self, row):
        if "locale" in row and not self.locale:
            return "localedef cannot make a locale here"
        reason = (self.foreign and row.get("native")) or (self.sanitized and row.get("unchecked"))
        return reason and reason.decode()

    def command_line(self, row):
        plugin = row.get("plugin", b"fixture").decode()
        arguments = ["./" + plugin + (".dll" if self.foreign else ".so")]
        if "args" in row:
            arguments = shlex.split(row["args"].decode())
        shell = ["sh", "-c", row["shell"], "sh"] if "shell" in row and not self.foreign else []
        return [*shell, *self.command, *arguments]

    def run(self, row):
        """The row's status, output and error as they are."""
        if "stdin" in row:
            stdin = {"stdin": self.inputs[row["stdin"]]}
        else:
            stdin = {"input": request(row).replace(b"LOCALE", (self.locale or "").encode())}
        try:
            result = subprocess.run(self.command_line(row), **stdin, stdout=subprocess.PIPE,
                                    stderr=subprocess.PIPE, timeout=TIMEOUT, pass_fds=[9],
                                    cwd=self.plugins, env=self.environment)
        except subprocess.TimeoutExpired:
            return "still running after %d seconds" % TIMEOUT
        return result.returncode, result.stdout, result.stderr

    def expected(self, row):
        end = "\r\n" if self.foreign else "\n"
        line = row["windows"].decode() if self.foreign and "windows" in row else output(row)
        status = int(row.get("status", 2 * (not line.startswith('{"get'))))
        error = row.get("stderr", b"").decode().replace("PROGRAM", self.shown)
        line, error = (text and text.replace("\n", end) + end for text in (line, error))
        return status, line.encode(), error.encode()

    def check(self, row):
        """"passed", "failed" or "skipped", and what there is to tell."""
        reason = self.reason_to_skip(row)
        if reason:
            return "skipped", reason
        expected, actual = self.expected(row), self.run(row)
        if actual == expected:
            return "passed", ""
        told = (("row", row), ("expected", expected), ("actual", actual))
        return "failed", "".join("\n  %-8s %s" % (name, shortened(repr(value)))
                                 for name, value in told)


def make_locale(scratch):
    """Makes a locale whose decimal point is a comma; None where the tools are missing."""
    source = scratch / "comma.src"
    source.write_text('LC_NUMERIC\ndecimal_point ","\nthousands_sep "."\nEND LC_NUMERIC\n')
    os.system("localedef -c -i '%s' '%s' >/dev/null 2>&1" % (source, scratch / "comma"))
    return "comma" if (scratch / "comma").exists() else None


def shortened(text):
    return text if len(text) <= 2000 else text[:1000] + " ... " + text[-900:]


def main():
    with tempfile.TemporaryDirectory() as scratch:
        runner = Runner(*sys.argv[1:4], "".join(sys.argv[4:5]), pathlib.Path(scratch))
        rows = read_rows("end_to_end.txt")
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            results = list(pool.map(runner.check, rows))
    for row, (outcome, told) in zip(rows, results):
        if outcome != "passed":
            print("%s %s: %s" % (outcome.upper(), row["label"].decode(), told))
    count = collections.Counter(outcome for outcome, _ in results)
    skipped = ", %d skipped" % count["skipped"] if count["skipped"] else ""
    print("%d passed, %d failed%s" % (count["passed"], count["failed"], skipped))
    return 1 if count["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
