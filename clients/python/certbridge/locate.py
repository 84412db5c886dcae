# SPDX-License-Identifier: MIT
"""Finds the program and the plugins."""

import os
import pathlib
import shutil
from typing import Iterator, List

from .errors import NotFound

PROGRAM_VARIABLE = "CERTBRIDGE_PROGRAM"
PLUGINS_VARIABLE = "CERTBRIDGE_PLUGINS"

_IS_WINDOWS = os.name == "nt"
_SUFFIX = ".dll" if _IS_WINDOWS else ".so"


def find_program() -> str:
    """The path of the program: $CERTBRIDGE_PROGRAM, then PATH, then the usual install locations.

    Raises NotFound if there is none, or if the variable does not name an executable file.
    """
    chosen = os.environ.get(PROGRAM_VARIABLE)
    if chosen:
        candidates = [os.path.abspath(chosen)]
    elif _IS_WINDOWS:
        folder = os.path.join(os.environ.get("ProgramFiles", r"C:\Program Files"), "certbridge")
        candidates = ["certbridge", os.path.join(folder, "bin", "certbridge.exe")]
    else:
        candidates = ["certbridge", "/usr/local/bin/certbridge", "/usr/bin/certbridge"]
    for candidate in candidates:
        found = shutil.which(candidate)
        if found:
            return os.path.abspath(found)
    if chosen:
        raise NotFound(f"{PROGRAM_VARIABLE} does not name a program: {chosen}")
    raise NotFound(f"certbridge is not installed; set {PROGRAM_VARIABLE} if it is not in PATH")


def find_plugin(plugin: str, program: str) -> str:
    """The absolute path of a plugin.

    A name with a directory is a path. A bare name, with or without the suffix of a library, is
    looked up in $CERTBRIDGE_PLUGINS or in the plugin folders of the installed program, never by the
    system's loader. Raises NotFound if no folder contains it.
    """
    if not plugin:
        raise NotFound("the name of the plugin is empty")
    if os.path.dirname(plugin):
        return os.path.abspath(plugin)
    name = plugin if plugin.endswith(_SUFFIX) else plugin + _SUFFIX
    for folder in _plugin_folders(program):
        path = folder / name
        if path.is_file():
            return str(path.absolute())
    raise NotFound(f"no plugin folder contains {name}")


def _plugin_folders(program: str) -> Iterator[pathlib.Path]:
    chosen = os.environ.get(PLUGINS_VARIABLE)
    if chosen:
        yield pathlib.Path(chosen)
        return
    program_folder = pathlib.Path(program).resolve().parent
    if _IS_WINDOWS:
        yield program_folder
        return
    prefixes: List[pathlib.Path] = [program_folder.parent, pathlib.Path("/usr/local"), pathlib.Path("/usr")]
    for prefix in prefixes:
        yield prefix / "lib/certbridge"
        yield prefix / "lib64/certbridge"
        yield from sorted(prefix.glob("lib/*/certbridge"))  # one per architecture on Debian
