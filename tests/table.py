# SPDX-License-Identifier: MIT
"""Reads the tables in tests/data that consist of blocks of "key: value" lines."""

import itertools
import json
import pathlib
import re

DATA = pathlib.Path(__file__).parent / "data"
ESCAPE = re.compile(rb"%\{(\d+)\*(.*?)\}|%([0-9A-F]{2})")


def decoded(text):
    """The bytes that a text denotes: %41 is the byte 0x41, and %{3*ab} is ababab."""

    def replacement(match):
        count, part, byte = match.groups()
        return int(count) * decoded(part) if count else bytes.fromhex(byte.decode())

    return ESCAPE.sub(replacement, text)


def read_block(block):
    """Maps each key of a block to its values, in the order of the lines."""
    values = {}
    for line in block.splitlines():
        if not line.startswith(b"#"):
            key, value = line.split(b":", 1)
            values.setdefault(key.decode(), []).append(decoded(value.strip(b" ")))
    return values


def read_rows(name):
    """The rows of a table, each a dictionary of bytes.

    Blocks are separated by empty lines; lines that begin with "#" are comments. A key with several
    values makes a row for each of them.
    """
    rows = []
    for block in (DATA / name).read_bytes().split(b"\n\n"):
        values = read_block(block)
        if values:
            rows += [dict(zip(values, row)) for row in itertools.product(*values.values())]
    assert rows, f"no rows in {name}"
    return rows


def read_text_rows(name):
    """The rows of a table, each a dictionary of texts."""
    return [{key: value.decode() for key, value in row.items()} for row in read_rows(name)]


def request_members(row):
    """The members of the request in a row for the fixture plugin."""
    texts = {key: row[key] for key in ("do", "locale", "response", "error", "text") if key in row}
    return {**json.loads(row.get("members", "{}")), **texts}
