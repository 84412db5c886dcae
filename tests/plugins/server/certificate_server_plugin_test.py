# SPDX-License-Identifier: MIT
"""Asks certificate_server_plugin, through certbridge, about servers on loopback.

Usage: certificate_server_plugin_test.py CERTBRIDGE PLUGIN TEST_HOSTS CERTBRIDGE_CHECK
"""
import json, os, pathlib, re, socket, ssl, subprocess, sys, tempfile
from certificates import SELF_SIGNED, make, row_fails
from servers import Servers, bytewise, conversation, drip, relay, reset, tls, wait_for_close
from table import read_rows

CERTBRIDGE, PLUGIN, TEST_HOSTS, CERTBRIDGE_CHECK = (os.path.abspath(path) for path in sys.argv[1:5])
# With the host names and the trust store of the test; a sanitizer's runtime must not insist on being first.
ENVIRONMENT = ["env", "LD_PRELOAD=" + TEST_HOSTS, "SSL_CERT_FILE=root.pem", "SSL_CERT_DIR=none",
               "ASAN_OPTIONS=verify_asan_link_order=0"]
COMMAND = [*ENVIRONMENT, CERTBRIDGE, PLUGIN]
EC = "ec -pkeyopt ec_paramgen_curve:P-256"
AUTHORITY = "basicConstraints=critical,CA:TRUE"


def issued(name, issuer="root", extension="subjectAltName=DNS:www.test,IP:127.0.0.1,IP:::1", key=EC, days=30):
    return (f"openssl req -new -nodes -keyout {name}.key -subj /CN={name} -newkey {key} | "
            f"openssl x509 -req -CA {issuer}.pem -CAkey {issuer}.key -days {days} "
            f"-extfile <(echo {extension}) -out {name}.pem")


FILES = [
    SELF_SIGNED % ("root", "root", "/CN=root", EC),
    issued("issuer", extension=AUTHORITY),
    issued("www", "issuer"),
    issued("two", extension="subjectAltName=DNS:two.test"),
    issued("nameless", extension="keyUsage=digitalSignature"),
    issued("client", extension="extendedKeyUsage=clientAuth"),
    issued("rsa", key="rsa:2048"),
    issued("weak", key="rsa:1024"),
    issued("expired", days=0),
    SELF_SIGNED % ("self", "self", "/CN=self", EC) + " -addext subjectAltName=DNS:www.test",
    *(issued(f"link{i}", f"link{i - 1}" if i > 1 else "root", AUTHORITY) for i in range(1, 9)),
    issued("last", "link8"),
]


def has_ipv6():
    try:
        with socket.create_server(("::1", 0), family=socket.AF_INET6):
            return True
    except OSError:
        return False


def with_decrypt_error(data, offset):
    """Replaces the alert "handshake failure"."""
    yield data.replace(b"\x15\x03\x03\0\x02\x02\x28", b"\x15\x03\x03\0\x02\x02\x33")


def start_servers(servers):
    handshake = tls("rsa.pem", "rsa.key")
    servers.serve("tls_1_3", handshake)
    servers.serve("tls_1_2", tls("rsa.pem", "rsa.key", ssl.TLSVersion.TLSv1_2))
    servers.serve("bytewise", relay(servers.ports["www"], bytewise))
    servers.serve("distrusting", relay(servers.ports["requiring_1_2"], with_decrypt_error))
    servers.serve("silent", wait_for_close)
    servers.serve("dripping", drip)
    servers.serve("resetting", reset)
    servers.serve("closing", conversation([b"close"], handshake))
    servers.serve("http", conversation([b">HTTP/1.1 400 Bad Request\r\n\r\n"], handshake))
    servers.bind("refusing")
    servers.fill("full", "127.0.0.1")
    servers.fill("half_full", "127.0.0.2")
    servers.serve("half_full", handshake, servers.ports["half_full"])
    return handshake


