"""Reads the tables of tests/data that are made of blocks."""
import itertools, pathlib, re

DATA = pathlib.Path(__file__).parent / "data"


def decoded(text):
    """The bytes of a text; %41 stands for the byte 0x41 and %{3*ab} for ababab."""
    def meant(part):
        return int(part[1]) * decoded(part[2]) if part[1] else bytes.fromhex(part[3].decode())
    return re.sub(rb"%\{(\d+)\*(.*?)\}|%([0-9A-F]{2})", meant, text)


def read_rows(name):
    """A dictionary of bytes for each row. A block is a run of lines "key: value", other blocks and
    lines with "#" are comments; a key with several values makes a row of each of them."""
    rows = []
    for block in (DATA / name).read_bytes().split(b"\n\n"):
        values = {}
        for line in block.splitlines():
            if not line.startswith(b"#"):
                key, value = line.split(b":", 1)
                values.setdefault(key.decode(), []).append(decoded(value.strip(b" ")))
        rows += (dict(zip(values, row)) for row in itertools.product(*values.values()) if row)
    assert rows, "no row in " + name
    return rows
