"""Runs the console transcripts of README.md and compares what they print.

Usage: readme_test.py SOURCE_FOLDER BUILD_FOLDER
"""
import pathlib, re, subprocess, sys, tempfile, unittest

SOURCE, BUILD = (pathlib.Path(path).resolve() for path in sys.argv[1:3])
README = (SOURCE / "README.md").read_text(encoding="utf-8")


class Readme(unittest.TestCase):
    def test_transcripts(self):
        transcripts = re.findall(r"^```console\n(.*?)^```", README, re.S | re.M)
        self.assertTrue(transcripts)
        for transcript in transcripts:
            commands = re.findall(r"^\$ (.*)", transcript, re.M)
            # Each command is echoed behind its prompt; all of them share a shell, and so does $?.
            script = "".join(f"(s=$?; cat <<'.'\n$ {line}\n.\nexit $s)\n{line}\n" for line in commands)
            with self.subTest(transcript), tempfile.TemporaryDirectory() as folder:
                root = pathlib.Path(folder)
                (root / "build").mkdir()
                for link, target in (("examples", SOURCE / "examples"), ("tool", SOURCE / "tool"),
                                     ("build/release", BUILD)):
                    (root / link).symlink_to(target)
                run = subprocess.run(["bash", "-c", script], cwd=root, stdout=subprocess.PIPE,
                                     stderr=subprocess.STDOUT, encoding="utf-8")
                self.assertEqual(run.stdout, transcript)

    def test_plugin_source(self):
        self.assertIn((SOURCE / "examples/minimal_plugin.cpp").read_text(), README)


unittest.main(argv=sys.argv[:1])
