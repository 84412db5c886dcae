# SPDX-License-Identifier: MIT
"""Compares the lists in the documents with the programs and plugins, in both directions.

Usage: statements_test.py BUILD_FOLDER

An entry that is missing or wrong on either side fails the row.
"""

import json
import pathlib
import re
import subprocess
import sys
import unittest

from documents import SOURCE, code_spans, manual_tags, plain_roff, read, table
from named_tests import add_tests

BUILD = pathlib.Path(sys.argv[1]).resolve()
PROTOCOL = read("docs/protocol.md")
MANUAL = read("docs/certbridge.1")
CHECK_MANUAL = read("docs/certbridge-check.1")
SOURCES = [path for folder in ("certbridge", "tool") for path in (SOURCE / folder).glob("*.cpp")]

# Placeholders of the documents for the conversions of a message.
PLACEHOLDERS = {"%ld": "N", "%u": "N", "%s": "LIST"}
STRING = r'"((?:[^"\\]|\\.)*)"'


# ---- The program


def constants(name, pattern):
    """A dictionary of the numeric constants in a source file."""
    return dict(re.findall(pattern, read(name)))


def unescaped(literal):
    text = literal.replace(r"\"", '"')
    return re.sub(r"%ld|%u|%s", lambda conversion: PLACEHOLDERS[conversion[0]], text)


def loader_texts():
    """The texts with which a library fails to load."""
    source = read("vexil/dynamic_library.cpp")
    load = source[source.index("DynamicLibrary::load("):source.index("DynamicLibrary::getSymbol(")]
    return [unescaped(text) for text in re.findall(rf"::format\({STRING}", load)]


def fatal_errors():
    """Code and message of each fatal error; the system's and the JSON reader's texts are apart."""
    codes = constants("certbridge/failure_port.h", r"(\w+Error) = (\d+),")
    errors = set()
    sources = "".join(path.read_text(encoding="utf-8") for path in SOURCES)
    for code, literal in re.findall(rf"fatalError(?:Format)?\(\s*(\w+),\s*{STRING}", sources):
        message = unescaped(literal)
        if message.startswith("cannot load DLL"):
            errors |= {(codes[code], message.replace("LIST", text)) for text in loader_texts()}
        else:
            errors.add((codes[code], message))
    return errors


def list_names():
    return set(re.findall(r'Mode\{"(\w+)"', read("certbridge/reply.h")))


def loader_numbers():
    pattern = r"constexpr long (error\w+) = (\d+);"
    return set(constants("vexil/platform/platform.h", pattern).values())


def reader_texts():
    """The texts of the exceptions that reading a JSON text throws."""
    parser = read("vexil/json/json_parser.cpp")
    raised = re.findall(r"JsonParserError\((.*?)\);", parser, re.DOTALL)
    texts = {text for expression in raised for text in re.findall(STRING, expression)}
    too_long = re.compile(r'"((?:UnicodeString32|ByteRange)[^"]*string too long)"')
    for name in ("vexil/unicode_strings.cpp", "vexil/streams.cpp"):
        texts.update(too_long.findall(read(name)))
    return texts


def longest_string():
    """Bytes of the longest string, by the rows on both sides of the limit."""
    lengths = re.findall(r"^input: .*%\{(\d+)\*x\}", read("tests/data/end_to_end.txt"), re.MULTILINE)
    longest = sorted(map(int, lengths))[-2:]
    assert longest[0] + 1 == longest[1]
    return {longest[0]}


def exit_statuses():
    pattern = r"constexpr int (\w+Status) = (\d+);"
    sources = [path.relative_to(SOURCE) for path in (SOURCE / "tool").iterdir()]
    return {"0"}.union(*(constants(source, pattern).values() for source in sources))


def run(*command):
    return subprocess.run(command, stdout=subprocess.PIPE, encoding="utf-8").stdout


def checks():
    return set(re.findall(r"^[a-z-]+", run(BUILD / "certbridge-check", "--list"), re.MULTILINE))


def check_options():
    return set(re.findall(r"--[a-z-]+", run(BUILD / "certbridge-check", "--help")))


# ---- The plugins


def plugin_error_codes():
    return set(re.findall(r"^    \w+ = (\d+),", read("plugins/common/failure.h"), re.MULTILINE))


def plugin_libraries():
    cmake = read("plugins/CMakeLists.txt")
    found = re.findall(r"^ *(?:find_package|pkg_check_modules)\(([\w-]+)", cmake, re.MULTILINE)
    return set(found) - {"PkgConfig"}


