# SPDX-License-Identifier: MIT
"""Servers on loopback for the tests of certificate_server_plugin, on ports that the system chooses."""
import contextlib, re, socket, ssl, struct, subprocess, threading


class Servers(contextlib.ExitStack):
    """Servers by name; ports maps each name to its port. All end with the context."""

    def __init__(self):
        super().__init__()
        self.ports = {}

    def bind(self, name, host="127.0.0.1", port=0):
        """Reserves a port, to which no connection is possible before listen()."""
        endpoint = self.enter_context(socket.socket())
        endpoint.bind((host, port))
        self.ports[name] = endpoint.getsockname()[1]
        return endpoint

    def serve(self, name, handle, port=0):
        """Calls handle(connection) in a thread for each connection, then closes it."""
        listener = self.bind(name, port=port)
        listener.listen()
        threading.Thread(target=accept_all, args=(listener, handle), daemon=True).start()

    def fill(self, name, host):
        """A port that accepts no further connection: its queue is full, and later ones wait."""
        listener = self.bind(name, host)
        listener.listen(0)
        for _ in range(8):
            client = self.enter_context(socket.socket())
            client.setblocking(False)
            client.connect_ex(listener.getsockname())

    def openssl(self, name, arguments):
        """Starts "openssl s_server"; its standard input is kept open, since its end would stop it."""
        process = subprocess.Popen(
            ["openssl", "s_server", "-accept", "0", *arguments.split()], stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.callback(end, process)
        for line in process.stdout:
            if match := re.match(r"ACCEPT .*:(\d+)", line):
                self.ports[name] = int(match[1])
                break
        else:
            raise RuntimeError(f"openssl s_server {arguments} has not started")
        threading.Thread(target=process.stdout.read, daemon=True).start()


def end(process):
    process.kill()
    process.wait()


def accept_all(listener, handle):
    def handle_and_close(connection):
        with connection, contextlib.suppress(OSError):  # which ssl.SSLError is, too
            handle(connection)
            connection.shutdown(socket.SHUT_RDWR)  # another thread may still wait for its data

    with contextlib.suppress(OSError):  # closed
        while True:
            connection, _ = listener.accept()
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            threading.Thread(target=handle_and_close, args=(connection,), daemon=True).start()


def wait_for_close(connection):
    while connection.recv(4096):
        pass


def drip(connection):
    """Sends a byte from time to time, without end."""
    while True:
        connection.sendall(b"x")
        threading.Event().wait(0.1)


def reset(connection):
    """Closes the connection without its regular end, after the first byte."""
    connection.recv(1)
    connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    connection.close()


def tls(certificate, key, version=ssl.TLSVersion.TLSv1_3):
    """Returns a function that performs the server's side of a handshake and sends nothing else."""
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    context.maximum_version = version
    context.num_tickets = 0
    context.options |= ssl.OP_NO_TICKET

    def handle(connection):
        with context.wrap_socket(connection, server_side=True) as session:
            wait_for_close(session)

    return handle


def conversation(steps, handshake):
    """Plays the steps: b">TEXT" sends, b"<TEXT" receives exactly this, b"tls" performs the handshake.

    The connection is closed at a received text that differs, and with the step b"close".
    """

    def handle(connection):
        for step in steps:
            kind, text = step[:1], step[1:]
            if step == b"tls":
                return handshake(connection)
            if step == b"close":
                return None
            if kind == b">":
                connection.sendall(text)
            elif connection.recv(len(text), socket.MSG_WAITALL) != text:
                return None
        return wait_for_close(connection)

    return handle


def relay(port, change):
    """Passes bytes on to the server at the port, and those from it through change().

    change(data, offset) yields the pieces to send for the data at an offset of the stream, and None
    to close the connection.
    """

    def handle(connection):
        with socket.create_connection(("127.0.0.1", port)) as server:
            threading.Thread(target=pass_on, args=(connection, server), daemon=True).start()
            offset = 0
            while data := server.recv(65536):
                for piece in change(data, offset):
                    if piece is None:
                        return
                    connection.sendall(piece)
                offset += len(data)

    return handle


def pass_on(source, target):
    with contextlib.suppress(OSError):
        while data := source.recv(65536):
            target.sendall(data)
        target.shutdown(socket.SHUT_WR)


def bytewise(data, offset):
    count = max(0, 4096 - offset)
    for byte in data[:count]:
        yield bytes([byte])
    yield data[count:]
