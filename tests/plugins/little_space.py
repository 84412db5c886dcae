# SPDX-License-Identifier: MIT
"""Requests to a plugin in processes with little address space."""
import json, resource, subprocess

SPACES = [5 * 2 ** (i / 2) for i in range(16)]  # 5 MiB to 905 MiB
REPORTS = (b'{"error":{"code":6,', b'{"error":[{"name":"errorCode","value":100}')


def ask(command, request, space=None):
    """Runs the command with this many MiB of address space."""
    limit = int(space * 2 ** 20) if space else resource.RLIM_INFINITY
    return subprocess.run(
        command, input=request.encode(), capture_output=True,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))


def is_wrong(run, complete):
    """Whether the outcome is neither the complete answer nor a report that memory ran out."""
    if run.returncode == 0:
        return run.stdout != complete.stdout
    if run.returncode == 127:
        return b"error while loading shared libraries" not in run.stderr  # not started
    is_report = run.stdout == b"" or run.stdout.startswith(REPORTS)
    return run.returncode != 2 or run.stderr != b"" or not is_report


def count_failures(command, members, ignored_count=1500000):
    """Asks for a certificate by these members and ignored lists; returns the number of wrong outcomes."""
    ignored = ",".join(["[1]"] * ignored_count)
    request = '{"action":"getCertificate",%s,"ignored":[%s]}' % (json.dumps(members)[1:-1], ignored)
    complete = ask(command, request)
    outcomes = [(None, complete), *((space, ask(command, request, space)) for space in SPACES)]
    failures = [(space, run) for space, run in outcomes if complete.returncode != 0 or is_wrong(run, complete)]
    for space, run in failures:
        print("FAILED with %s MiB" % space, run)
    return len(failures)
