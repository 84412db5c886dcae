# SPDX-License-Identifier: MIT
"""Builds the package with the version of the project."""

import pathlib
import re

from setuptools import setup

FOLDER = pathlib.Path(__file__).resolve().parent


def version():
    """Read from the metadata of a source distribution, which does not contain the project."""
    metadata = FOLDER / "PKG-INFO"
    if metadata.exists():
        return re.search(r"^Version: (.+)$", metadata.read_text(encoding="utf-8"), re.MULTILINE)[1]
    project = (FOLDER.parents[1] / "CMakeLists.txt").read_text(encoding="utf-8")
    return re.search(r"^project\(.* VERSION ([0-9.]+)", project, re.MULTILINE)[1]


setup(version=version())
