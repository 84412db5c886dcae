# SPDX-License-Identifier: MIT
"""Builds the plugin template of a language with its usual tools and without a network, and tests it
like the templates that this project builds itself. Exit status 77 where the tools are missing.

Usage: language_template_test.py LANGUAGE SOURCE_FOLDER BUILD_FOLDER CERTBRIDGE CHECKER
"""
import os, pathlib, shutil, subprocess, sys

LANGUAGE, CERTBRIDGE, CHECKER = sys.argv[1], *sys.argv[4:6]
SOURCE, BUILD = pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3]) / sys.argv[1]
# The tool, its command, the plugin that it makes, and settings.
BUILDS = {
    "rust": ("cargo", ["build", "--release", "--offline"], "target/release/libmy_plugin.so", {}),
    "go": ("go", ["build", "-buildmode=c-shared", "-o", "my_plugin.so"], "my_plugin.so", {
        "CGO_CFLAGS": "-I%s" % SOURCE, "GOPROXY": "off", "GOFLAGS": "-mod=mod",
        "GOCACHE": str(BUILD.parent / "go_cache")}),
}

tool, arguments, plugin, settings = BUILDS[LANGUAGE]
if not shutil.which(tool):
    print("skipped: there is no", tool)
    sys.exit(77)
shutil.copytree(SOURCE / "examples/plugin_template" / LANGUAGE, BUILD, dirs_exist_ok=True)
subprocess.run([tool, *arguments], cwd=BUILD, env={**os.environ, **settings}, check=True)
subprocess.run([CHECKER, "--only-failed", "--fuzz=20", BUILD / plugin], check=True)
rows = pathlib.Path(__file__).with_name("plugin_template_test.py")
subprocess.run([sys.executable, rows, CERTBRIDGE, BUILD / plugin], check=True)
