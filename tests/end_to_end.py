"""Runs each row of the table below through the built program, with the plugins made for it."""

import argparse
import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys
import tempfile

NO_INPUT, CUT_INPUT, BROKEN_PIPE = object(), object(), object()

# input      the request; NO_INPUT: a pipe to which nobody ever writes; CUT_INPUT: one that fails
#            after some bytes
# output     the expected line on standard output, without its end; "" for none at all
# status     0 for a certificate and 2 for everything else if not given
# plugin     the library's name without its suffix; None for the argument list args
# shell      how to run the command "$@"; not used for a Windows program
# native     why the row is skipped for a Windows program
# windows    the expected line of a Windows program if it is another one
# unchecked  why the row is skipped under the sanitizers
Row = collections.namedtuple(
    "Row", "label input output status error plugin args shell stdout native windows unchecked",
    defaults=(None, "", "fixture", None, None, None, None, None, None))


def request(members=""):
    return '{"action":"getCertificate"%s}' % members


def reply(**texts):
    """A request whose plugin answers with these texts, ' standing for the double quote."""
    return request("".join(',"%s":"%s"' % text for text in texts.items()))


def certificate(members=""):
    return '{"getCertificate":{%s}}' % members


def sent(elements):
    """What comes back when the plugin answers with the request text that it was sent."""
    return certificate('"request":' + json.dumps('{"request":[%s]}' % elements, ensure_ascii=False))


def fatal(code, message):
    return '{"error":[{"name":"errorCode","value":%d},{"name":"errorMessage","value":%s}]}' % (
        code, json.dumps(message))


def no_list(name):
    return fatal(102, 'invalid or missing "%s" member' % name)


def no_structure(index, name):
    return fatal(102, 'element %d of "%s" is not a structure object' % (index, name))


NOT_LOADED = "cannot load DLL, LoadLibrary failed, error "
NOT_OBJECT = fatal(102, "top-level object must be a structure")
NO_ACTION = fatal(102, 'missing or invalid "action" member')
WRONG_ACTION = fatal(102, 'invalid "action" member')
UNEXPECTED = "unexpected token"
TRAILING = "unexpected characters after value"
POSIX_STREAMS = "needs the standard streams of a POSIX system"
TIMEOUT = 120
USAGE = "Usage: PROGRAM DLL_NAME\n"
DEEP = '[{"a":' * 1000000 + "null" + "}]" * 1000000
LONGEST = "x" * 67108861
LARGE = request(',"a":"%s"' % ("x" * 1000000))
# Root without the right to read everything.
NOBODY = "" if os.geteuid() else "setpriv --bounding-set=-dac_override,-dac_read_search"

