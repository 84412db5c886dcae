# SPDX-License-Identifier: MIT
"""The exceptions of this package."""

from typing import Any, Mapping, Optional


class CertbridgeError(Exception):
    """Base class of all exceptions of this package."""


class PluginError(CertbridgeError):
    """The plugin processed the request and reported an error.

    ``error`` is the complete error object. By convention it has an integer ``code`` and a string
    ``message``; the properties are None if the plugin omitted them.
    """

    def __init__(self, error: Mapping[str, Any]) -> None:
        self.error = error
        super().__init__(f"plugin error {self.code}: {self.message}")

    @property
    def code(self) -> Any:
        return self.error.get("code")

    @property
    def message(self) -> Any:
        return self.error.get("message")


class FatalError(CertbridgeError):
    """certbridge itself detected an error: ``code`` is 100 or 102, ``message`` is stable."""

    def __init__(self, code: int, message: str) -> None:
        self.code = code
        self.message = message
        super().__init__(f"fatal error {code}: {message}")


class NoAnswer(CertbridgeError):
    """The program ended without a valid answer, for example because the plugin crashed.

    ``status`` is the exit status, or the negative number of the signal that ended the program; None
    if the program was ended because its output exceeded the limit.
    """

    def __init__(self, reason: str, status: Optional[int] = None) -> None:
        self.status = status
        super().__init__(f"no answer: {reason}")


class TimedOut(CertbridgeError):
    """The time limit expired; the program and its children were killed."""

    def __init__(self, seconds: float) -> None:
        self.seconds = seconds
        super().__init__(f"no answer within {seconds:g} seconds")


class NotFound(CertbridgeError):
    """The program ``certbridge``, the plugin, or a command needed for confinement is missing."""
