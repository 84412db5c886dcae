// SPDX-License-Identifier: MIT
#include "check/check_runner.h"
#include "check/child.h"
#include "check/options.h"
#include "check/platform/process_state.h"
#include "check/report.h"
#include "vexil/platform/platform.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace {

constexpr int failedStatus = 1;
constexpr int troubleStatus = 2;

// Throws if the text cannot be written: a part of a report must not look like the whole.
void print(const std::string& aText) {
    if (!vexil::platform::writeStandardOutput(aText)) {
        throw std::runtime_error("standard output cannot be written");
    }
}

int checkPlugins(const Options& aOptions) {
    const auto report = makeReport(aOptions, isColourTerminal(), print);
    std::vector<PluginResults> plugins;
    int status = EXIT_SUCCESS;
    for (const char* const name : aOptions.libraryNames) {
        report->beginPlugin(name);
        plugins.push_back(runChecks(aOptions, name, *report));
        report->endPlugin(plugins.back());
        if (countOutcomes(plugins.back(), Outcome::Failed) > 0) {
            status = failedStatus;
        } else if (!isPassed(plugins.back()) && status == EXIT_SUCCESS) {
            status = troubleStatus;
        }
    }
    report->finish(plugins);
    return status;
}

std::string makeCheckList() {
    std::string text;
    for (const Check& check : getChecks()) {
        std::string line = check.id;
        line.resize(17, ' ');
        text += line + check.description + '\n';
    }
    return text;
}

int serve(const Options& aOptions) {
    if (aOptions.check) runAsChild(aOptions);
    switch (aOptions.action) {
    case Options::ShowHelp:
        print(makeHelpText());
        return EXIT_SUCCESS;
    case Options::ShowVersion:
        print("certbridge-check " CERTBRIDGE_VERSION "\n");
        return EXIT_SUCCESS;
    case Options::ListChecks:
        print(makeCheckList());
        return EXIT_SUCCESS;
    default:
        return checkPlugins(aOptions);
    }
}

} // namespace

int main(int, char** argv) {
    vexil::platform::reserveStandardStreams();
    try {
        return serve(parseOptions(argv));
    } catch (const UsageError& error) {
        std::fprintf(stderr, "certbridge-check: %s; see certbridge-check --help\n", error.what());
    } catch (const std::bad_alloc&) {
        std::fputs("certbridge-check: out of memory\n", stderr);
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "certbridge-check: %s\n", exception.what());
    }
    return troubleStatus;
}
