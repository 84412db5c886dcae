# SPDX-License-Identifier: MIT
"""Asks certificate_token_plugin, through certbridge, about a fake module, SoftHSM and the system's trust store.

Usage: certificate_token_plugin_test.py CERTBRIDGE PLUGIN FAKE_MODULE OTHER_LIBRARY CERTBRIDGE_CHECK [RUNNER]
"""
import os, pathlib, shutil, subprocess, sys, tempfile
from certificates import CERTIFICATES, make, row_fails
from table import read_text_rows

CERTBRIDGE, PLUGIN, FAKE_MODULE, OTHER_LIBRARY, CERTBRIDGE_CHECK, *RUNNER = map(os.path.abspath, sys.argv[1:])
FEATURES = {"", "windows" if RUNNER else "p11-kit"}
SOFTHSM = next(pathlib.Path("/usr/lib").rglob("libsofthsm2.so"), None)


def use_softhsm():
    if SOFTHSM is None or shutil.which("p11tool") is None:
        print("SKIPPED the rows of SoftHSM: install the packages softhsm2 and gnutls-bin")
        return
    os.environ["SOFTHSM2_CONF"] = os.path.abspath("softhsm.conf")
    FEATURES.add("softhsm")


def with_paths(text):
    return text.replace("@fake", FAKE_MODULE).replace("@softhsm", str(SOFTHSM)).replace("@library", OTHER_LIBRARY)


def run_row(row):
    os.environ["FAKE"] = row.pop("fake", "")
    return row_fails(row, [*RUNNER, CERTBRIDGE, PLUGIN])


def fails_the_checker():
    os.environ["FAKE"] = "hides prints forbids-login"
    pathlib.Path("check.json").write_text('{"action":"getCertificate","module":"%s"}' % FAKE_MODULE)
    run = subprocess.run([*RUNNER, CERTBRIDGE_CHECK, "--request", "check.json", PLUGIN], capture_output=True, text=True)
    if run.returncode != 0:
        print(run.stdout, run.stderr)
    return run.returncode != 0


def loads_another_module():
    """Whether a request that names SoftHSM also loads the module of the trust store, which is registered too."""
    if "softhsm" not in FEATURES:
        return False
    request = '{"action":"getCertificate","uri":"pkcs11:token=card?module-name=softhsm2","label":"leaf"}'
    run = subprocess.run([CERTBRIDGE, PLUGIN], input=request, env={**os.environ, "LD_DEBUG": "files"},
                         capture_output=True, text=True)
    is_right = "CN=leaf" in run.stdout and "libsofthsm2.so" in run.stderr and "p11-kit-trust.so" not in run.stderr
    if not is_right:
        print("softhsm2 is not the only module loaded:", run.stdout, run.stderr)
    return not is_right


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES + ["mkfifo pipe", "echo > text"])
    (pathlib.Path("pin")).write_text("1234\n")
    os.chmod("pin", 0o600)
    os.environ["FAKE_CERTIFICATE"] = os.path.abspath("ec.der")
    os.environ["P11_KIT_DEBUG"] = "conf"  # text on standard error whenever all registered modules are loaded
    rows = [{key: with_paths(value) for key, value in row.items()}
            for row in read_text_rows("certificate_token_plugin.txt")]
    if not RUNNER:
        use_softhsm()
    failures = [row for row in rows if row.pop("needs", "") in FEATURES and run_row(row)]
    sys.exit(len(failures) + fails_the_checker() + loads_another_module())
