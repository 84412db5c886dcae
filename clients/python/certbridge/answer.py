# SPDX-License-Identifier: MIT
"""Writes requests and reads answers, as docs/protocol.md specifies them."""

import json
from typing import Any, Dict, Mapping

from .errors import FatalError, NoAnswer, PluginError

_RESULT_STATUS = 0
_ERROR_STATUS = 2
_STARTS = (b'{"getCertificate":{', b'{"error":{', b'{"error":[')


def write_request(members: Mapping[str, Any]) -> bytes:
    """Raises ValueError for a member named "action" or a value that JSON cannot represent."""
    if "action" in members:
        raise ValueError('"action" is set by certbridge.get_certificate()')
    return json.dumps({"action": "getCertificate", **members}, allow_nan=False).encode()


def read_answer(status: int, output: bytes) -> Dict[str, Any]:
    """The result object. Raises PluginError, FatalError or NoAnswer.

    A plugin may print complete lines before and after the answer. An answer counts only with its own
    exit status: a plugin that crashes later may have left anything on standard output.
    """
    ending = f"exit status {status}" if status >= 0 else f"signal {-status}"
    lines = [line for line in output.split(b"\n")[:-1] if line.startswith(_STARTS)]
    if not lines or status not in (_RESULT_STATUS, _ERROR_STATUS):
        raise NoAnswer(ending, status)
    try:
        answer = json.loads(lines[-1])
    except (ValueError, RecursionError):
        raise NoAnswer(f"malformed output with {ending}", status) from None
    name = "getCertificate" if status == _RESULT_STATUS else "error"
    if set(answer) != {name}:
        raise NoAnswer(f"output that contradicts {ending}", status)
    if status == _RESULT_STATUS:
        return answer[name]
    raise _error(answer[name], status)


def _error(error: Any, status: int) -> Exception:
    if isinstance(error, dict):
        return PluginError(error)
    try:
        values = {element["name"]: element["value"] for element in error}
        return FatalError(values["errorCode"], values["errorMessage"])
    except (KeyError, TypeError):
        return NoAnswer("malformed fatal error", status)
