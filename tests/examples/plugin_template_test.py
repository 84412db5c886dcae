# SPDX-License-Identifier: MIT
"""Sends requests to a plugin made from a template; all templates give the same answers.

Usage: plugin_template_test.py CERTBRIDGE PLUGIN [RUNNER]
"""
import json, os, pathlib, subprocess, sys, tempfile, unittest

COMMAND = [os.path.abspath(path) for path in (*sys.argv[3:], *sys.argv[1:3])]
PEM = "-----BEGIN CERTIFICATE-----\nMA==\r\n-----END CERTIFICATE-----"
FILES = {
    "one": PEM + "\n",
    "two": PEM + PEM,
    "not_ascii": PEM.replace("M", "é"),
    "empty": "",
    "largest": PEM.ljust(32767),
    "too_large": PEM.ljust(32768),
}
HARD_NAME = 'é/\\"\x01\n\t\x1f'
# A member whose value looks like the member "file".
DECOY = {"x": [{"name": "file", "value": '\\"}]'}]}
NO_NAME = (1, 'member "file" must be a file name')

# Members of the request, and the certificate or the code and message of the error.
ROWS = {
    "one_certificate": ({"file": "one"}, PEM),
    "first_of_two_certificates": ({"file": "two"}, PEM),
    "largest_file": ({"file": "largest"}, PEM),
    "decoy_before_name": (DECOY | {"file": "one"}, PEM),
    "decoy_alone": (DECOY, NO_NAME),
    "number_as_name": ({"file": 7}, NO_NAME),
    "empty_name": ({"file": ""}, NO_NAME),
    "nul_in_name": ({"file": "one\0"}, NO_NAME),
    "escapes_in_name": ({"file": HARD_NAME}, (2, HARD_NAME + ": cannot be read")),
    "too_large_file": ({"file": "too_large"}, (2, "too_large: cannot be read")),
    "folder": ({"file": "."}, (2, ".: cannot be read")),
    "certificate_not_ascii": (
        {"file": "not_ascii"}, (3, "not_ascii: holds no certificate in PEM form")),
    "no_certificate": ({"file": "empty"}, (3, "empty: holds no certificate in PEM form")),
}


class PluginTemplate(unittest.TestCase):
    def check(self, members, answer):
        request = json.dumps({"action": "getCertificate", **members}).encode()
        run = subprocess.run(COMMAND, input=request, stdout=subprocess.PIPE, cwd=FOLDER)
        if answer == PEM:
            expected = 0, {"getCertificate": {"file": members["file"], "pem": PEM}}
        else:
            expected = 2, {"error": dict(zip(("code", "message"), answer))}
        self.assertEqual((run.returncode, json.loads(run.stdout)), expected)


for name, row in ROWS.items():
    setattr(PluginTemplate, "test_" + name, lambda self, row=row: self.check(*row))
with tempfile.TemporaryDirectory() as folder:
    FOLDER = pathlib.Path(folder)
    for name, text in FILES.items():
        (FOLDER / name).write_bytes(text.encode())
    unittest.main(argv=sys.argv[:1])