def listed_libraries():
    """The libraries in the bill of materials, without certbridge and the C++ runtime."""
    bill = json.loads((BUILD / "certbridge.spdx.json").read_text(encoding="utf-8"))
    return {package["name"] for package in bill["packages"][2:]}


# ---- The documents


def column(text, *header):
    """The code spans in the first cells of a table."""
    return {span for row in table(text, *header) for span in code_spans(row[0])}


def documented_fatal_errors():
    rows = table(PROTOCOL, "Code", "Message")
    return {(row[0], code_spans(row[1])[0]) for row in rows if "`" in row[1]}


def manual_fatal_errors():
    tags = [tag.split(" ", 1) for tag in manual_tags(MANUAL, "ERRORS") if tag[:2] == "10"]
    return {(code, message) for code, message in tags if '"the system' not in message and '"a text' not in message}


def manual_subsection(title):
    """The tags of the paragraphs in a subsection of certbridge(1)."""
    found = re.search(rf"^\.SS {title}\n(.*?)(?=^\.S[SH] )", MANUAL, re.DOTALL | re.MULTILINE)
    return {plain_roff(tag) for tag in re.findall(r"^\.T[PQ]\n(.*)", found[1], re.MULTILINE)}


def longest_strings_in(text):
    return {int(number.replace(",", "")) for number in re.findall(r"more than ([\d,]+) bytes", text)}


def documented_statuses():
    cells = " ".join(row[2] for row in table(PROTOCOL, "Outcome", "Standard output, one line"))
    return set(re.findall(r"\b\d\b", cells))


def documented_options():
    options = " ".join(manual_tags(CHECK_MANUAL, "OPTIONS"))
    return set(re.findall(r"--[a-z-]+", options))


# The entries that the programs or plugins define, and those that each document lists.
STATEMENTS = {
    "fatal_errors": (fatal_errors, documented_fatal_errors, manual_fatal_errors),
    "list_names": (list_names, lambda: set(code_spans(re.search(r"`LIST` is (.*)", PROTOCOL)[1]))),
    "loader_numbers": (
        loader_numbers,
        lambda: {row[0] for row in table(PROTOCOL, "Error", "Meaning")},
        lambda: manual_subsection("Loader errors"),
    ),
    "reader_texts": (
        reader_texts,
        lambda: column(PROTOCOL, "JSON reader's text"),
        lambda: manual_subsection("Texts of the JSON reader"),
    ),
    "longest_string": (
        longest_string,
        lambda: longest_strings_in(PROTOCOL),
        lambda: longest_strings_in(MANUAL),
    ),
    "statuses": (
        exit_statuses,
        documented_statuses,
        lambda: set(manual_tags(MANUAL, "EXIT STATUS")),
    ),
    "checks": (checks, lambda: set(manual_tags(CHECK_MANUAL, "CHECKS"))),
    "check_options": (check_options, documented_options),
    "libraries_of_plugins": (plugin_libraries, listed_libraries),
    "error_codes_of_plugins": (
        plugin_error_codes,
        lambda: {row[0] for row in table(read("docs/plugins.md"), "Code", "Meaning")},
    ),
}


class Statements(unittest.TestCase):
    maxDiff = None

    def check_statement(self, defined, *documented):
        self.assertTrue(defined())
        for entries in documented:
            self.assertEqual(entries(), defined())

    def test_messages_in_the_guide_exist(self):
        """The guide for authors of plugins lists only some messages, with their usual causes."""
        known = [message for _, message in fatal_errors()] + list(reader_texts())
        patterns = [
            re.escape(message).replace("N", r"(N|\d+)").replace("LIST", "(response|error)")
            for message in known
        ]
        for message in column(read("docs/plugin-authors.md"), "Text", "Usual cause"):
            with self.subTest(message):
                complete = (message, f"cannot load DLL, {message}")
                self.assertTrue(
                    any(re.fullmatch(pattern, text) for pattern in patterns for text in complete)
                )

    def test_targets_in_commands(self):
        rules = BUILD / "build.ninja"
        if not rules.exists():
            self.skipTest("the build does not use Ninja")
        text = rules.read_text(encoding="utf-8")
        for path in (*SOURCE.glob("*.md"), *SOURCE.glob("docs/*.md")):
            for name in re.findall(r"--target (\w+)", path.read_text(encoding="utf-8")):
                with self.subTest(path.name, name=name):
                    self.assertIn(f"\nbuild {name}: ", text)


add_tests(Statements, "check_statement", STATEMENTS)
unittest.main(argv=sys.argv[:1])
