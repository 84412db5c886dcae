# SPDX-License-Identifier: MIT
"""Runs a plugin that is not trusted in a sandbox."""

import dataclasses
import os
import shutil
from typing import List, Sequence

from .errors import NotFound

_READABLE = ("/usr", "/lib", "/lib32", "/lib64", "/bin", "/etc/ld.so.cache")


@dataclasses.dataclass(frozen=True)
class Confinement:
    """Limits for a plugin, enforced by bubblewrap and prlimit on Linux.

    The plugin runs without network, environment variables and capabilities, in namespaces that
    contain no other process. It sees /usr, the program and itself, read-only, and nothing else except
    ``files``: files or directories, also read-only and under the same paths. Name them by absolute
    paths in the request, since the working directory is the root.

    ``memory`` limits the address space, in bytes; ``cpu_seconds`` the processor time. The plugin
    cannot write to files or dump core.
    """

    files: Sequence[str] = ()
    memory: int = 1 << 30
    cpu_seconds: int = 30

    def command(self, program: str, plugin: str) -> List[str]:
        """The command that runs the program with the plugin. Raises NotFound without the tools."""
        sandbox = [_find("bwrap"), "--unshare-all", "--die-with-parent", "--new-session"]
        sandbox += ["--cap-drop", "ALL", "--clearenv", "--setenv", "LC_ALL", "C.UTF-8"]
        for path in _READABLE:
            sandbox += ["--ro-bind-try", path, path]
        sandbox += ["--proc", "/proc", "--dev", "/dev"]
        for path in (program, plugin, *map(os.path.abspath, self.files)):
            sandbox += ["--ro-bind", path, path]
        sandbox += ["--remount-ro", "/", "--chdir", "/", "--"]
        limits = [f"--as={self.memory}", f"--cpu={self.cpu_seconds}", "--fsize=0", "--core=0", "--nofile=64"]
        return [*sandbox, _find("prlimit"), *limits, "--", program, plugin]


def _find(command: str) -> str:
    found = shutil.which(command)
    if not found:
        raise NotFound(f"{command} is not installed, and a plugin cannot be confined without it")
    return found
