"""Asks a plugin made from a template; all answer alike. Arguments: CERTBRIDGE PLUGIN [RUNNER]."""
import json, os, pathlib, subprocess, sys, tempfile

COMMAND = [os.path.abspath(path) for path in (*sys.argv[3:], *sys.argv[1:3])]
PEM = "-----BEGIN CERTIFICATE-----\nMA==\r\n-----END CERTIFICATE-----"
FILES = {"a": PEM + "\n", "2": PEM + PEM, "u": PEM.replace("M", "é"), "e": "",
         "fits": PEM.ljust(32767), "large": PEM.ljust(32768)}
NO_NAME = (1, 'member "file" must be a file name')
HARD = 'é/\\"\x01\n\t\x1f'
DECOY = {"x": [{"name": "file", "value": '\\"}]'}]}
ROWS = [  # members of the request; certificate, or code and message
    (DECOY | {"file": "a"}, PEM), (DECOY, NO_NAME), *(({"file": name}, answer) for name, answer in (
        ("fits", PEM), ("2", PEM), (7, NO_NAME), ("", NO_NAME), ("a\0", NO_NAME),
        *((name, (2, name + ": cannot be read")) for name in (HARD, "large", ".")),
        *((name, (3, name + ": holds no certificate in PEM form")) for name in "ue")))]

folder = tempfile.TemporaryDirectory()
os.chdir(folder.name)
for name, text in FILES.items():
    pathlib.Path(name).write_bytes(text.encode())
for members, answer in ROWS:
    request = json.dumps({"action": "getCertificate", **members}).encode()
    run = subprocess.run(COMMAND, input=request, stdout=subprocess.PIPE)
    expected = (2, {"error": dict(zip(("code", "message"), answer))}) if answer != PEM else (
        0, {"getCertificate": {"file": members["file"], "pem": PEM}})
    if (run.returncode, json.loads(run.stdout)) != expected:
        sys.exit("%s\n%s\n%s" % (members, expected, run))
