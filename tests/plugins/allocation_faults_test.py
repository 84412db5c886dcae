# SPDX-License-Identifier: MIT
"""Asks certificate_file_plugin while allocations fail, and with little address space.

Usage: allocation_faults_test.py FAILING_ALLOCATIONS CERTBRIDGE PLUGIN
"""
import os, resource, subprocess, sys, tempfile
from certificates import SELF_SIGNED, make
from failing_allocations import COLD, fails_with_failing_allocations

FAILING_ALLOCATIONS, CERTBRIDGE, PLUGIN = (os.path.abspath(path) for path in sys.argv[1:4])
FILES = [
    SELF_SIGNED % ("ed", "ed", "/CN=ed", "ed25519") + " -addext subjectAltName=DNS:x",
    SELF_SIGNED % ("rsa", "rsa", "/CN=rsa", "rsa:2048"),
    "openssl pkcs12 -export -in ed.pem -inkey ed.key -certfile rsa.pem -passout pass:x -iter 1 "
    "-maciter -out ed.p12",
    "openssl crl2pkcs7 -nocrl -certfile ed.pem -certfile rsa.pem -out both.p7b",
]
# Label, state of the library, stride, members of the request.
ROWS = [
    ("first use of libcrypto", COLD, 13, {"file": "ed.pem"}),
    ("PEM", "warm", 1, {"file": "ed.pem"}),
    ("list of a PKCS#7 file", "warm", 7, {"file": "both.p7b", "list": True, "subject": "S"}),
    ("PKCS#12", "warm", 11, {"file": "ed.p12", "password": "x"}),
    ("wrong password", "warm", 7, {"file": "ed.p12", "password": "y"}),
    ("missing file", "warm", 1, {"file": "none"}),
]
SPACES = [5 * 2 ** (i / 2) for i in range(16)]  # 5 MiB to 905 MiB


def ask(space=None):
    """Sends a request of 6 MB to a process with this many MiB of address space."""
    request = '{"action":"getCertificate","file":"ed.pem","ignored":[%s0]}' % ("[1]," * 1500000)
    limit = int(space * 2 ** 20) if space else resource.RLIM_INFINITY
    return subprocess.run(
        [CERTBRIDGE, PLUGIN], input=request.encode(), capture_output=True,
        preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))


def is_wrong(run, complete):
    """Whether the outcome is neither the complete answer nor a report that memory ran out."""
    if run.returncode == 0:
        return run.stdout != complete.stdout
    if run.returncode == 127:
        return b"error while loading shared libraries" not in run.stderr  # not started
    reports = (b'{"error":{"code":6,', b'{"error":[{"name":"errorCode","value":100}')
    is_report = run.stdout == b"" or run.stdout.startswith(reports)
    return run.returncode != 2 or run.stderr != b"" or not is_report


def fails_with_little_space(space, complete):
    run = ask(space)
    if is_wrong(run, complete):
        print("FAILED with %d MiB" % space, run)
        return True
    return False


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(FILES)
    complete = ask()
    failures = [complete] if complete.returncode != 0 else []
    failures += [row for row in ROWS if fails_with_failing_allocations(row, [FAILING_ALLOCATIONS, PLUGIN])]
    failures += [space for space in SPACES if fails_with_little_space(space, complete)]
    sys.exit(len(failures))