ROWS = [
    # The command line
    Row("no argument", NO_INPUT, "", 1, USAGE, None, []),
    Row("two arguments", NO_INPUT, "", 1, USAGE, None, ["a", "b"]),
    Row("usage to a closed stream", NO_INPUT, "", 1, "", None, [], '"$@" 2>&-',
        native=POSIX_STREAMS),
    # Reading and checking the request
    Row("empty input", "", fatal(102, "no input")),
    Row("cut off", '{"action"', fatal(102, "':' expected")),
    Row("invalid UTF-8", b'{"action":"\xff"}', fatal(102, UNEXPECTED)),
    Row("second value", request() + request(), fatal(102, TRAILING)),
    Row("end mark of a Windows text", request() + "\x1a\n[", fatal(102, TRAILING), windows=sent("")),
    Row("NUL after the value", request() + "\0", fatal(102, TRAILING)),
    *(Row("no object: " + text, text, NOT_OBJECT) for text in ("[]", '"getCertificate"', "1")),
    Row("empty object", "{}", NO_ACTION),
    *(Row("action is " + value, '{"action":%s}' % value, NO_ACTION)
      for value in ("1", "null", "true", "[]", "{}")),
    *(Row("name is " + name, '{"%s":"getCertificate"}' % name, NO_ACTION)
      for name in ("Action", "actio", "actions", r"action\u0000")),
    *(Row("action is " + repr(value), '{"action":"%s"}' % value, WRONG_ACTION)
      for value in ("getcertificate", "getCertificate ", r"getCertificate\u0000", "")),
    Row("first action decides", '{"action":"x","action":"getCertificate"}', WRONG_ACTION),
    *(Row("input " + redirection, NO_INPUT, fatal(100, message), shell='"$@" ' + redirection,
          native=POSIX_STREAMS)
      for redirection, message in (("<.", "Is a directory"), ("<&-", "Bad file descriptor"),
                                   ("</proc/self/mem", "Input/output error"))),
    Row("input fails in the middle", CUT_INPUT, fatal(100, "Resource temporarily unavailable"),
        native=POSIX_STREAMS),
    Row("longest string", '{"action":"%s"}' % LONGEST, WRONG_ACTION),
    Row("string too long", '{"action":"%sx"}' % LONGEST,
        fatal(102, "UnicodeString32::alloc(): string too long")),
    # Loading the library
    Row("missing library", request(), fatal(100, NOT_LOADED + "126"), plugin="missing"),
    Row("empty name", request(), fatal(100, NOT_LOADED + "126"), plugin=None, args=[""]),
    Row("no library", request(), fatal(100, NOT_LOADED + "193"), plugin=None, args=[__file__]),
    Row("directory", request(), fatal(100, NOT_LOADED + "193"), plugin=None, args=["./"],
        native="the system has another number"),
    Row("no permission", request(), fatal(100, NOT_LOADED + "193"), shell='f=$(mktemp); chmod 0 "$f"'
        '; %s "$1" "$f"; s=$?; rm -f "$f"; exit $s' % NOBODY, native="needs file modes"),
    Row("no export", request(), fatal(100, "cannot get DLL's GetPlugin function"),
        plugin="no_export"),
    Row("no object", request(), fatal(100, "no plugin object from DLL's GetPlugin function"),
        plugin="no_object"),
    *(Row(plugin + " is never asked", reply(do="throw"), fatal(100, "wrong plugin type"),
          plugin=plugin) for plugin in ("type_0", "type_2")),
    Row("request is checked first", "[]", NOT_OBJECT, plugin="missing"),
    Row("plugin in C", request(), certificate(), plugin="c_plugin"),
    # The request text
    Row("action only", request(), sent("")),
    Row("white space", ' { "action" : "getCertificate" ,\t"a" : [ 1 , { } ] } \r\n',
        sent('{"name":"a","value":[1,{}]}')),
    Row("every type, in order",
        '{"z":null,"y":[true,{"k":[]}],"action":"getCertificate","a":"t","n":-1,"f":1e5,"b":false}',
        sent('{"name":"z","value":null},{"name":"y","value":[true,{"k":[]}]},'
             '{"name":"a","value":"t"},{"name":"n","value":-1},{"name":"f","value":100000.0},'
             '{"name":"b","value":false}')),
    Row("equal names, every action left out", request(',"a":1,"action":[2],"a":3'),
        sent('{"name":"a","value":1},{"name":"a","value":3}')),
    Row("names cut at NUL", request(r',"a\u0000b":1,"action\u0000":2,"\u0000":3,"Action":4'),
        sent('{"name":"a","value":1},{"name":"action","value":2},{"name":"","value":3},'
             '{"name":"Action","value":4}')),
    Row("characters", request(r',"\u00e9\ud83d\ude00":"\u0000\u001f\n\/\"\\\u007f€"'),
        sent('{"name":"é😀","value":"' + r'\u0000\u001f\n/\"\\' + '\x7f€"}')),
    # Choosing the reply
    Row("neither text", reply(do="nothing"),
        fatal(100, "no output from plugin's getCertificate()")),
    Row("both texts", reply(response="{'response':[]}", error="{'error':[]}"), '{"error":{}}'),
    *(Row("response text is " + text, reply(response=text), fatal(100, message))
      for text, message in (("", "no input"), ("{'response':[}", UNEXPECTED),
                            ("{'response':['~']}", UNEXPECTED), ("{'response':[]}x", TRAILING))),
    Row("empty error beside a response", reply(response="{'response':[]}", error=""),
        fatal(100, "no input")),
    Row("response of 256 MiB", reply(response="{'response':[#]}"), certificate()),
    Row("string of 256 MiB", reply(response="{'response':[{'name':'a','value':'#'}]}"),
        fatal(100, "UnicodeString32::alloc(): string too long")),
    Row("malformed error", reply(error="{'error':[]]"), fatal(100, "',' or '}' expected")),
    *(Row("response is " + text, reply(response=text), no_list("response"))
      for text in ("[]", "null", "{}", "{'response':{}}", "{'Response':[]}", "{'error':[]}",
                   "{'response':1,'response':[]}")),
    *(Row("error is " + text, reply(error=text), no_list("error"))
      for text in ("'x'", "{'response':[]}", "{'error':null}")),
    # Translating the list
    Row("first element is no object", reply(response="{'response':[1]}"),
        no_structure(0, "response")),
    Row("third element is no object",
        reply(error="{'error':[{'name':'a','value':1},{},'x',{'name':'b','value':2}]}"),
        no_structure(2, "error")),
    Row("empty response list", reply(response=" {'other':1,'response':[],'response':1} "),
        certificate()),
    Row("elements skipped", reply(response="{'response':[{'name':'a'},{'value':1},{},{'name':1,"
        "'value':2},{'name':null,'value':3},{'Name':'a','value':4},{'name':'b','value':null}]}"),
        certificate('"b":null')),
    Row("first of equal members, others ignored",
        reply(response="{'response':[{'x':0,'value':1,'name':'a','name':1,'value':2}]}"),
        certificate('"a":1')),
    Row("equal names", reply(response="{'response':[{'name':'a','value':[1]},{'name':'b','value':"
        "{'c':1.5}},{'name':'a','value':''}]}"), certificate('"a":[1],"b":{"c":1.5},"a":""')),
    Row("error names", reply(error="{'error':[{'name':'errorCode','value':7},{'name':'erroMessage',"
        "'value':'m'},{'name':'errorMessage','value':'n'},{'name':'ErrorCode','value':8},"
        "{'name':'errorCodes','value':null},"
        "{'name':'errorCode^u0000x','value':9}]}"),
        '{"error":{"code":7,"message":"m","errorMessage":"n","ErrorCode":8,"errorCodes":null,"code":9}}'),
    Row("error names in a response", reply(response="{'response':[{'name':'errorCode','value':7},"
        "{'name':'erroMessage','value':'m'},{'name':'a^u0000b','value':'^u0000'}]}"),
        certificate(r'"errorCode":7,"erroMessage":"m","a":"\u0000"')),
    # Whatever a plugin does to the process
    Row("numbers under a locale", reply(locale="LOCALE", response="{'response':[{'name':'a',"
        "'value':[1.5,-0.25,1e6,3.0,1234567,12345678901,1e-7]}]}"),
        certificate('"a":[1.5,-0.25,1e+06,3.0,1234567,1.23457e+10,1e-07]')),
    Row("exception from the plugin", reply(do="throw"), "",
        native="a plugin's own C++ runtime ends the process there"),
    Row("plugin writes to standard output", reply(do="print", response="{'response':[]}"),
        "from the plugin\n" + certificate(), 0),
    # Limits
    Row("2,000,000 levels on a small stack", request(',"a":' + DEEP),
        sent('{"name":"a","value":%s}' % DEEP), shell='ulimit -s 256; "$@"'),
    Row("2,000,000 levels in the response", reply(response="{'response':[{'name':'a','value':%s}]}"
        % DEEP.replace('"', "'")), certificate('"a":' + DEEP), shell='ulimit -s 256; "$@"'),
    # It runs out while the request is read, while it is parsed, copied, and after that.
    *(Row("%d KiB of memory" % limit, request(',"a":' + DEEP), "", shell='ulimit -v %d; "$@"' % limit,
          native="needs a limit that a POSIX shell sets",
          unchecked="the address sanitizer reserves more memory than the row allows")
      for limit in (8192, 65536, 262144, 458752)),
    # Standard output that cannot be written
    *(Row("%s to %s" % (what, where), text, "", 2, shell=shell, stdout=stdout,
          native=POSIX_STREAMS)
      for what, text in (("result", request()), ("fatal error", "[]"), ("large result", LARGE))
      for where, shell, stdout in (("a closed stream", '"$@" >&-', None),
                                   ("a full device", '"$@" >/dev/full', None),
                                   ("a broken pipe", None, BROKEN_PIPE))),
    Row("file full in the middle", LARGE, "", 2, native=POSIX_STREAMS,
        shell='f=$(mktemp); ulimit -f 8; "$@" >"$f"; s=$?; rm "$f"; exit $s'),
    Row("reader gone in the middle", LARGE, "2", 0, native=POSIX_STREAMS,
        shell='{ { "$@"; echo $? >&3; } | head -c 9 >/dev/null; } 3>&1'),
    Row("signal handler of the plugin", request(), "", 2, plugin="signal_plugin",
        error="handler called 0 times, then 1 times\n", stdout=BROKEN_PIPE,
        native="the system has no such signal"),
]


