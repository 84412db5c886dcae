# SPDX-License-Identifier: MIT
"""Asks certificate_file_plugin while allocations fail, and with little address space.

Usage: allocation_faults_test.py FAILING_ALLOCATIONS CERTBRIDGE PLUGIN
"""
import os, sys, tempfile
from certificates import SELF_SIGNED, make
from failing_allocations import fails_with_failing_allocations
from little_space import count_failures

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
    ("first use of libcrypto", "cold", 13, {"file": "ed.pem"}),
    ("PEM", "warm", 1, {"file": "ed.pem"}),
    ("list of a PKCS#7 file", "warm", 7, {"file": "both.p7b", "list": True, "subject": "S"}),
    ("PKCS#12", "warm", 11, {"file": "ed.p12", "password": "x"}),
    ("wrong password", "warm", 7, {"file": "ed.p12", "password": "y"}),
    ("missing file", "warm", 1, {"file": "none"}),
]

with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(FILES)
    failures = sum(fails_with_failing_allocations(row, [FAILING_ALLOCATIONS, PLUGIN]) for row in ROWS)
    sys.exit(failures + count_failures([CERTBRIDGE, PLUGIN], {"file": "ed.pem"}))
