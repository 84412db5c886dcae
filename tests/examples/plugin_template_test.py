# SPDX-License-Identifier: MIT
"""Sends requests to a plugin made from a template; all templates give the same answers.

Usage: plugin_template_test.py CERTBRIDGE PLUGIN [RUNNER]
"""
import json, os, pathlib, subprocess, sys, tempfile, unittest
from named_tests import add_table

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


class PluginTemplate(unittest.TestCase):
    def check_row(self, row):
        members = json.loads(row["members"])
        request = json.dumps({"action": "getCertificate", **members}).encode()
        run = subprocess.run(COMMAND, input=request, stdout=subprocess.PIPE, cwd=FOLDER)
        if "error" in row:
            expected = 2, {"error": json.loads(row["error"])}
        else:
            expected = 0, {"getCertificate": {"file": members["file"], "pem": PEM}}
        self.assertEqual((run.returncode, json.loads(run.stdout)), expected)


add_table(PluginTemplate, "check_row", "plugin_template.txt")
with tempfile.TemporaryDirectory() as folder:
    FOLDER = pathlib.Path(folder)
    for name, text in FILES.items():
        (FOLDER / name).write_bytes(text.encode())
    unittest.main(argv=sys.argv[:1])
