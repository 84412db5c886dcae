# SPDX-License-Identifier: MIT
"""Runs a command under a time limit and a limit of its output."""

import os
import signal
import subprocess
import threading
import time
from typing import List, Optional, Sequence, Tuple

from .errors import NoAnswer, NotFound, TimedOut

_IS_POSIX = os.name == "posix"
_BLOCK_SIZE = 1 << 16


class Process:
    """A running command in a process group of its own, so that its children end with it."""

    def __init__(self, command: Sequence[str], standard_input: bytes, max_output: int) -> None:
        """Starts the command. Raises NotFound if it cannot be started."""
        self._max_output = max_output
        self._output: List[bytes] = []
        self._is_too_long = False
        self._lock = threading.Lock()
        try:
            self._process = subprocess.Popen(
                command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=_IS_POSIX
            )
        except OSError as error:
            raise NotFound(f"cannot run {command[0]}: {error.strerror}") from None
        self._threads = [
            threading.Thread(target=self._write, args=(standard_input,), daemon=True),
            threading.Thread(target=self._read, daemon=True),
            threading.Thread(target=self._await_exit, daemon=True),
        ]
        for thread in self._threads:
            thread.start()

    def finish(self, seconds: Optional[float]) -> Tuple[int, bytes]:
        """Waits for the end of the command; returns its status and its output.

        Whether it returns or raises, the command and its children have been killed. Raises TimedOut,
        and NoAnswer if the output exceeds the limit.
        """
        deadline = None if seconds is None else time.monotonic() + seconds
        try:
            for thread in self._threads:
                thread.join(None if deadline is None else max(0.0, deadline - time.monotonic()))
                if thread.is_alive():
                    raise TimedOut(seconds or 0)
        finally:
            self.kill()
        if self._is_too_long:
            raise NoAnswer(f"more than {self._max_output} bytes of output")
        return self._process.returncode, b"".join(self._output)

    def kill(self) -> None:
        """Ends the command and its children; does nothing if it has ended."""
        with self._lock:  # the number of a process that was waited for may belong to another one
            if self._process.returncode is None:
                self._kill_group()

    def _kill_group(self) -> None:
        if _IS_POSIX:
            try:
                os.killpg(self._process.pid, signal.SIGKILL)
            except (ProcessLookupError, PermissionError):
                pass
        else:
            subprocess.run(
                ["taskkill", "/F", "/T", "/PID", str(self._process.pid)],
                stdout=subprocess.DEVNULL,
                stderr=subprocess.DEVNULL,
                check=False,
            )

    def _write(self, text: bytes) -> None:
        assert self._process.stdin
        try:
            with self._process.stdin as stream:
                stream.write(text)
        except OSError:
            pass  # the program ended without reading its input

    def _read(self) -> None:
        assert self._process.stdout
        size = 0
        with self._process.stdout as stream:
            while block := os.read(stream.fileno(), _BLOCK_SIZE):
                size += len(block)
                if size > self._max_output:
                    self._is_too_long = True
                    self.kill()
                    return
                self._output.append(block)

    def _await_exit(self) -> None:
        if hasattr(os, "waitid"):
            # Until the process is reaped, its number cannot name another group.
            os.waitid(os.P_PID, self._process.pid, os.WEXITED | os.WNOWAIT)
            with self._lock:
                self._kill_group()  # children that still hold the output
                self._process.wait()
        else:
            self._process.wait()
