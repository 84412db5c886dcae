# SPDX-License-Identifier: MIT
"""Repeats the transcripts of the documents."""

import re
import subprocess

TRANSCRIPT = re.compile(r"^```console\n(.*?)^```", re.DOTALL | re.MULTILINE)

# Shows a command after its prompt without changing $? for the next one.
ECHO = """(status=$?; cat <<'END'
$ {command}
END
exit $status)
{command}
"""


def repeat(transcript, **options):
    """The output of a shell that runs the commands of the transcript, all in one process."""
    commands = re.findall(r"^\$ (.*)", transcript, re.MULTILINE)
    script = "".join(ECHO.format(command=command) for command in commands)
    result = subprocess.run(
        ["bash", "-c", script],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        encoding="utf-8",
        **options,
    )
    return result.stdout
