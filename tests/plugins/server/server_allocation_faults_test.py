# SPDX-License-Identifier: MIT
"""Asks certificate_server_plugin while allocations fail, and with little address space.

Usage: server_allocation_faults_test.py FAILING_ALLOCATIONS CERTBRIDGE PLUGIN
"""
import os, sys, tempfile
from certificates import SELF_SIGNED, make
from failing_allocations import fails_with_failing_allocations
from little_space import count_failures
from servers import Servers, conversation, tls

FAILING_ALLOCATIONS, CERTBRIDGE, PLUGIN = (os.path.abspath(path) for path in sys.argv[1:4])

with tempfile.TemporaryDirectory() as folder, Servers() as servers:
    os.chdir(folder)
    make([SELF_SIGNED % ("ec", "ec", "/CN=ec", "ec -pkeyopt ec_paramgen_curve:P-256")])
    handshake = tls("ec.pem", "ec.key")
    servers.serve("tls", handshake)
    servers.serve("postgres", conversation([b"<\0\0\0\x08\x04\xD2\x16/", b">S", b"tls"], handshake))
    servers.serve("refusal", conversation([b"<\0\0\0\x08\x04\xD2\x16/", b">N"], handshake))
    server = {"host": "127.0.0.1", "port": servers.ports["tls"], "trustFile": "ec.pem"}
    # Label, state of the library, stride, members of the request.
    rows = [
        ("first use of libssl", "cold", 197, server),
        ("handshake", "warm", 97, server),
        ("lookup of the name", "warm", 331, {**server, "host": "localhost", "alpn": ["a"]}),
        ("plain start", "warm", 331, {**server, "port": servers.ports["postgres"], "startTls": "postgres"}),
        ("refused plain start", "warm", 7, {**server, "port": servers.ports["refusal"], "startTls": "postgres"}),
    ]
    failures = sum(fails_with_failing_allocations(row, [FAILING_ALLOCATIONS, PLUGIN]) for row in rows)
    sys.exit(failures + count_failures([CERTBRIDGE, PLUGIN], server))
