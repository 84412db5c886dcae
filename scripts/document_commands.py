#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Prints the commands of documents that install packages or build, in their order, for a shell.

Usage: document_commands.py [DOCUMENT...]

scripts/in-debian runs them in a minimal Debian; the commands of other documents run in the tests.
"""

import re
import sys

from documents import blocks, read

DOCUMENTS = ["README.md", "docs/install.md", "CONTRIBUTING.md", "docs/windows.md"]

# Commands that do not run there, with the reason.
NOT_RUN = {
    r"scripts/package --release": "creates a minimal Debian itself",
    r"cmake -B build": "runs on Windows",
    r"cmake --build build$": "runs on Windows",
}


def is_run(command):
    return not any(re.match(pattern, command) for pattern in NOT_RUN)


def main():
    print("set -ex")
    for name in sys.argv[1:] or DOCUMENTS:
        for block in blocks(read(name)):
            if block.language == "sh":
                commands = block.text.replace("\\\n", " ").splitlines()
                print(f"# {name}:{block.line}", *filter(is_run, commands), sep="\n")


main()
