"""Asks certificate_file_plugin, through certbridge, about files made with the openssl command.

Usage: certificate_file_plugin_test.py CERTBRIDGE PLUGIN
"""
import json, os, pathlib, subprocess, sys, tempfile, unittest
from certificates import CERTIFICATES, EC, ED, RSA, make, openssl_view

CERTBRIDGE, PLUGIN = (os.path.abspath(path) for path in sys.argv[1:3])
FILES = [
    "cat ec.key ec.pem rsa.pem > bundle.pem; head -c 99 ec.der > cut.der; (cat ec.der; echo) > long.der",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -certfile rsa.pem -passout pass:ä1 -out ec.p12",
    "openssl pkcs12 -export -in ec.pem -nokeys -passout pass: -out nokey.p12",
    "openssl pkcs12 -export -in ec.pem -inkey ec.key -nomac -passout pass:x -out nomac.p12",
    "(cat ec.pem; head -c 1048576 /dev/zero) | head -c 1048576 > limit.pem; (cat limit.pem; echo) > over.pem",
    "sed s/^MI/XX/ rsa.pem > damaged.pem; : > empty; mkfifo pipe; mkdir folder",
]
PATCHES = {  # of ed.der: what is not valid UTF-8, an unknown kind of key, alternative names amiss
    "utf8.der": (b"YYYY", b"\xc3\xff\xed\xa0"),
    "key.der": (b"\x2b\x65\x70", b"\x2b\x65\x7f"),
    "names.der": (b"\x55\x1d\x11\x04\x08\x30", b"\x55\x1d\x11\x04\x08\x31"),
}
ANSWERS = [  # members of the request; what the answer must hold; the same certificate as PEM
    ({"file": "rsa.pem"}, RSA, "rsa.pem"), ({"file": "ed.der"}, ED, "ed.pem"),
    ({"file": "ec.der", "password": "unused"}, EC, "ec.pem"), ({"file": "bundle.pem"}, EC, "ec.pem"),
    ({"file": "ec.p12", "password": "ä1"}, EC, "ec.pem"), ({"file": "nokey.p12"}, EC, "ec.pem"),
    ({"file": "limit.pem", "file ": 1}, EC, "ec.pem"),
    ({"file": "utf8.der"}, {"subjectAlternativeNames": ["DNS:" + 4 * "\ufffd"]}, None),
    ({"file": "key.der"}, {"publicKeyAlgorithm": "1.3.101.127", "publicKeyBits": None}, None),
]
NEITHER = ": neither a certificate in PEM or DER form nor a PKCS#12 file"
WRONG_TAG = "cannot be decoded: wrong tag"
ERRORS = [  # members of the request; code and message
    ({}, 1, 'member "file" is missing'), ({"file": 1}, 1, 'member "file" must be a string'),
    ({"file": ""}, 1, 'member "file" is empty'),
    ({"file": "rsa.pem\0"}, 1, 'member "file" must not hold a NUL character'),
    ({"file": "ec.p12", "password": None}, 1, 'member "password" must be a string'),
    ({"file": "nö"}, 2, "nö: no such file"), ({"file": "folder"}, 3, "folder: is a directory"),
    ({"file": "x" * 256}, 3, "x" * 256 + ": File name too long"),
    ({"file": "pipe"}, 3, "pipe: is not a regular file"),
    ({"file": "over.pem"}, 3, "over.pem: is larger than 1048576 bytes"),
    ({"file": "damaged.pem"}, 4, "damaged.pem: its PEM certificate is damaged: wrong tag"),
    *[({"file": name}, 4, name + NEITHER) for name in ("cut.der", "long.der", "empty", "rsa.key")],
    ({"file": "names.der"}, 4, "names.der: the certificate's subject alternative name " + WRONG_TAG),
    ({"file": "ec.p12"}, 5, "ec.p12: wrong password for this PKCS#12 file"),
    ({"file": "nomac.p12", "password": "y"}, 4, "nomac.p12: this PKCS#12 file has no "
     "MAC and cannot be opened with this password"),
]


class CertificateFilePlugin(unittest.TestCase):
    def ask(self, members):
        request = json.dumps({"action": "getCertificate", **members})
        run = subprocess.run([CERTBRIDGE, PLUGIN], input=request.encode(), capture_output=True)
        return run.returncode, json.loads(run.stdout.decode()), run.stderr

    def test_answers(self):
        for members, expected, pem in ANSWERS:
            with self.subTest(members):
                status, document, noise = self.ask(members)
                actual = document.get("getCertificate", document)
                wanted = {**actual, **(openssl_view(pem) if pem else {}), **expected}
                self.assertEqual((status, actual, noise), (0, wanted, b""))

    def test_errors(self):
        for members, code, message in ERRORS:
            with self.subTest(members):
                wanted = {"error": {"code": code, "message": message}}
                self.assertEqual(self.ask(members), (2, wanted, b""))


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES + FILES)
    der = pathlib.Path("ed.der").read_bytes()
    for name, (old, new) in PATCHES.items():
        assert old in der, name
        pathlib.Path(name).write_bytes(der.replace(old, new))
    unittest.main(argv=sys.argv[:1])
