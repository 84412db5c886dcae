# SPDX-License-Identifier: MIT
"""Compares the documents with the source tree.

Usage: check_documents.py
Reports each difference between a list in a document and the project; each path, name in a command and
link that leads nowhere; each public class without an example; and each source file that does not name the
licence, if the tree is a repository. Exit status 1 if there are any.
"""
import json
import re
import subprocess
import sys

from documents import SOURCE, blocks, broken_links, code_spans, read, table, without_blocks

DOCUMENTS = [*SOURCE.glob("*.md"), *SOURCE.glob("docs/*.md")]
CLIENT_DOCUMENTS = [*SOURCE.glob("clients/*/*.md")]
# Describes the commit that it names.
COVERAGE_REPORT = SOURCE / "docs/coverage.md"
SUFFIXES = {".c", ".cmake", ".cpp", ".go", ".h", ".js", ".py", ".rs", ".sh", ".ts"}


def presets():
    found = json.loads(read("CMakePresets.json"))["configurePresets"]
    return {preset["name"] for preset in found if not preset.get("hidden")}


def build_options():
    return set(re.findall(r"^ *option\((\w+)", read("CMakeLists.txt"), re.MULTILINE))


def public_headers():
    return set(re.findall(r"(?:certbridge|vexil)/[\w/]+\.h", read("cmake/Install.cmake")))


def fuzz_targets():
    cmake = read("fuzz/CMakeLists.txt")
    listed = " ".join(re.findall(r"foreach\(name ([^)]*)\)", cmake)).split()
    return set(listed) | set(re.findall(r"^ *add_fuzz_target\((\w+)", cmake, re.MULTILINE))


def is_generated(folder):
    return folder.name == "build" or (folder / "CMakeCache.txt").exists()


def folders():
    """The folders of the sources: those at the top and the library's."""
    found = [*SOURCE.iterdir(), *(SOURCE / "vexil").iterdir()]
    return {
        f"{path.relative_to(SOURCE)}/"
        for path in found
        if path.is_dir() and not is_generated(path) and not path.name.startswith(".")
    }


REQUEST_MEMBER = r'(?:get|find|take)\w+\((?:aRequest, |\s)*"(\w+)"(?:,\s*"(\w+)")?'
ANSWER_MEMBER = r'\badd[A-Z]\w*\((?:\w+, |\s)*"(\w+)"'


def plugin_members(pattern, common):
    """The members in the sources of each plugin or in the common ones that it calls.

    common maps functions of plugins/common to the source files with their members.
    """
    members = set()
    for folder in (SOURCE / "plugins").glob("certificate_*_plugin"):
        source = "".join(path.read_text(encoding="utf-8") for path in folder.glob("*.cpp"))
        source += "".join(
            read(f"plugins/common/{name}") for function, name in common if function + "(" in source
        )
        plugin = folder.name.split("_")[1]
        for names in re.findall(pattern, source):
            names = [names] if isinstance(names, str) else filter(None, names)
            members |= {f"{plugin}: {name}" for name in names}
    return members


def plugin_request_members():
    return plugin_members(REQUEST_MEMBER, [("readSelectors", "selection.cpp")])


def plugin_answer_members():
    return plugin_members(
        ANSWER_MEMBER,
        [
            ("answerSelection", "selection.cpp"),
            ("answerSelection", "certificate.cpp"),
            ("addCertificate", "certificate.cpp"),
        ],
    )


def listed_names(text, *header):
    """The code spans in the first column of a table."""
    return {span for row in table(text, *header) for span in code_spans(row[0])}


def listed_members(text, header):
    return {
        f"{plugin}: {name}"
        for names, plugins, _ in table(text, header, "Plugins", "Value")
        for name in code_spans(names)
        for plugin in plugins.split(", ")
    }


# Document, a function that finds the names listed in its text, its arguments, and the names in the project.
LISTS = [
    ("docs/install.md", listed_names, ["Preset"], presets),
    ("docs/install.md", listed_names, ["Option"], build_options),
    ("docs/reference.md", listed_names, ["Header"], public_headers),
    ("docs/fuzzing.md", listed_names, ["target", "property"], fuzz_targets),
    ("docs/architecture.md", listed_names, ["Folder", "Content"], folders),
    ("docs/plugins.md", listed_members, ["Request member"], plugin_request_members),
    ("docs/plugins.md", listed_members, ["Answer member"], plugin_answer_members),
]

# Kind of a name in commands, its pattern, and whether the name exists.
NAMES = [
    ("preset", r"--preset (\w+)", lambda name: name in presets()),
    ("script", r"\bscripts/([\w-]+(?:\.\w+)?)", lambda name: (SOURCE / "scripts" / name).exists()),
]


def example_findings():
    """The classes in the public headers that a program uses by name, and that no example shows."""
    document = "docs/reference.md"
    headers = "".join(read(name) for name in public_headers() if name.startswith("vexil/"))
    classes = re.findall(r"^class VEXIL_API (\w+)|^struct (BigUnsigned)", headers, re.MULTILINE)
    names = {name for pair in classes for name in pair if name} - {"UnicodeStringBase", "UnicodeStringOf"}
    examples = "".join(block.text for block in blocks(read(document)) if block.language == "cpp")
    for name in sorted(names - set(re.findall(r"\w+", examples))):
        yield f"{document}: has no example of {name}"


def list_findings(document, text):
    for name, find_listed, header, find_names in LISTS:
        if document != SOURCE / name:
            continue
        listed, names = find_listed(text, *header), find_names()
        assert names, header
        yield from (f"lists {name}, which does not exist" for name in sorted(listed - names))
        yield from (f"does not list {name}" for name in sorted(names - listed))


def name_findings(text):
    for kind, pattern, exists in NAMES:
        for name in re.findall(pattern, text):
            if not exists(name):
                yield f"there is no {kind} {name}"


def path_findings(text):
    tops = "|".join(path.name for path in SOURCE.iterdir() if path.is_dir() and path.name != "build")
    for span in code_spans(without_blocks(text)):
        if re.fullmatch(rf"({tops})/[\w./-]*", span) and not (SOURCE / span).exists():
            yield f"there is no {span}"


def licence_findings():
    if not (SOURCE / ".git").exists():
        return
    licence = re.match(r"(\w+) License", read("LICENSE"))[1]
    names = subprocess.run(
        ["git", "ls-files", "-co", "--exclude-standard"],
        cwd=SOURCE, stdout=subprocess.PIPE, encoding="utf-8", check=True).stdout.splitlines()
    sources = [SOURCE / name for name in names if (SOURCE / name).suffix in SUFFIXES]
    assert sources
    for path in filter(lambda path: path.is_file(), sources):
        if f"SPDX-License-Identifier: {licence}\n" not in path.read_text(encoding="utf-8")[:200]:
            yield f"{path.relative_to(SOURCE)}: does not name the licence"


def document_findings(document):
    text = document.read_text(encoding="utf-8")
    yield from (f"{link} leads nowhere" for link in broken_links(document))
    if document in CLIENT_DOCUMENTS:
        return
    yield from list_findings(document, text)
    yield from name_findings(text)
    if document != COVERAGE_REPORT:
        yield from path_findings(text)


def findings():
    for document in sorted(DOCUMENTS + CLIENT_DOCUMENTS):
        yield from (f"{document.relative_to(SOURCE)}: {text}" for text in document_findings(document))
    yield from example_findings()
    yield from licence_findings()


if __name__ == "__main__":
    found = list(findings())
    print("\n".join(found) or "The documents agree with the source tree.")
    sys.exit(bool(found))
