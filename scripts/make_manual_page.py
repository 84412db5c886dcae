# SPDX-License-Identifier: MIT
"""Converts a Markdown document to a manual page.

Usage: make_manual_page.py DOCUMENT NAME VERSION OUTPUT [LINK=PAGE]...

DOCUMENT begins with a heading, which becomes the description of the page NAME in section 7. A link to
the file LINK becomes a reference to the manual page PAGE. Supports what the documents use: headings,
paragraphs, lists, tables, fenced blocks, code spans, bold text and links.
"""

import pathlib
import re
import sys

SECTION = 7
# Columns whose cells are at most this long are not filled.
NARROW = 16

SPECIAL = {
    "\\": r"\e",
    "-": r"\-",
    "'": r"\(aq",
    "`": r"\(ga",
    "^": r"\(ha",
    "~": r"\(ti",
}
INLINE = re.compile(r"`([^`]+)`|\*\*(.+?)\*\*|\[([^\]]+)\]\(([^)]+)\)")
LIST_ITEM = re.compile(r"(-|\d+\.) +(.*)")


def escaped(text):
    """The text without a meaning to the formatter."""
    result = "".join(SPECIAL.get(character, character) for character in text)
    return r"\&" + result if result.startswith((".", r"\(aq")) else result


class Page:
    def __init__(self, pages):
        self.pages = pages
        self.lines = []

    def inline(self, text):
        """A line of prose with its code spans, bold text and links."""
        result, end = "", 0
        for match in INLINE.finditer(text):
            code, bold, label, target = match.groups()
            result += escaped(text[end:match.start()])
            end = match.end()
            if label:
                result += self.reference(label, self.pages.get(target.split("#")[0]))
            else:
                result += rf"\fB{escaped(code or bold)}\fP"
        return result + escaped(text[end:])

    def reference(self, label, page):
        """A link: the page replaces the name of a file and follows any other label."""
        if not page:
            return self.inline(label)
        name = rf"\fB{escaped(page)}\fP({SECTION})"
        return name if label.endswith(".md") else f"{self.inline(label)} ({name})"

    def add(self, *lines):
        self.lines += lines

    def add_heading(self, level, text):
        macro = ".SH" if level == 2 else ".SS"
        self.add(f"{macro} {self.inline(text.upper() if level == 2 else text)}")

    def add_block(self, lines):
        self.add(".PP", ".in +4n", ".EX", *map(escaped, lines), ".EE", ".in")

    def add_paragraph(self, lines):
        self.add(".PP", *map(self.inline, lines))

    def add_item(self, marker, lines):
        tag = r"\(bu" if marker == "-" else marker
        self.add(f".IP {tag} 4", *map(self.inline, lines))

    def add_table(self, rows):
        header, _, *body = [[cell.strip() for cell in row.strip("| ").split(" | ")] for row in rows]
        widths = [max(len(row[column]) for row in body) for column in range(len(header))]
        formats = ["l" if width <= NARROW else "lx" for width in widths]
        self.add(".PP", ".nh", ".ad l")
        self.add(".TS", "tab(\t);", " ".join(["lb"] * len(header)), " ".join(formats) + ".")
        self.add("\t".join(map(self.inline, header)))
        self.add(*("\t".join(map(self.cell, row)) for row in body))
        self.add(".TE", ".ad b", ".hy")

    def cell(self, text):
        # "\:" permits a line break.
        prose = re.sub(r"([,}])(?=\S)", r"\1\\:", self.inline(text))
        return f"T{{\n{prose}\nT}}"


def take_while(lines, condition):
    taken = []
    while lines and condition(lines[0]):
        taken.append(lines.pop(0))
    return taken


def is_prose(line):
    return line and not line.startswith(("#", "```", "|")) and not LIST_ITEM.match(line)


def convert(lines, page):
    while lines:
        line = lines.pop(0)
        item = LIST_ITEM.match(line)
        if line.startswith("```"):
            page.add_block(take_while(lines, lambda other: not other.startswith("```")))
            lines.pop(0)
        elif line.startswith("#"):
            marks, text = line.split(" ", 1)
            page.add_heading(len(marks), text)
        elif line.startswith("|"):
            page.add_table([line, *take_while(lines, lambda other: other.startswith("|"))])
        elif item:
            rest = take_while(lines, lambda other: other.startswith("  "))
            page.add_item(item[1], [item[2], *map(str.strip, rest)])
        elif line:
            page.add_paragraph([line, *take_while(lines, is_prose)])


def main(document, name, version, output, *links):
    lines = pathlib.Path(document).read_text(encoding="utf-8").splitlines()
    title = lines.pop(0).lstrip("# ")
    page = Page(dict(link.split("=") for link in links))
    page.add("'\\\" t", f'.TH {name.upper()} {SECTION} "" "certbridge {version}"', ".SH NAME")
    page.add(rf"{escaped(name)} \- {escaped(title[0].lower() + title[1:])}", ".SH DESCRIPTION")
    convert(lines, page)
    pathlib.Path(output).write_text("\n".join(page.lines) + "\n", encoding="utf-8")


main(*sys.argv[1:])
