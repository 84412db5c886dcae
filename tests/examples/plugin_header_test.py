# SPDX-License-Identifier: MIT
"""Compiles plugins by single compiler commands, as an author without a build system does, and checks
them with certbridge-check.

Usage: plugin_header_test.py SOURCE_FOLDER CHECKER C_COMPILER CXX_COMPILER
"""
import pathlib, subprocess, sys, tempfile, unittest

SOURCE, CHECKER, C, CXX = pathlib.Path(sys.argv[1]), *sys.argv[2:5]
C_PLUGIN, CXX_PLUGIN = "examples/plugin_template/c/my_plugin.c", "examples/minimal_plugin.cpp"
WARNINGS = ["-O2", "-Werror", "-Wall", "-Wextra", "-pedantic"]
ROWS = {
    "c": (C, C_PLUGIN, []),
    "c99_without_warnings": (C, C_PLUGIN, ["-std=c99", *WARNINGS]),
    "c_with_hidden_visibility": (C, C_PLUGIN, ["-fvisibility=hidden"]),
    "cxx11_without_warnings": (CXX, CXX_PLUGIN, ["-std=c++11", *WARNINGS]),
    "cxx_with_hidden_visibility": (CXX, CXX_PLUGIN, ["-fvisibility=hidden"]),
}


class PluginHeader(unittest.TestCase):
    def check(self, compiler, source, flags):
        with tempfile.TemporaryDirectory() as folder:
            plugin = folder + "/plugin.so"
            build = [compiler, "-shared", "-fPIC", *flags, "-I", SOURCE, "-o", plugin, SOURCE / source]
            for command in (build, [CHECKER, plugin]):
                run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                     encoding="utf-8")
                self.assertEqual((run.returncode, "warning" in run.stdout), (0, False), run.stdout)


for name, row in ROWS.items():
    setattr(PluginHeader, "test_" + name, lambda self, row=row: self.check(*row))
unittest.main(argv=sys.argv[:1])
