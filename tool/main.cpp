#include "certbridge/name_value_list.h"
#include "tool/certificate_exchange.h"
#include "tool/output.h"
#include "vexil/json/json_parser.h"
#include "vexil/json/json_value.h"
#include "vexil/platform/platform.h"
#include "vexil/streams.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

constexpr int usageStatus = 1;

[[noreturn]] void endWithUsage(const char* aProgramName) {
    const vexil::platform::FailedWriteGuard guard;
    std::fprintf(stderr, "Usage: %s DLL_NAME\n", aProgramName);
    std::exit(usageStatus);
}

std::string readStandardInput() {
    std::string text;
    std::array<char, 65536> block;
    std::size_t count = 0;
    do {
        count = std::fread(block.data(), 1, block.size(), stdin);
        const int error = errno; // before anything else may change it
        text.append(block.data(), count);
        if (std::ferror(stdin)) fatalError(EnvironmentError, std::strerror(error));
    } while (count == block.size());
    return text;
}

ValueHolder parseRequest(const std::string& aText) {
    try {
        return vexil::parseJsonText(vexil::ByteRange(aText));
    } catch (const std::runtime_error& failure) {
        fatalError(ContentError, failure.what());
    }
}

void checkRequest(const JsonValue& aRequest) {
    if (aRequest.getType() != JsonType::Object) {
        fatalError(ContentError, "top-level object must be a structure");
    }
    const JsonValue* const action = findMember(&aRequest, "action");
    if (!action || action->getType() != JsonType::String) {
        fatalError(ContentError, "missing or invalid \"action\" member");
    }
    if (action->getString() != "getCertificate") {
        fatalError(ContentError, "invalid \"action\" member");
    }
}

void serve(const char* aLibraryName) {
    const std::string text = readStandardInput();
    const ValueHolder request = parseRequest(text);
    checkRequest(*request);
    performGetCertificate(*request, aLibraryName);
}

} // namespace

int main(int argc, char** argv) {
    vexil::platform::reserveStandardStreams();
    if (argc != 2) endWithUsage(argc > 0 ? argv[0] : "certbridge");
    try {
        serve(argv[1]);
    } catch (...) {
        // No memory, most likely: nothing can be told any more, and nothing has been written.
        endAfterFailure();
    }
    return 0;
}
