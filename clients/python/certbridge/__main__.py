# SPDX-License-Identifier: MIT
"""The command ``python -m certbridge``."""

import argparse
import json
import os
import sys
from typing import Any, Dict, NoReturn

from . import CertbridgeError, Confinement, NoAnswer, NotFound, TimedOut, get_certificate

STATUSES = """exit status:
  0    a certificate was returned; its members are on standard output
  1    the command line or the request is invalid
  2    the plugin or certbridge reported an error
  3    no answer, for example because the plugin crashed, or standard output is full
  124  the time limit expired
  127  the program, the plugin or a command for confinement is missing
"""


class Parser(argparse.ArgumentParser):
    def error(self, message: str) -> NoReturn:
        self.print_usage(sys.stderr)
        self.exit(1, f"certbridge: {message}\n")


def create_parser() -> Parser:
    parser = Parser(
        prog="python -m certbridge",
        description="Requests a certificate. The members of the request are read from standard"
        " input, as a JSON object without action.",
        epilog=STATUSES,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("plugin", metavar="PLUGIN", help="path, or name in the plugin folder")
    parser.add_argument("--timeout", type=float, default=60.0, metavar="SECONDS", help="default: 60")
    parser.add_argument("--max-answer", type=int, default=16 << 20, metavar="BYTES", help="default: 16 MiB")
    parser.add_argument("--confine", action="store_true", help="run the plugin in a sandbox")
    parser.add_argument(
        "--file", action="append", default=[], metavar="FILE", help="file that a confined plugin may read"
    )
    return parser


def read_members() -> Dict[str, Any]:
    members = json.loads(sys.stdin.buffer.read() or b"{}")
    if not isinstance(members, dict):
        raise ValueError("the request is not a JSON object")
    return members


def status_of(error: CertbridgeError) -> int:
    for kind, status in ((NoAnswer, 3), (TimedOut, 124), (NotFound, 127)):
        if isinstance(error, kind):
            return status
    return 2


def write_result(result: Dict[str, Any]) -> int:
    try:
        print(json.dumps(result), flush=True)
    except OSError as error:
        print(f"certbridge: cannot write the result: {error.strerror}", file=sys.stderr)
        os.close(sys.stdout.fileno())  # or the interpreter would try again, and change the exit status
        return 3
    return 0


def main() -> int:
    parser = create_parser()
    options = parser.parse_args()
    confine = Confinement(files=options.file) if options.confine else None
    try:
        members = read_members()
        reserved = {"timeout", "max_answer", "confine"} & members.keys()
        if reserved:
            raise ValueError(f"a member cannot be named {reserved.pop()}")
        result = get_certificate(
            options.plugin,
            timeout=options.timeout,
            max_answer=options.max_answer,
            confine=confine,
            **members,
        )
    except CertbridgeError as error:
        print(f"certbridge: {error}", file=sys.stderr)
        return status_of(error)
    except (ValueError, RecursionError) as error:
        print(f"certbridge: invalid request: {error}", file=sys.stderr)
        return 1
    return write_result(result)


sys.exit(main())
