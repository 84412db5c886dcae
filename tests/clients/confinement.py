# SPDX-License-Identifier: MIT
"""What the tests of all ways to confine a program share."""

import shutil
import subprocess


def skip_unless_possible(test, *commands):
    for command in ("bwrap", *commands):
        if not shutil.which(command):
            test.skipTest(f"{command} is not installed")
    trial = ["bwrap", "--unshare-all", "--ro-bind", "/", "/", "true"]
    if subprocess.run(trial, stderr=subprocess.DEVNULL).returncode:
        test.skipTest("this system does not permit bwrap to create namespaces")


def write_program(folder, commands):
    """Writes a script that takes the role of the program. Returns its path."""
    program = folder / "certbridge"
    program.write_text(f"#!/bin/sh\ncat > /dev/null\n{commands}\n")
    program.chmod(0o755)
    return program


def write_condition(folder, row):
    """Writes a program that answers if the condition of a row holds. Returns its path and the readable files."""
    secret = folder / "secret"
    secret.write_text("secret")
    condition = row["holds"].replace("FILE", str(secret))
    answer = """echo '{"getCertificate":{}}'"""
    program = write_program(folder, f"if {condition}; then {answer}; else exit 9; fi")
    return program, [str(secret)] if "reads" in row else []
