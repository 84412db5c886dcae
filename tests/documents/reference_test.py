# SPDX-License-Identifier: MIT
"""Compiles and runs the examples in docs/reference.md.

Usage: reference_test.py BUILD_FOLDER CXX_COMPILER [FLAG...]
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from documents import SOURCE, blocks, code_spans, read, table

BUILD = pathlib.Path(sys.argv[1]).resolve()
COMPILER = sys.argv[2:]
REFERENCE = read("docs/reference.md")
EXAMPLES = [block for block in blocks(REFERENCE) if block.language == "cpp"]
HEADERS = [
    name
    for row in table(REFERENCE, "Header", "Content")
    for name in code_spans(row[0])
    if name.startswith("vexil/")
]

PROLOGUE = """#undef NDEBUG
#include <cassert>
#include <memory>
#include <sstream>
#include <string>
{includes}
using namespace vexil;
"""


def program():
    """Each example as the body of a function, with the line numbers of the document."""
    includes = "".join(f"#include <{header}>\n" for header in HEADERS)
    parts = [PROLOGUE.format(includes=includes)]
    for block in EXAMPLES:
        parts.append(f'static void line{block.line}() {{\n#line {block.line + 1} "reference.md"\n')
        parts.append(block.text + "}\n")
    calls = "".join(f"    line{block.line}();\n" for block in EXAMPLES)
    return "".join(parts) + f"int main() {{\n{calls}}}\n"


class Reference(unittest.TestCase):
    def test_examples(self):
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder, "examples.cpp")
            source.write_text(program(), encoding="utf-8")
            executable = source.with_suffix("")
            library = next(iter(sorted((BUILD / "vexil").glob("libvexil.*"))))
            options = ["-std=c++20", "-Wall", "-Wextra", "-Werror", "-I", SOURCE, source, library, "-ldl"]
            subprocess.run([*COMPILER, *options, "-o", executable], check=True)
            subprocess.run([executable], check=True)


unittest.main(argv=sys.argv[:1])
