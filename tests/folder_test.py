# SPDX-License-Identifier: MIT
"""A test case with a temporary folder, and a wait for the end of processes."""

import pathlib
import tempfile
import time
import unittest


def runs(process):
    try:
        stat = pathlib.Path(f"/proc/{process}/stat").read_text()
    except OSError:
        return False
    return stat.rpartition(")")[2].split()[0] != "Z"


class FolderTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def expect_end(self, process):
        """Waits until a process, which need not be a child, has ended."""
        deadline = time.monotonic() + 10
        while runs(process):
            self.assertLess(time.monotonic(), deadline, "the process still runs")
            time.sleep(0.01)
