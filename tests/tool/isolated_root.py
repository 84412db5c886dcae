# SPDX-License-Identifier: MIT
"""Runs the program in a root directory that contains only it, the plugin, the loader and libraries.

Usage: isolated_root.py PROGRAM PLUGIN
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

PROGRAM, PLUGIN = map(pathlib.Path, sys.argv[1:])
PLUGIN_NAME = "/zoë-例.so"


def needed_libraries():
    output = "".join(subprocess.check_output(["ldd", file], encoding="utf-8")
                     for file in (PROGRAM, PLUGIN))
    return sorted(set(re.findall(r"(/\S+) \(0x", output)))


def change_root():
    """The command that runs another one in a root directory; None if it is not permitted."""
    for command in (["chroot"], ["unshare", "--map-root-user", "chroot"]):
        if subprocess.run([*command, "/", "true"], stderr=subprocess.DEVNULL).returncode == 0:
            return command
    return None


class IsolatedRoot(unittest.TestCase):
    def test_plugin_with_a_non_ascii_name(self):
        command = change_root()
        if not command:
            self.skipTest("neither chroot nor unshare is permitted")
        with tempfile.TemporaryDirectory() as root:
            for library in needed_libraries():
                os.makedirs(root + os.path.dirname(library), exist_ok=True)
                shutil.copy(library, root + library)
            shutil.copy(PROGRAM, root + "/certbridge")
            shutil.copy(PLUGIN, root + PLUGIN_NAME)
            result = subprocess.run(
                [*command, root, "/certbridge", PLUGIN_NAME], encoding="utf-8",
                input='{"action":"getCertificate","response":"{\\"response\\":[]}"}',
                stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual((result.returncode, result.stdout, result.stderr),
                         (0, '{"getCertificate":{}}\n', ""))


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
