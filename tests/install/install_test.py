"""Installs the built project into a folder, builds a foreign project on it, and makes the packages.

Usage: install_test.py SOURCE_FOLDER BUILD_FOLDER VERSION CXX_COMPILER
"""
import os, pathlib, shutil, subprocess, sys, tempfile, unittest
from transcripts import TRANSCRIPT, repeat

SOURCE, BUILD = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
VERSION, COMPILER = sys.argv[3:5]
ANSWER = '{"getCertificate":{"names":["Zoë"]}}\n'
HEADERS = set("""certbridge/plugin.h vexil/dynamic_library.h vexil/exceptions.h vexil/format_to_memory.h
    vexil/numbers/big_unsigned.h vexil/numbers/decimal_conversion.h vexil/json/json_parser.h
    vexil/json/json_tokenizer.h vexil/json/json_value.h vexil/json/json_writer.h
    vexil/numbers/powers_of_five.h vexil/non_copyable.h vexil/streams.h vexil/unicode_strings.h""".split())


def run(*command, **options):
    """What the command prints; a failed one is an error that shows it."""
    result = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT, encoding="utf-8", **options)
    if result.returncode:
        raise AssertionError("%s: status %d\n%s" % (command, result.returncode, result.stdout))
    return result.stdout


class Install(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def check_tree(self, prefix):
        """An installed tree, wherever it lies, has the public headers and serves a consumer."""
        include = prefix / "include"
        headers = {path.relative_to(include).as_posix() for path in include.rglob("*.h")}
        self.assertEqual(headers, HEADERS)
        build = self.folder / "consumer"
        run("cmake", "-S", SOURCE / "tests/install/consumer", "-B", build, "-G", "Ninja",
            "-DCMAKE_PREFIX_PATH=%s" % prefix, "-DCMAKE_CXX_COMPILER=" + COMPILER)
        run("cmake", "--build", build)
        self.assertEqual((build / "answer").read_text(), ANSWER)
        self.assertEqual((build / "version").read_text(), VERSION)
        # What the page for authors of plugins shows is true of both templates.
        environment = dict(os.environ, PREFIX=str(prefix), CXX=COMPILER, CMAKE_GENERATOR="Ninja")
        page = prefix / "share/doc/certbridge/plugin-authors.md"
        transcript, = TRANSCRIPT.findall(page.read_text(encoding="utf-8"))
        for language in ("cpp", "c"):
            (self.folder / language).mkdir()
            wanted = transcript.replace("template/cpp", "template/" + language)
            self.assertEqual(repeat(wanted, cwd=self.folder / language, env=environment), wanted)

    def test_installed_tree(self):
        run("cmake", "--install", BUILD, "--prefix", self.folder / "first")
        prefix = (self.folder / "first").rename(self.folder / "moved")
        self.check_tree(prefix)
        for file in ("share/man/man1/certbridge.1", "share/man/man1/certbridge-check.1",
                     "share/doc/certbridge/LICENSE", "bin/certbridge-check"):
            self.assertTrue((prefix / file).is_file(), file)

    @unittest.skipUnless(shutil.which("pkg-config"), "there is no pkg-config")
    def test_pkg_config(self):
        run("cmake", "--install", BUILD, "--prefix", self.folder)
        folders = [str(path.parent) for path in self.folder.rglob("certbridge.pc")]
        ask = ("env", "PKG_CONFIG_PATH=" + ":".join(folders), "pkg-config")
        self.assertEqual(run(*ask, "--modversion", "certbridge"), VERSION + "\n")
        flags = run(*ask, "--cflags", "--libs", "certbridge").split()
        program = self.folder / "program"
        run(COMPILER, "-std=c++20", SOURCE / "tests/install/consumer/consumer.cpp", *flags, "-o", program)
        self.assertEqual(run(program), '{"action":"getCertificate","names":["Zoë"]}')

    @unittest.skipUnless(shutil.which("dpkg-shlibdeps"), "there is no dpkg-shlibdeps")
    def test_debian_packages(self):
        run("cpack", "--config", BUILD / "CPackConfig.cmake", "-B", self.folder / "packages")
        packages = sorted((self.folder / "packages").glob("*.deb"))
        names = [run("dpkg-deb", "-f", package, "Package", "Version") for package in packages]
        self.assertEqual(names, ["Package: %s\nVersion: %s-1\n" % (name, VERSION)
                                 for name in ("certbridge-dev", "certbridge")])
        for package in packages:
            run("dpkg-deb", "-x", package, self.folder / "root")
        self.check_tree(self.folder / "root/usr")
        if not shutil.which("lintian"):
            self.skipTest("the packages work, but there is no lintian to look at them")
        # The tags left out want the number of a request to become a part of Debian, and the folder
        # of libraries that a build configured for /usr has.
        tags = "initial-upload-closes-no-bugs,pkg-config-unavailable-for-cross-compilation"
        self.assertEqual(run("lintian", "--allow-root", "--fail-on", "error,warning",
                             "--suppress-tags", tags, *packages), "")


unittest.main(argv=sys.argv[:1])
