# SPDX-License-Identifier: MIT
"""Follows the links in the installed documents.

Usage: links_test.py BUILD_FOLDER
"""

import pathlib
import subprocess
import sys
import tempfile
import unittest

from documents import SOURCE, blocks, broken_links, links

BUILD = pathlib.Path(sys.argv[1]).resolve()


class Links(unittest.TestCase):
    def test_installed_tree(self):
        with tempfile.TemporaryDirectory() as prefix:
            subprocess.run(
                ["cmake", "--install", BUILD, "--prefix", prefix],
                stdout=subprocess.DEVNULL,
                check=True,
            )
            documents = list(pathlib.Path(prefix, "share/doc/certbridge").glob("*.md"))
            found = [link for document in documents for link in links(document.read_text())]
            self.assertTrue(found)
            for document in documents:
                with self.subTest(document.name):
                    self.assertEqual(list(broken_links(document)), [])
                    self.check_blocks(document)

    def check_blocks(self, document):
        """The installation changes links, but not code."""
        source, = (*SOURCE.glob(document.name), *SOURCE.glob(f"docs/{document.name}"))
        texts = [path.read_text(encoding="utf-8") for path in (source, document)]
        self.assertEqual(blocks(texts[0]), blocks(texts[1]))


unittest.main(argv=sys.argv[:1])
