# SPDX-License-Identifier: MIT
"""Tests the ways in which another project uses this one: installed, embedded and through pkg-config.

Usage: install_test.py SOURCE_FOLDER BUILD_FOLDER VERSION CXX_COMPILER
"""
import os
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

from documents import code_spans, read, table
from folder_test import FolderTest
from transcripts import TRANSCRIPT, repeat

SOURCE, BUILD = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
VERSION, COMPILER = sys.argv[3:5]
CONSUMER = SOURCE / "tests/install/consumer"
ANSWER = '{"getCertificate":{"names":["Zoë"]}}\n'
PUBLIC_HEADERS = {name for row in table(read("docs/reference.md"), "Header") for name in code_spans(row[0])}
INSTALLED_FILES = (
    "bin/certbridge",
    "bin/certbridge-check",
    "share/bash-completion/completions/certbridge-check",
    "share/doc/certbridge/LICENSE",
    "share/fish/vendor_completions.d/certbridge-check.fish",
    "share/man/man1/certbridge-check.1",
    "share/man/man1/certbridge.1",
    "share/zsh/site-functions/_certbridge-check",
)


def run(*command, **options):
    """Returns the output of the command; fails with the output if the status is not 0."""
    result = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, encoding="utf-8", **options)
    if result.returncode:
        raise AssertionError("%s: status %d\n%s" % (command, result.returncode, result.stdout))
    return result.stdout


def configure_and_build(source, build, *options):
    run("cmake", "-S", source, "-B", build, "-G", "Ninja", "-DCMAKE_CXX_COMPILER=" + COMPILER, *options)
    run("cmake", "--build", build)


class ConsumerTest(FolderTest):
    def check_consumer(self, *options):
        """Builds the consumer, whose program and plugin exchange a request with certbridge."""
        build = self.folder / "consumer"
        configure_and_build(CONSUMER, build, "-DCMAKE_BUILD_TYPE=Debug", *options)
        self.assertEqual((build / "answer").read_text(encoding="utf-8"), ANSWER)
        return build


class Installed(ConsumerTest):
    def install(self, build, prefix):
        run("cmake", "--install", build, "--prefix", prefix)
        return prefix

    def test_relocated_tree(self):
        prefix = self.install(BUILD, self.folder / "first").rename(self.folder / "moved")
        for file in INSTALLED_FILES:
            self.assertTrue((prefix / file).is_file(), file)
        include = prefix / "include"
        headers = {path.relative_to(include).as_posix() for path in include.rglob("*.h")}
        self.assertEqual(headers, PUBLIC_HEADERS)
        consumer = self.check_consumer("-DCMAKE_PREFIX_PATH=%s" % prefix)
        self.assertEqual((consumer / "version").read_text(encoding="utf-8"), VERSION)

    def test_transcript_of_plugin_guide(self):
        prefix = self.install(BUILD, self.folder / "prefix")
        environment = dict(os.environ, PREFIX=str(prefix), CXX=COMPILER, CMAKE_GENERATOR="Ninja")
        guide = prefix / "share/doc/certbridge/plugin-authors.md"
        transcript, = TRANSCRIPT.findall(guide.read_text(encoding="utf-8"))
        for language in ("cpp", "c"):
            with self.subTest(language):
                expected = transcript.replace("template/cpp", "template/" + language)
                folder = self.folder / language
                folder.mkdir()
                self.assertEqual(repeat(expected, cwd=folder, env=environment), expected)

    def test_shared_library(self):
        build = self.folder / "build"
        configure_and_build(SOURCE, build, "-DBUILD_SHARED_LIBS=ON", "-DCMAKE_BUILD_TYPE=Debug")
        prefix = self.install(build, self.folder / "prefix")
        library, = prefix.rglob("libvexil.so." + VERSION)
        symbols = run("nm", "--dynamic", "--defined-only", "--demangle", library).splitlines()
        names = [line.split(" ", 2)[2] for line in symbols]
        self.assertIn("vexil::JsonParser::parse(bool)", names)
        private = [name for name in names
                   if "vexil::platform::" in name or "State" in name or not re.search("(vexil|std)::", name)]
        self.assertEqual(private, [])
        self.check_consumer("-DCMAKE_PREFIX_PATH=%s" % prefix)

    @unittest.skipUnless(shutil.which("pkg-config"), "pkg-config is missing")
    def test_pkg_config(self):
        self.install(BUILD, self.folder)
        folders = [str(path.parent) for path in self.folder.rglob("certbridge.pc")]
        query = ("env", "PKG_CONFIG_PATH=" + ":".join(folders), "pkg-config")
        self.assertEqual(run(*query, "--modversion", "certbridge"), VERSION + "\n")
        plugins = pathlib.Path(run(*query, "--variable=plugindir", "certbridge").strip())
        self.assertTrue((plugins / "certificate_file_plugin.so").is_file())
        flags = run(*query, "--cflags", "--libs", "certbridge").split()
        program = self.folder / "program"
        run(COMPILER, "-std=c++20", CONSUMER / "consumer.cpp", *flags, "-o", program)
        self.assertEqual(run(program), '{"action":"getCertificate","names":["Zoë"]}')


class Embedded(ConsumerTest):
    def test_add_subdirectory(self):
        self.check_consumer("-DADD_SUBDIRECTORY=%s" % SOURCE)

    def test_fetch_content(self):
        self.check_consumer("-DFETCH_CONTENT=%s" % SOURCE, "-DBUILD_SHARED_LIBS=ON")


unittest.main(argv=sys.argv[:1])