class Checker:
    """Checks rows of the table against the servers; counts the failures."""

    def __init__(self, servers, handshake):
        self.servers = servers
        self.handshake = handshake
        self.failures = 0

    def check(self, row):
        ports = self.servers.ports
        texts = {key: re.sub(r"@(\w+)", lambda match: str(ports[match[1]]), value.decode())
                 for key, value in row.items() if key != "talk"}
        self.failures += row_fails(texts, COMMAND)

    def check_conversation(self, row):
        """Checks the row as it is, with bytes sent one by one, and with the end at each earlier step."""
        steps = row["talk"].split(b" | ")
        self.servers.serve("talk", conversation(steps, self.handshake))
        self.check(row)
        self.servers.serve("talk", relay(self.servers.ports["talk"], bytewise))
        self.check(row)
        for count in range(len(steps)):
            self.servers.serve("talk", conversation(steps[:count] + [b"close"], self.handshake))
            self.check({"ask": row["ask"], "code": b"13"})


def ask(port):
    request = {"action": "getCertificate", "host": "127.0.0.1", "port": port, "timeout": 2}
    return subprocess.run(COMMAND, input=json.dumps(request).encode(), capture_output=True)


def breaks_the_contract(port):
    """Whether the checker finds a fault of the plugin while it asks a server."""
    request = {"action": "getCertificate", "host": "www.test", "port": port}
    pathlib.Path("request.json").write_text(json.dumps(request))
    run = subprocess.run([*ENVIRONMENT, CERTBRIDGE_CHECK, "--only-failed", "--request", "request.json", PLUGIN])
    return run.returncode != 0


def bytes_sent(servers, name):
    """The number of bytes that a server sends in a handshake."""
    sizes = []

    def count(data, offset):
        sizes.append(offset + len(data))
        yield data

    servers.serve("counting", relay(servers.ports[name], count))
    assert ask(servers.ports["counting"]).returncode == 0
    return sizes[-1]


def altered(position, size, difference):
    """Changes the byte at the position, or closes the connection there without a difference.

    Closes it after the size as well, since a changed length may make the client wait for more.
    """

    def change(data, offset):
        at = position - offset
        if 0 <= at < len(data):
            yield data[:at]
            yield bytes([data[at] ^ difference]) if difference else None
            data = data[at + 1:]
        yield data
        if offset + len(data) >= size:
            yield None

    return change


def count_wrong_outcomes(servers, name):
    """Closes the connection and changes bytes at many positions of a handshake.

    Each outcome must be an error or the right answer, since some bytes are ignored.
    """
    right = ask(servers.ports[name])
    size = bytes_sent(servers, name)
    failures = 0
    for position in range(0, size, 29):
        for difference in (None, 0x01, 0x80):
            servers.serve("altered", relay(servers.ports[name], altered(position, size, difference)))
            run = ask(servers.ports["altered"])
            is_error = run.returncode == 2 and re.match(rb'{"error":{"code":1[234],', run.stdout)
            if not is_error and (run.returncode, run.stdout) != (0, right.stdout):
                print("FAILED", name, "byte", position, "of", size, "difference", difference, run)
                failures += 1
    return failures


with tempfile.TemporaryDirectory() as folder, Servers() as servers:
    os.chdir(folder)
    make(FILES)
    requests = []
    for row in read_rows("certificate_server_plugin.txt"):
        if "make" in row:
            make([row["make"].decode()])
        elif "server" in row:
            servers.openssl(row["server"].decode(), row["openssl"].decode())
        else:
            requests.append(row)
    checker = Checker(servers, start_servers(servers))
    for row in requests:
        if row.pop("needs", None) and not has_ipv6():
            print("SKIPPED without IPv6:", row)
            continue
        checker.check_conversation(row) if "talk" in row else checker.check(row)
    wrong_outcomes = sum(count_wrong_outcomes(servers, name) for name in ("tls_1_2", "tls_1_3"))
    sys.exit(checker.failures + wrong_outcomes + breaks_the_contract(servers.ports["tls_1_3"]))