class Runner:
    def __init__(self, options, scratch):
        self.command = [*options.runner.split(), os.path.abspath(options.program)]
        self.plugins, self.sanitized = options.plugins, options.sanitized
        self.foreign = options.program.endswith(".exe")
        self.shown = "Z:" + self.command[-1].replace("/", "\\") if self.foreign else self.command[-1]
        self.locale = "German" if self.foreign else make_locale(pathlib.Path(scratch))
        self.environment = dict(os.environ, LOCPATH=scratch)
        (silent, _), (cut, writer) = os.pipe(), os.pipe()  # their other ends stay open
        os.write(writer, b'{"action"')
        os.set_blocking(cut, False)
        self.inputs = {NO_INPUT: silent, CUT_INPUT: cut}
        reader, self.broken_pipe = os.pipe()
        os.close(reader)

    def reason_to_skip(self, row):
        if row.label == "numbers under a locale" and not self.locale:
            return "localedef cannot make a locale here"
        return (self.foreign and row.native) or (self.sanitized and row.unchecked)

    def command_line(self, row):
        suffix = ".dll" if self.foreign else ".so"
        arguments = row.args if row.plugin is None else ["./" + row.plugin + suffix]
        shell = ["sh", "-c", row.shell, "sh"] if row.shell and not self.foreign else []
        return [*shell, *self.command, *arguments]

    def run(self, row):
        """The row's status, output and error as they are."""
        if row.input in self.inputs:
            stdin = {"stdin": self.inputs[row.input]}
        else:
            text = row.input if isinstance(row.input, bytes) else row.input.encode()
            stdin = {"input": text.replace(b"LOCALE", (self.locale or "").encode())}
        stdout = self.broken_pipe if row.stdout is BROKEN_PIPE else subprocess.PIPE
        try:
            result = subprocess.run(self.command_line(row), **stdin, stdout=stdout, timeout=TIMEOUT,
                                    stderr=subprocess.PIPE, cwd=self.plugins, env=self.environment)
        except subprocess.TimeoutExpired:
            return "still running after %d seconds" % TIMEOUT
        return result.returncode, result.stdout or b"", result.stderr

    def expected(self, row):
        end = "\r\n" if self.foreign else "\n"
        output = row.windows if self.foreign and row.windows else row.output
        status = 2 * (not output.startswith('{"get')) if row.status is None else row.status
        error = row.error.replace("PROGRAM", self.shown).replace("\n", end)
        output = output and output.replace("\n", end) + end
        return status, output.encode(), error.encode()

    def check(self, row):
        """"passed", "failed" or "skipped", and what there is to tell."""
        reason = self.reason_to_skip(row)
        if reason:
            return "skipped", reason
        expected, actual = self.expected(row), self.run(row)
        told = (("input", row.input), ("expected", expected), ("actual", actual))
        return ("passed" if actual == expected else "failed",
                "".join("\n  %-8s %s" % (name, shortened(repr(value))) for name, value in told))


