# SPDX-License-Identifier: MIT
"""Certificates made with the openssl command, and the check of a plugin's answers about them."""
import json, pathlib, re, subprocess, time
from table import read_text_rows

SELF_SIGNED = "openssl req -x509 -nodes -utf8 -keyout %s.key -out %s.pem -subj '%s' -newkey %s"
CERTIFICATES = [
    SELF_SIGNED % ("rsa", "rsa", "/C=DE/O=Müller, Söhne/CN=例え", "rsa:2048 -days 36500") +
    " -addext 'subjectAltName=DNS:example.org,IP:127.0.0.1,IP:fe80::1,email:a@b.c,URI:http://x/,"
    "RID:1.2.3'",
    SELF_SIGNED % ("ed", "ed", "/CN=ed", "ed25519 -addext subjectAltName=DNS:YYYY"),
    "openssl req -new -nodes -keyout ec.key -subj /CN=leaf -newkey ec "
    "-pkeyopt ec_paramgen_curve:P-384 | openssl x509 -req -CA rsa.pem -CAkey rsa.key "
    "-set_serial -10 -out ec.pem",
    "for name in rsa ec ed; do openssl x509 -in $name.pem -outform DER -out $name.der; done",
]


def make(commands):
    for command in commands:
        subprocess.run(["bash", "-ec", command], check=True, capture_output=True)


def openssl_view(pem):
    command = "openssl x509 -noout -dates -fingerprint -sha256 -serial -in " + pem
    values = re.findall("=(.*)", subprocess.check_output(command.split(), text=True))
    times = [time.strftime("%Y-%m-%dT%H:%M:%SZ", time.strptime(value, "%b %d %H:%M:%S %Y GMT"))
             for value in values[:2]]
    return dict(zip(("notBefore", "notAfter", "sha256Fingerprint", "serialNumber"), times + values[2:]),
                pem=re.search("-----BEGIN C.*", pathlib.Path(pem).read_text(), re.S)[0])


def with_subjects(members):
    """The members with each list of certificates reduced to their subjects."""
    return {name: [item["subject"] for item in value] if name in ("certificates", "chain") else value
            for name, value in members.items()}


def row_fails(row, command, view=openssl_view):
    """Sends the request of a row to the plugin; returns whether the outcome differs, and prints it then.

    ask     members of the request
    answer  members that the answer must have, "certificates" and "chain" as arrays of subjects; other
            members may have any value
    absent  a member that it must not have
    pem     a file with the same certificate, of which openssl shows more members
    error   the members of the error document instead
    code    the code of the error document instead, whose message depends on the version of a library
    make    instead of a request: a command that makes files for the rows below
    """
    if "make" in row:
        make([row["make"]])
        return False
    request = '{"action":"getCertificate",%s}' % row["ask"]
    run = subprocess.run(command, input=request.encode(), capture_output=True)
    actual = json.loads(run.stdout.decode() or "null")
    if "code" in row:
        expected = 2, {"error": {**(actual or {}).get("error", {}), "code": int(row["code"])}}
    elif "error" in row:
        expected = 2, {"error": json.loads("{%s}" % row["error"])}
    else:
        answer = (actual or {}).get("getCertificate", {})
        members = {**with_subjects(answer), **(view(row["pem"]) if "pem" in row else {})}
        members.update(json.loads("{%s}" % row["answer"]))
        members.pop(row.get("absent"), None)
        expected = 0, {"getCertificate": members}
    if actual and "getCertificate" in actual:
        actual["getCertificate"] = with_subjects(actual["getCertificate"])
    fails = (run.returncode, actual, run.stderr) != (*expected, b"")
    if fails:
        print("FAILED", row, "expected", expected, "actual", run, sep="\n  ")
    return fails


def check_rows(table, command, view=openssl_view, store=""):
    """Checks the rows of the table, in which STORE stands for a name; returns the number of failures."""
    rows = [{key: value.replace("STORE", store) for key, value in row.items()} for row in read_text_rows(table)]
    return sum(row_fails(row, command, view) for row in rows)
