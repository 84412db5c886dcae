#include "check/check_runner.h"
#include "check/options.h"
#include "check/platform/platform.h"
#include "check/report.h"
#include "vexil/json/json_writer.h"
#include "vexil/platform/platform.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <stdexcept>
#include <string>

namespace {

constexpr int failedStatus = 1;
constexpr int troubleStatus = 2;

constexpr const char* help =
    R"(Usage: certbridge-check [OPTION...] LIBRARY
Checks whether LIBRARY keeps the contract between certbridge and its plugins.

  --request FILE  ask what the JSON request in FILE asks where a typical
                  request is due
  --timeout SECONDS
                  time limit for each check, 10 if not given
  --json          report as one line of JSON
  --in-process    all checks in this process, for a debugger
  --help          show this and end
  --version       show the version and end

Exit status: 0 if no check failed, 1 if one did, 2 if the command line is wrong
or the checks could not be run or reported.
)";

bool isColoured() {
    const char* const wish = std::getenv("NO_COLOR");
    return (!wish || !*wish) && isColourTerminal();
}

// Throws if the report cannot be written: a part of it would look like the whole.
void print(const std::string& aText) {
    if (!vexil::platform::writeStandardOutput(aText)) {
        throw std::runtime_error("standard output cannot be written");
    }
}

int checkPlugin(const Options& aOptions) {
    const bool coloured = !aOptions.json && isColoured();
    const auto results = runChecks(aOptions, [&](const CheckResult& aResult) {
        if (!aOptions.json) print(makeLine(aResult, coloured));
    });
    if (aOptions.json) {
        print(vexil::writeJsonText(*makeJsonReport(aOptions.libraryName, results)) + '\n');
    } else {
        print(makeSummary(results));
    }
    return isPassed(results) ? EXIT_SUCCESS : failedStatus;
}

int serve(const Options& aOptions) {
    if (aOptions.check) runAsChild(aOptions);
    if (!aOptions.help && !aOptions.version) return checkPlugin(aOptions);
    print(aOptions.help ? help : "certbridge-check " CERTBRIDGE_VERSION "\n");
    return EXIT_SUCCESS;
}

} // namespace

int main(int, char** argv) {
    vexil::platform::reserveStandardStreams();
    try {
        return serve(parseOptions(argv));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "certbridge-check: %s; see certbridge-check --help\n", error.what());
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "certbridge-check: %s\n", exception.what());
    }
    return troubleStatus;
}