def make_locale(scratch):
    """Makes a locale whose decimal point is a comma; None where the tools are missing."""
    source = scratch / "comma.src"
    source.write_text('LC_NUMERIC\ndecimal_point ","\nthousands_sep "."\nEND LC_NUMERIC\n')
    os.system("localedef -c -i '%s' '%s' >/dev/null 2>&1" % (source, scratch / "comma"))
    return "comma" if (scratch / "comma").exists() else None


def shortened(text):
    return text if len(text) <= 2000 else text[:1000] + " ... " + text[-900:]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--program", required=True)
    parser.add_argument("--plugins", required=True, help="directory of the plugins")
    parser.add_argument("--runner", default="", help="command that runs a Windows program")
    parser.add_argument("--sanitized", action="store_true", help="built with the sanitizers")
    with tempfile.TemporaryDirectory() as scratch:
        runner = Runner(parser.parse_args(), scratch)
        with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
            results = list(pool.map(runner.check, ROWS))
    for row, (outcome, told) in zip(ROWS, results):
        if outcome != "passed":
            print("%s %s: %s" % (outcome.upper(), row.label, told))
    count = collections.Counter(outcome for outcome, _ in results)
    skipped = ", %d skipped" % count["skipped"] if count["skipped"] else ""
    print("%d passed, %d failed%s" % (count["passed"], count["failed"], skipped))
    return 1 if count["failed"] else 0


if __name__ == "__main__":
    sys.exit(main())
