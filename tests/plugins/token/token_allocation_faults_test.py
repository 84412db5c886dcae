# SPDX-License-Identifier: MIT
"""Asks certificate_token_plugin while allocations fail, and with little address space.

Usage: token_allocation_faults_test.py FAILING_ALLOCATIONS CERTBRIDGE PLUGIN FAKE_MODULE
"""
import os, sys, tempfile
from certificates import CERTIFICATES, make
from failing_allocations import fails_with_failing_allocations
from little_space import count_failures

FAILING_ALLOCATIONS, CERTBRIDGE, PLUGIN, FAKE_MODULE = (os.path.abspath(path) for path in sys.argv[1:5])

with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES)
    os.environ["FAKE_CERTIFICATE"] = os.path.abspath("ec.der")
    # Label, state of the library, stride, members of the request.
    rows = [
        ("first use of libcrypto", "cold", 11, {"module": FAKE_MODULE}),
        ("search", "warm", 1, {"module": FAKE_MODULE, "label": "mine"}),
        ("missing certificate", "warm", 3, {"module": FAKE_MODULE, "label": "yours"}),
    ]
    failures = sum(fails_with_failing_allocations(row, [FAILING_ALLOCATIONS, PLUGIN]) for row in rows)
    for members in ({"module": FAKE_MODULE}, {"uri": "pkcs11:?module-path=" + FAKE_MODULE}):
        failures += count_failures([CERTBRIDGE, PLUGIN], members)
    trust_store = {"token": "System Trust", "subject": "GlobalSign", "list": True}
    failures += count_failures([CERTBRIDGE, PLUGIN], trust_store, ignored_count=0)
    sys.exit(failures)
