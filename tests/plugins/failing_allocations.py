# SPDX-License-Identifier: MIT
"""Runs the program failing_allocations."""
import json, subprocess


def fails_with_failing_allocations(row, command):
    """Runs the command failing_allocations PLUGIN for a row: label, state of the library, stride, members of the request.

    Returns whether an outcome was wrong, and prints it then.
    """
    label, state, stride, members = row
    request = json.dumps({"request": [{"name": key, "value": value} for key, value in members.items()]})
    run = subprocess.run([*command, state, str(stride), request], capture_output=True, text=True)
    if run.returncode != 0:
        print("FAILED", label, run.stdout, run.stderr)
    return run.returncode != 0
