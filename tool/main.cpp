// SPDX-License-Identifier: MIT
#include "certbridge/exchange.h"
#include "tool/program_port.h"
#include "vexil/platform/platform.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

namespace {

constexpr int usageStatus = 1;

[[noreturn]] void endWithUsage(const char* aProgramName) {
    const vexil::platform::WriteSignalBlocker blocker;
    std::fprintf(stderr, "Usage: %s DLL_NAME\n", aProgramName);
    std::exit(usageStatus);
}

// The terminate handler, called for an exception that leaves a function which must not throw, and
// for one that cannot be thrown because no memory is left for it.
[[noreturn]] void endSilently() {
    std::_Exit(failureStatus);
}

std::string readStandardInput(FailurePort& aPort) {
    std::string text;
    std::array<char, 8192> block;
    std::size_t count = 0;
    do {
        count = std::fread(block.data(), 1, block.size(), stdin);
        const int error = errno; // before append() may change it
        text.append(block.data(), count);
        if (std::ferror(stdin)) aPort.fatalError(EnvironmentError, std::strerror(error));
    } while (count == block.size());
    return text;
}

} // namespace

int main(int argc, char** argv) {
    std::set_terminate(endSilently);
    vexil::platform::setCrashStatus(failureStatus);
    vexil::platform::reserveStandardStreams();
    if (argc != 2) endWithUsage(argc > 0 ? argv[0] : "certbridge");
    ProgramPort port;
    try {
        serveRequest(port, readStandardInput(port), argv[1]);
    } catch (...) {
        // Most likely out of memory: no error document can be written, and nothing has been.
        port.endAfterFailure();
    }
    return 0;
}
