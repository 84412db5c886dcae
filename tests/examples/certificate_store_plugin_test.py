"""Asks certificate_store_plugin, through certbridge, about certificates put into a store.

Usage: certificate_store_plugin_test.py CERTBRIDGE PLUGIN PUT_CERTIFICATE [RUNNER]
"""
import json, os, subprocess, sys, tempfile, unittest
from certificates import CERTIFICATES, EC, ED, OTHER_NAME, RSA, SELF_SIGNED, make, openssl_view

CERTBRIDGE, PLUGIN, PUT_CERTIFICATE, *RUNNER = (os.path.abspath(path) for path in sys.argv[1:])
STORE = "certbridge-%d" % os.getpid()
NAMES = "/DC=org/UID=u+CN=m/emailAddress=a@b.c/1.2.3.4=é/street=#x/L= y /ST=,\\+\"<>;\\\\/SN=\x01"
FILES = [SELF_SIGNED % ("names", "names", NAMES, "rsa:1024") + " -set_serial 255",
         "openssl x509 -in names.pem -outform DER -out names.der"]
if RUNNER:  # Wine does not know this kind of alternative name
    CERTIFICATES = [command.replace("," + OTHER_NAME % ";UTF8:", "") for command in CERTIFICATES]
    RSA["subjectAlternativeNames"].pop()
ANSWERS = [  # members of the request; what the answer must hold; the same certificate as PEM
    ({"subject": "例え"}, RSA, "rsa.pem"), ({"subject": "müLLER, s"}, RSA, "rsa.pem"),
    ({"subject": "leaf"}, EC, "ec.pem"), ({"subject": "ed"}, ED, "ed.pem"),
    ({"subject": "a@b.c"}, {"serialNumber": "FF", "publicKeyBits": 1024}, "names.pem"),
    ({"subject": "e"}, {"matches": 3}, None),
]
ERRORS = [  # members of the request; code and message
    ({}, 1, 'member "subject" is missing'), ({"subject": ""}, 1, 'member "subject" is empty'),
    ({"subject": "a", "store": 1}, 1, 'member "store" must be a string'),
    ({"subject": "no such é", "store": STORE}, 2,
     'no certificate in store "%s" has a subject with "no such é"' % STORE),
    ({"subject": STORE}, 2, 'no certificate in store "MY" has a subject with "%s"' % STORE),
    ({"subject": "a", "store": "nö"}, 2, 'there is no certificate store "nö"'),
]


def names_view(pem):
    command = "openssl x509 -noout -subject -issuer -nameopt RFC2253,-esc_msb -in " + pem
    lines = subprocess.check_output(command.split()).decode().splitlines()
    return dict(line.split("=", 1) for line in lines)


class CertificateStorePlugin(unittest.TestCase):
    def ask(self, members):
        request = json.dumps({"action": "getCertificate", **members})
        run = subprocess.run(RUNNER + [CERTBRIDGE, PLUGIN], input=request.encode(), capture_output=True)
        return run.returncode, json.loads(run.stdout.decode()), run.stderr

    def test_answers(self):
        for members, expected, pem in ANSWERS:
            with self.subTest(members):
                status, document, noise = self.ask({**members, "store": STORE})
                actual = document.get("getCertificate", document)
                known = {**openssl_view(pem), **names_view(pem)} if pem else actual
                self.assertEqual((status, actual, noise), (0, {**actual, **known, **expected}, b""))
                self.assertEqual("matches" in actual, "matches" in expected)

    def test_errors(self):
        for members, code, message in ERRORS:
            with self.subTest(members):
                wanted = {"error": {"code": code, "message": message}}
                self.assertEqual(self.ask(members), (2, wanted, b""))


def put_certificate(*arguments):
    subprocess.run([*RUNNER, PUT_CERTIFICATE, *arguments], check=True)


with tempfile.TemporaryDirectory() as folder:
    os.chdir(folder)
    make(CERTIFICATES + FILES)
    put_certificate("MY")  # makes sure that it is there, no more
    put_certificate(STORE, "rsa.der", "ec.der", "ed.der", "names.der")
    try:
        unittest.main(argv=sys.argv[:1])
    finally:
        put_certificate("--remove", STORE)
