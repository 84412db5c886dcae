"""Runs each row of the tables through the built checker.

Usage: check_test.py PROGRAM PLUGIN_FOLDER MINIMAL_PLUGIN [RUNNER]
"""
import concurrent.futures, json, os, re, subprocess, sys, tempfile

PROGRAM, PLUGINS, MINIMAL = map(os.path.abspath, sys.argv[1:4])
SUFFIX = ".dll" if PROGRAM.endswith(".exe") else ".so"
FAULT = "{'error':[{'name':'erroMessage','value':''},{'name':'errorCode','value':1.5}]}"
NOTED = dict.fromkeys(("typical-request", "second-call", "reply-lifetime", "exit"), "passed: both")

# plugin, members of the typical request, what is said and where; nothing else fails
PLUGIN_ROWS = [
    *((plugin, {}, {}) for plugin in (MINIMAL, "c_plugin", "fixture")),
    ("missing", {}, {"load": "error 126"}), (__file__, {}, {"load": "error 193"}),
    ("no_export", {}, {"export": "cannot get"}), ("no_object", {}, {"object": "no plugin"}),
    ("type_2", {}, {"type": "wrong plugin type"}),
    *(("fixture", members, {"typical-request": said}) for members, said in (
        ({"do": "crash"}, "signal 11|access violation|status 1$"), ({"do": "exit"}, "with status 0"),
        ({"do": "throw"}, "exception left the plugin|status 3"), ({"do": "hang"}, "within 5 s"),
        ({"do": "nothing"}, "no output"), ({"response": ""}, "no input"),
        ({"response": "{'response':['~']}"}, "unexpected token.* not UTF-8"),
        ({"response": "{'response':[1]}"}, "not a structure"),
        ({"response": "{'response':[{'name':1,'value':1}]}"}, "element 0 .* is no string"),
        ({"response": "{'response':[{'name':'a','value':1},{'name':'a'}]}"}, '1 .* no "value"'),
        ({"response": r"{'response':[{'name':'^u0000','value':1}]}"}, "NUL"),
        ({"error": FAULT.replace("1.5", "'1'")}, '"errorCode" with a number'),
        ({"error": FAULT.replace("erroM", "errorM")}, '"erroMessage", spelt so'))),
    ("fixture", {"do": "borrow"}, {"reply-lifetime": "changed with the text of the request"}),
    ("fixture", {"do": "print"}, {"standard-output": r'typical-request.*"from the plugin\\n"'}),
    ("fixture", {"do": "close"}, {"standard-output": "typical-request.*closed"}),
    ("fixture", {"response": "", "error": FAULT}, NOTED)]
# arguments, status, what is found in the output
OPTION_ROWS = [
    (["--help"], 0, "Usage: "), (["--version"], 0, r"certbridge-check \d"), ([], 2, "no library"),
    (["--timeout", "0", "a"], 2, "--timeout"), (["--run-check=none", "a"], 2, "no such check"),
    (["--request", MINIMAL, "a"], 2, "unexpected"), (["missing"], 1, "FAIL  load .*\n.* 126"),
    (["--in-process", MINIMAL], 0, "ok    load .*(.*\n)*11 passed, 0 failed, 3 skipped")]


def run(row, check, *arguments):
    """None if what the checker does passes the check, else what there is to tell."""
    result = subprocess.run([*sys.argv[4:], PROGRAM, *arguments], cwd=PLUGINS, encoding="utf-8",
                            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=240)
    good = check(result.returncode, result.stdout)
    return None if good else "FAILED %s: status %d, %s" % (row, result.returncode, result.stdout)


def check_plugin(row):
    def check(status, output):
        report = json.loads(output.splitlines()[-1])
        said = {check["id"]: check["outcome"] + ": " + check["detail"] for check in report["checks"]
                if check["outcome"] == "failed" or not re.match("$|needs", check["detail"])}
        return report["passed"] == (status == 0) == (row[2] in ({}, NOTED)) and (
            said.keys() == row[2].keys()) and all(map(re.search, row[2].values(), said.values()))
    name = row[0] if os.path.isfile(row[0]) else "./" + row[0] + SUFFIX
    with tempfile.TemporaryDirectory() as folder:
        with open(folder + "/request", "w") as file:
            json.dump(row[1], file)
        limit = "5" if "hang" in row[1].values() else "60"
        return run(row, check, "--json", "--timeout", limit, "--request", file.name, name)


def check_options(row):
    return run(row, lambda *actual: actual[0] == row[1] and re.search(row[2], actual[1]), *row[0])


with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
    faults = [*pool.map(check_plugin, PLUGIN_ROWS), *pool.map(check_options, OPTION_ROWS)]
sys.exit("\n".join(filter(None, faults)) or None)
