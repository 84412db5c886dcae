# SPDX-License-Identifier: MIT
"""Requests certificates from certbridge plugins.

>>> import certbridge
>>> certbridge.get_certificate("certificate_file_plugin", file="/etc/ssl/host.pem")  # doctest: +SKIP
{'certificate': '...', 'subject': 'CN=host'}
"""

import asyncio
import os
from typing import Any, Dict, Optional, Union

from .answer import read_answer, write_request
from .confinement import Confinement
from .errors import CertbridgeError, FatalError, NoAnswer, NotFound, PluginError, TimedOut
from .locate import find_plugin, find_program
from .process import Process

__all__ = [
    "CertbridgeError",
    "Confinement",
    "FatalError",
    "NoAnswer",
    "NotFound",
    "PluginError",
    "TimedOut",
    "get_certificate",
    "get_certificate_async",
]

PathName = Union[str, "os.PathLike[str]"]


def get_certificate(
    plugin: PathName,
    /,
    *,
    timeout: Optional[float] = 60.0,
    max_answer: int = 16 << 20,
    confine: Optional[Confinement] = None,
    **members: Any,
) -> Dict[str, Any]:
    """Requests a certificate and returns the members of the plugin's answer.

    ``plugin`` is a path, or a bare name that is looked up in the plugin folders. ``members`` are sent
    on standard input, never on a command line. ``timeout`` is in seconds, None for no limit;
    ``max_answer`` limits all output, in bytes. ``confine`` runs the plugin in a sandbox.

    Raises PluginError, FatalError, NoAnswer, TimedOut or NotFound, all derived from CertbridgeError,
    and ValueError or TypeError if the members cannot be written as JSON.
    """
    status, output = _start(plugin, max_answer, confine, members).finish(timeout)
    return read_answer(status, output)


async def get_certificate_async(
    plugin: PathName,
    /,
    *,
    timeout: Optional[float] = 60.0,
    max_answer: int = 16 << 20,
    confine: Optional[Confinement] = None,
    **members: Any,
) -> Dict[str, Any]:
    """Like get_certificate(), for asyncio. Cancelling the task kills the program."""
    process = _start(plugin, max_answer, confine, members)
    try:
        status, output = await asyncio.to_thread(process.finish, timeout)
    finally:
        process.kill()
    return read_answer(status, output)


def _start(
    plugin: PathName, max_answer: int, confine: Optional[Confinement], members: Dict[str, Any]
) -> Process:
    request = write_request(members)
    program = find_program()
    path = find_plugin(os.fspath(plugin), program)
    command = confine.command(program, path) if confine else [program, path]
    return Process(command, request, max_answer)
