# SPDX-License-Identifier: MIT
"""Reads the documents: their command blocks, tables, links and manual pages."""

import pathlib
import re
import typing

SOURCE = pathlib.Path(__file__).resolve().parents[1]

FENCED_BLOCK = re.compile(r"^```(\w*)\n(.*?)^```$", re.DOTALL | re.MULTILINE)
LINK = re.compile(r"\]\(([^)\s]+)\)")
HEADING = re.compile(r"^#+ +(.*)", re.MULTILINE)


class Block(typing.NamedTuple):
    language: str
    text: str
    line: int


def read(name):
    return (SOURCE / name).read_text(encoding="utf-8")


def blocks(text):
    """The fenced code blocks of a Markdown document, in their order."""
    return [
        Block(match[1], match[2], text.count("\n", 0, match.start()) + 1)
        for match in FENCED_BLOCK.finditer(text)
    ]


def without_blocks(text):
    return FENCED_BLOCK.sub("", text)


def anchors(text):
    """The anchors of the headings, as the usual renderers of Markdown form them."""
    headings = HEADING.findall(without_blocks(text))
    return {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-") for heading in headings}


def links(text):
    """The targets of the links that do not lead to another site."""
    found = LINK.findall(without_blocks(text))
    return [target for target in found if not re.match(r"\w+:", target)]


def broken_links(document):
    """The links of a document whose target or heading does not exist."""
    for link in links(document.read_text(encoding="utf-8")):
        name, _, anchor = link.partition("#")
        target = document.parent / name if name else document
        if not target.exists() or (
                anchor and anchor not in anchors(target.read_text(encoding="utf-8"))):
            yield link


def table(text, *header):
    """The rows of the only table whose header begins with these cells."""
    start = "| " + " | ".join(header) + " |"
    assert text.count("\n" + start) == 1, f"{text.count(start)} tables begin with {start}"
    lines = text[text.index("\n" + start) + 1:].splitlines()
    rows = []
    for line in lines[2:]:
        if not line.startswith("|"):
            break
        rows.append([cell.strip() for cell in line.strip("| ").split(" | ")])
    return rows


def code_spans(text):
    return re.findall(r"`([^`]+)`", text)


def plain_roff(text):
    """A line of a manual page without font changes and escapes."""
    text = re.sub(r"^\.(BR|RB|BI|IR|RI|B|I) ", "", text)
    text = re.sub(r"\\f[BIPR]", "", text)
    return text.replace(r"\-", "-").replace(r"\(aq", "'").replace(r"\e", "\\").replace('"" ', "")


def manual_tags(page, section):
    """The tags of the paragraphs in a section of a manual page, without quotes and fonts."""
    found = re.search(rf'^\.SH "?{section}"?\n(.*?)(?=^\.SH |\Z)', page, re.DOTALL | re.MULTILINE)
    tags = re.findall(r"^\.T[PQ].*\n(.*)", found[1], re.MULTILINE)
    return [plain_roff(tag) for tag in tags]


def manual_examples(page):
    """The command blocks of a manual page."""
    return [plain_roff(text) for text in re.findall(r"^\.EX\n(.*?)^\.EE", page, re.DOTALL | re.MULTILINE)]
