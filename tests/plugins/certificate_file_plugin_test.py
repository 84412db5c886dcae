# SPDX-License-Identifier: MIT
"""Asks certificate_file_plugin, through certbridge, about files made with the openssl command.

Usage: certificate_file_plugin_test.py CERTBRIDGE PLUGIN
"""
import os, pathlib, sys, tempfile
from certificates import CERTIFICATES, SELF_SIGNED, check_rows, make

COMMAND = [os.path.abspath(path) for path in sys.argv[1:3]]
FILES = [
    SELF_SIGNED % ("other", "other", "/CN=other", "ed25519") +
    " -addext 'subjectAltName=otherName:1.3.6.1.4.1.311.20.2.3;UTF8:ada@x'",
    SELF_SIGNED % ("kinds", "kinds", "/CN=kinds", "ed448") +
    " -addext subjectAltName=DER:300ca3023000a506a1040c026162",
    "openssl x509 -in kinds.pem -outform DER -out kinds.der",
    "cat ec.key ec.pem rsa.pem > bundle.pem; head -c 99 ec.der > cut.der; (cat ec.der; echo) > long.der",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -certfile rsa.pem -passout pass:ä1 -out ec.p12",
    "openssl pkcs12 -export -in ec.pem -nokeys -passout pass: -out nokey.p12",
    "openssl pkcs12 -export -in ec.pem -nokeys -certpbe PBE-SHA1-3DES -passout pass:x -out old.p12",
    "openssl pkcs12 -export -nocerts -inkey ec.key -passout pass:x -out keyonly.p12",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -nomac -passout pass:x -out nomac.p12",
    "(cat ec.pem; head -c 1048576 /dev/zero) | head -c 1048576 > limit.pem; (cat limit.pem; echo) > over.pem",
    "sed s/^MI/XX/ rsa.pem > damaged.pem; : > empty; mkfifo pipe; mkdir folder",
    "cat ec.pem damaged.pem ed.pem ec.pem rsa.pem > several.pem; cat damaged.pem ed.pem > first.pem",
    "openssl crl2pkcs7 -nocrl -certfile ec.pem -certfile rsa.pem -out two.p7b",
    "openssl crl2pkcs7 -nocrl -certfile ec.pem -certfile rsa.pem -outform DER -out two.p7c",
    "openssl crl2pkcs7 -nocrl -out none.p7b; openssl x509 -in ed.pem -trustout -setalias 'é' -out ed.trusted",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -name leaf -passout pass:x -iter 1000001 -out slow.p12",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -name leaf -passout pass:x -iter 1 -maciter "
    "-maciter -certpbe NONE -out named.p12",
    "cp two.p7c several.pem rsa.der rsa.key damaged.pem folder; mkdir folder/sub; cp other.pem folder/sub",
    "mkdir empty.d; (umask 77; echo ä1 > secret; printf 'ä1' > bare; printf 'ä1\\r\\n' > crlf; "
    "printf 'a\\nb\\n' > lines; : > blank; printf 'a\\0' > nul; head -c 4097 /dev/zero | tr '\\0' x > long)",
    "cp secret shared; chmod 640 shared",
]
PATCHES = {  # invalid UTF-8, an unknown kind of key, undecodable keys, invalid alternative names
    "utf8.der": ("ed.der", b"YYYY", b"\xc3\xff\xed\xa0"),
    "key.der": ("ed.der", b"\x2b\x65\x70", b"\x2b\x65\x7f"),
    "rsakey.der": ("rsa.der", b"\x30\x82\x01\x0a\x02", b"\x30\x82\x01\x0a\x04"),
    "ed25519key.der": ("kinds.der", b"\x2b\x65\x71", b"\x2b\x65\x70"),
    "ed448key.der": ("ed.der", b"\x2b\x65\x70", b"\x2b\x65\x71"),
    "names.der": ("ed.der", b"\x55\x1d\x11\x04\x08\x30", b"\x55\x1d\x11\x04\x08\x31"),
}

with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES + FILES)
    for name, (source, old, new) in PATCHES.items():
        der = pathlib.Path(source).read_bytes()
        assert old in der, name
        pathlib.Path(name).write_bytes(der.replace(old, new))
    sys.exit(check_rows("certificate_file_plugin.txt", COMMAND))
