import re, subprocess

TRANSCRIPT = re.compile(r"^```console\n(.*?)^```", re.S | re.M)


def repeat(transcript, **options):
    """What a shell shows that is given the commands of the transcript."""
    commands = re.findall(r"^\$ (.*)", transcript, re.M)
    # Each command is echoed behind its prompt; all of them share a shell, and so does $?.
    script = "".join(f"(s=$?; cat <<'.'\n$ {line}\n.\nexit $s)\n{line}\n" for line in commands)
    return subprocess.run(["bash", "-c", script], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          encoding="utf-8", **options).stdout
