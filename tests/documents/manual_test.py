# SPDX-License-Identifier: MIT
"""Checks the manual pages: they format without warnings, and conversion loses no text.

Usage: manual_test.py BUILD_FOLDER
"""

import pathlib
import re
import shutil
import subprocess
import sys
import unittest

from documents import SOURCE, plain_roff

BUILD = pathlib.Path(sys.argv[1]).resolve()
CONVERTED = sorted((BUILD / "documents").glob("*.7"))
# A terminal has no page breaks.
ENDLESS_PAGE = ".pl 1000i\n"
PAGES = [*sorted(SOURCE.glob("docs/*.1")), *CONVERTED]


def words(text):
    return re.findall(r"\w+", text)


def document_words(page):
    """The words of the document from which a page was converted, without targets of links."""
    document = SOURCE / "docs" / (page.stem[len("certbridge-"):] + ".md")
    text = document.read_text(encoding="utf-8")
    text = re.sub(r"```\w+", "", text)
    text = re.sub(r"(\[[^]`]+\])\([^)\s]+\)", r"\1", text)
    return {word.lower() for word in words(text)}


def page_words(page):
    text = page.read_text(encoding="utf-8").replace(r"\:", "").replace(r"\e", "\\")
    return {word.lower() for word in words(plain_roff(text))}


class Manual(unittest.TestCase):
    @unittest.skipUnless(shutil.which("groff"), "groff is not installed")
    def test_pages_format_without_warnings(self):
        for page in PAGES:
            with self.subTest(page.name):
                result = subprocess.run(
                    ["groff", "-ww", "-t", "-man", "-Tutf8", "-Kutf8", "-rLL=100n"],
                    input=ENDLESS_PAGE + page.read_text(encoding="utf-8"),
                    stdout=subprocess.DEVNULL,
                    stderr=subprocess.PIPE,
                    encoding="utf-8",
                )
                self.assertEqual((result.returncode, result.stderr), (0, ""))

    def test_conversion_loses_no_word(self):
        self.assertTrue(CONVERTED)
        for page in CONVERTED:
            with self.subTest(page.name):
                missing = document_words(page) - page_words(page)
                # The names of documents become those of manual pages.
                self.assertEqual(missing - {"md", "docs"}, set())


unittest.main(argv=sys.argv[:1])
