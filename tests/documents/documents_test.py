"""Runs the transcripts of the documents and compares what they print; runs their programs.

Usage: documents_test.py SOURCE_FOLDER BUILD_FOLDER CXX_COMPILER [FLAG...]
"""
import os, pathlib, re, shutil, subprocess, sys, tempfile, unittest
from transcripts import TRANSCRIPT, repeat

SOURCE, BUILD = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
COMPILER = sys.argv[3:]
README = (SOURCE / "README.md").read_text(encoding="utf-8")
PROTOCOL = (SOURCE / "docs/protocol.md").read_text(encoding="utf-8")

# Plugin, request and what each caller in the protocol's document says to that.
FIXTURE = BUILD / "tests/fixtures/fixture.so"
ANSWERS = (
    (BUILD / "minimal_plugin.so", '"subject":"CN=Zo\\u00eb"', "result: CN=Zoë"),
    (BUILD / "minimal_plugin.so", '"subject":"%s"' % ("x" * 2000000), "result: " + "x" * 2000000),
    (FIXTURE, """"error":"{'error':[{'name':'errorCode','value':7},"""
     """{'name':'erroMessage','value':'why'}]}\"""", "plugin error 7: why"),
    ("./missing.so", "", "fatal error 100: cannot load DLL, LoadLibrary failed, error 126"),
    (FIXTURE, '"do":"throw"', "nothing: status 2"),
)
CALLERS = {"ask.sh": ["sh"], "ask.py": [sys.executable], "ask.js": ["node"], "ask.cpp": []}


class Documents(unittest.TestCase):
    def test_transcripts(self):
        transcripts = TRANSCRIPT.findall(README + PROTOCOL)
        self.assertTrue(transcripts)
        for transcript in transcripts:
            with self.subTest(transcript), tempfile.TemporaryDirectory() as folder:
                root = pathlib.Path(folder)
                (root / "build").mkdir()
                for link, target in (("examples", SOURCE / "examples"), ("certbridge", SOURCE / "certbridge"),
                                     ("build/release", BUILD)):
                    (root / link).symlink_to(target)
                self.assertEqual(repeat(transcript, cwd=root), transcript)

    def test_plugin_source(self):
        self.assertIn((SOURCE / "examples/minimal_plugin.cpp").read_text(), README)

    def check_caller(self, name):
        missing = [tool for tool in CALLERS[name] + ["jq"] * (name == "ask.sh")
                   if not shutil.which(tool)]
        if missing:
            self.skipTest("there is no " + missing[0])
        found = re.search(r"`%s`:\n\n```\w+\n(.*?)^```" % re.escape(name), PROTOCOL, re.S | re.M)
        environment = dict(os.environ, PATH="%s:%s" % (BUILD, os.environ["PATH"]))
        with tempfile.TemporaryDirectory() as folder:
            source = pathlib.Path(folder) / name
            source.write_text(found.group(1), encoding="utf-8")
            command = [*CALLERS[name], str(source)]
            if name == "ask.cpp":
                command = [str(source.with_suffix(""))]
                subprocess.run([*COMPILER, "-std=c++20", "-I", SOURCE, source,
                                BUILD / "vexil/libvexil.a", "-ldl", "-o", *command], check=True)
            for plugin, members, answer in ANSWERS:
                request = '{"action":"getCertificate"%s}' % (members and "," + members)
                with self.subTest(caller=name, plugin=str(plugin), request=request[:200]):
                    run = subprocess.run([*command, str(plugin)], input=request, cwd=folder,
                                         env=environment, stdout=subprocess.PIPE, encoding="utf-8")
                    self.assertEqual(run.stdout.strip(), answer)


for caller in CALLERS:
    setattr(Documents, "test_" + caller, lambda self, name=caller: self.check_caller(name))
unittest.main(argv=sys.argv[:1])
