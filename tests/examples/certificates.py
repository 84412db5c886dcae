"""Certificates made with the openssl command, and what a plugin must say about them."""
import pathlib, re, subprocess, time

OTHER_NAME = "otherName:1.3.6.1.4.1.311.20.2.3%sada@x"
SELF_SIGNED = "openssl req -x509 -nodes -utf8 -keyout %s.key -out %s.pem -subj '%s' -newkey %s"
CERTIFICATES = [
    SELF_SIGNED % ("rsa", "rsa", "/C=DE/O=Müller, Söhne/CN=例え", "rsa:2048 -days 36500") +
    " -addext 'subjectAltName=DNS:example.org,IP:127.0.0.1,IP:fe80::1,email:a@b.c,URI:http://x/,"
    "RID:1.2.3," + OTHER_NAME % ";UTF8:" + "'",
    SELF_SIGNED % ("ed", "ed", "/CN=ed", "ed25519 -addext subjectAltName=DNS:YYYY"),
    "openssl req -new -nodes -keyout ec.key -subj /CN=leaf -newkey ec "
    "-pkeyopt ec_paramgen_curve:P-384 | openssl x509 -req -CA rsa.pem -CAkey rsa.key "
    "-set_serial -10 -out ec.pem",
    "for name in rsa ec ed; do openssl x509 -in $name.pem -outform DER -out $name.der; done",
]
RSA = {"subject": "CN=例え,O=Müller\\, Söhne,C=DE", "publicKeyAlgorithm": "RSA",
       "publicKeyBits": 2048, "subjectAlternativeNames": [
           "DNS:example.org", "IP:127.0.0.1", "IP:fe80::1", "email:a@b.c", "URI:http://x/",
           "RID:1.2.3", OTHER_NAME % ":"]}
EC = {"subject": "CN=leaf", "issuer": RSA["subject"], "publicKeyAlgorithm": "EC",
      "publicKeyBits": 384, "serialNumber": "-0A", "subjectAlternativeNames": []}
ED = {"subject": "CN=ed", "publicKeyAlgorithm": "ED25519"}


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
