# SPDX-License-Identifier: MIT
"""Conditions that hold in a confined program, shared by the tests of all ways to confine it."""

import shutil
import subprocess

# Condition in the shell's language, and whether {secret}, a file, is named as readable.
CONDITIONS = {
    "other_files_are_hidden": ("! test -e {secret}", False),
    "named_files_are_readable": ("grep -q secret {secret}", True),
    "named_files_are_read_only": ("! (echo x > {secret}) 2>/dev/null", True),
    "root_is_read_only": ("! mkdir /new 2>/dev/null", False),
    "only_the_loopback_interface_exists": ("test $(grep -c : /proc/net/dev) = 1", False),
    "other_processes_are_hidden": ("test $(ls -d /proc/[0-9]* | wc -l) -lt 9", False),
    "environment_is_empty": ('test -z "$SECRET_VARIABLE"', False),
    "memory_is_limited": ("test $(ulimit -v) = 1048576", False),
    "processor_time_is_limited": ("test $(ulimit -t) = 30", False),
    "files_are_limited": ("test $(ulimit -n) = 64", False),
}


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


def write_condition(folder, condition):
    """Writes a program that answers if the condition holds. Returns its path and the secret file."""
    secret = folder / "secret"
    secret.write_text("secret")
    test = condition.format(secret=secret)
    answer = """echo '{"getCertificate":{}}'"""
    return write_program(folder, f"if {test}; then {answer}; else exit 9; fi"), secret
