# SPDX-License-Identifier: MIT
"""Runs the program while allocations and writes fail, and with little address space.

Usage: fault_injection.py PROGRAM PLUGIN FAILING_CALLS [OPTION_OF_UNITTEST...]
"""

import errno
import os
import pathlib
import resource
import subprocess
import sys
import tempfile
import unittest

PROGRAM, PLUGIN, FAILING_CALLS = map(os.path.abspath, sys.argv[1:4])
REQUEST = (b'{"action":"getCertificate","list":[1,2.5,{"a":null}],'
           b'"response":"{\\"response\\":[{\\"name\\":\\"a\\",\\"value\\":[1.5,\\"b\\"]}]}"}')
ANSWER = b'{"getCertificate":{"a":[1.5,"b"]}}\n'
FATAL = b'{"error":[{"name":"errorCode","value":100},'
# The system's loader cannot start the program.
NOT_STARTED = 127


def run(address_space=None, **environment):
    def limit():
        if address_space:
            resource.setrlimit(resource.RLIMIT_AS, (address_space, address_space))

    return subprocess.run([PROGRAM, PLUGIN], input=REQUEST, stdout=subprocess.PIPE, timeout=60,
                          stderr=subprocess.PIPE, env=dict(os.environ, **environment),
                          preexec_fn=limit)


class FaultInjection(unittest.TestCase):
    def expect_answer_or_failure(self, result):
        """The right answer, or status 2 with a complete fatal error or nothing."""
        self.assertEqual(result.stderr, b"", result)
        if result.returncode == 0:
            self.assertEqual(result.stdout, ANSWER)
            return
        self.assertEqual(result.returncode, 2, result)
        is_fatal = result.stdout.startswith(FATAL) and result.stdout.endswith(b"}]}\n")
        self.assertTrue(is_fatal or not result.stdout, result)

    def run_with_failures(self, **environment):
        """The result, and whether a call has failed."""
        with tempfile.TemporaryDirectory() as folder:
            marker = pathlib.Path(folder, "failed")
            result = run(LD_PRELOAD=FAILING_CALLS, FAILED_FILE=str(marker), **environment)
            return result, marker.exists()

    def fail_each_allocation(self, **environment):
        count, has_failed = 0, True
        while has_failed:
            count += 1
            result, has_failed = self.run_with_failures(FAIL_ALLOCATION=str(count), **environment)
            with self.subTest(allocation=count):
                self.expect_answer_or_failure(result)
        self.assertGreater(count, 20)
        self.assertEqual(result.stdout, ANSWER)

    def test_one_allocation_fails(self):
        self.fail_each_allocation(FAIL_ONCE="1")

    def test_all_allocations_fail_from_one_on(self):
        self.fail_each_allocation()

    def fail_writes(self, error, count):
        result, has_failed = self.run_with_failures(FAIL_WRITE=str(error), FAIL_WRITES=str(count))
        self.assertTrue(has_failed)
        self.assertEqual(result.stderr, b"")
        return result.returncode, result.stdout

    def test_interrupted_writes_are_repeated(self):
        self.assertEqual(self.fail_writes(errno.EINTR, 5), (0, ANSWER))

    def test_non_blocking_writes_are_repeated(self):
        self.assertEqual(self.fail_writes(errno.EAGAIN, 5), (0, ANSWER))

    def test_short_writes_are_continued(self):
        self.assertEqual(self.fail_writes(0, 1000), (0, ANSWER))

    def test_failed_write(self):
        self.assertEqual(self.fail_writes(errno.EIO, 1), (2, b""))

    def test_full_device(self):
        self.assertEqual(self.fail_writes(errno.ENOSPC, 1), (2, b""))

    def test_little_address_space(self):
        def starts(kib):
            return run(address_space=kib * 1024).returncode != NOT_STARTED

        smallest = next(kib for kib in range(3000, 60000, 50) if starts(kib))
        results = [run(address_space=(smallest + step * 75) * 1024) for step in range(16)]
        for result in results:
            self.expect_answer_or_failure(result)
        self.assertIn(0, [result.returncode for result in results])


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1] + sys.argv[4:])
