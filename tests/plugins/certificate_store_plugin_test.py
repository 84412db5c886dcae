# SPDX-License-Identifier: MIT
"""Asks certificate_store_plugin, through certbridge, about certificates put into a store.

Usage: certificate_store_plugin_test.py CERTBRIDGE PLUGIN PUT_CERTIFICATE [RUNNER]
"""
import os, subprocess, sys, tempfile
from certificates import CERTIFICATES, SELF_SIGNED, check_rows, make, openssl_view

CERTBRIDGE, PLUGIN, PUT_CERTIFICATE, *RUNNER = (os.path.abspath(path) for path in sys.argv[1:])
STORE = "certbridge-%d" % os.getpid()
NAMES = "/DC=org/UID=u+CN=m/emailAddress=a@b.c/1.2.3.4=é/street=#x/L= y /ST=,\\+\"<>;\\\\/SN=\x01"
FILES = [SELF_SIGNED % ("names", "names", NAMES, "rsa:1024") + " -set_serial 255",
         "openssl x509 -in names.pem -outform DER -out names.der"]


def view(pem):
    command = "openssl x509 -noout -subject -issuer -nameopt RFC2253,-esc_msb -in " + pem
    lines = subprocess.check_output(command.split()).decode().splitlines()
    return {**openssl_view(pem), **dict(line.split("=", 1) for line in lines)}


def put_certificate(*arguments):
    subprocess.run([*RUNNER, PUT_CERTIFICATE, *arguments], check=True)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES + FILES)
    put_certificate("user", "MY")  # only creates it
    put_certificate("user", STORE, "rsa.der", "ec.der", "ed.der", "names.der")
    put_certificate("machine", STORE, "ed.der")
    try:
        sys.exit(check_rows("certificate_store_plugin.txt", RUNNER + [CERTBRIDGE, PLUGIN], view, STORE))
    finally:
        put_certificate("user", "--remove", STORE)
        put_certificate("machine", "--remove", STORE)
