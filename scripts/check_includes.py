# SPDX-License-Identifier: MIT
"""Checks the #include directives of the sources against the order of the layers.

Usage: check_includes.py [FOLDER]
Reports each include of a layer that the including folder must not use, each include of a system
header outside the platform folders, and each cycle between headers. Exit status 1 if there are any.
"""
import pathlib
import re
import sys

# Each folder and the folders that its files may include besides their own. The longest prefix of a
# file's path decides the folder.
LAYERS = {
    "vexil/platform": [],
    "vexil": ["vexil/platform"],
    "vexil/numbers": ["vexil"],
    "vexil/json": ["vexil", "vexil/numbers", "vexil/platform"],
    "certbridge": ["vexil", "vexil/json", "vexil/platform"],
    "tool": ["certbridge", "vexil", "vexil/json", "vexil/platform"],
    "check/platform": ["vexil"],
    "check": ["check/platform", "certbridge", "vexil", "vexil/json", "vexil/platform"],
    "plugins/common": ["certbridge/plugin.h", "certbridge/name_value_list.h", "vexil", "vexil/json"],
    "plugins": ["plugins/common", "certbridge/plugin.h", "vexil/assert.h"],
    "examples": ["certbridge/plugin.h", "vexil", "vexil/json"],
}
SYSTEM_HEADERS = re.compile(r"windows\.h|winsock2\.h|unistd\.h|dlfcn\.h|poll\.h|pthread\.h|sys/.*")
SYSTEM_FOLDERS = ("vexil/platform", "check/platform", "plugins")
INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', re.M)


def folder_of(name):
    """The longest key of LAYERS that contains the file, or None."""
    folders = [folder for folder in LAYERS if name.startswith(folder + "/")]
    return max(folders, key=len, default=None)


def read_includes(root):
    """Maps each source to the project files and to the system headers that it includes."""
    includes, system = {}, {}
    for top in sorted({folder.split("/")[0] for folder in LAYERS}):
        for path in sorted((root / top).rglob("*")):
            if path.suffix not in (".h", ".c", ".cpp"):
                continue
            name = path.relative_to(root).as_posix()
            includes[name], system[name] = [], []
            for quoted, angled in INCLUDE.findall(path.read_text(encoding="utf-8")):
                target = quoted or angled
                beside = (path.parent / target)
                if (root / target).is_file():
                    includes[name].append(target)
                elif quoted and beside.is_file():
                    includes[name].append(beside.resolve().relative_to(root).as_posix())
                else:
                    system[name].append(target)
    return includes, system


def is_permitted(source, target):
    folder, other = folder_of(source), folder_of(target)
    if folder == "plugins":
        # Each production plugin has a folder, and none uses another one.
        own = source.split("/")[:2] == target.split("/")[:2]
        return own or other.startswith("plugins/common") or any(target == entry or other == entry for entry in LAYERS[folder])
    return other == folder or any(target == entry or other == entry for entry in LAYERS[folder])


def find_cycle(includes):
    """The headers of one cycle in order, or an empty list."""
    finished, path = set(), []

    def visit(name):
        if name in path:
            return path[path.index(name):] + [name]
        if name in finished:
            return []
        path.append(name)
        for target in includes.get(name, []):
            cycle = visit(target)
            if cycle:
                return cycle
        path.pop()
        finished.add(name)
        return []

    for name in includes:
        cycle = visit(name)
        if cycle:
            return cycle
    return []


def check(root):
    includes, system = read_includes(root)
    findings = ["%s must not include %s" % (source, target)
                for source, targets in includes.items()
                for target in targets if not is_permitted(source, target)]
    findings += ["%s includes <%s> outside a platform folder" % (source, header)
                 for source, headers in system.items() if not source.startswith(SYSTEM_FOLDERS)
                 for header in headers if SYSTEM_HEADERS.fullmatch(header)]
    cycle = find_cycle(includes)
    if cycle:
        findings.append("cycle: " + " -> ".join(cycle))
    return findings


if __name__ == "__main__":
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else ".").resolve()
    findings = check(root)
    print("\n".join(findings) or "The includes follow the layers.")
    sys.exit(bool(findings))
