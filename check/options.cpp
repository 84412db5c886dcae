#include "check/options.h"

#include "check/platform/platform.h"
#include "check/sample_requests.h"
#include "vexil/json/json_parser.h"
#include "vexil/streams.h"

#include <charconv>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string_view>
#include <utility>

using vexil::JsonType;

namespace {

ValueHolder parseRequestFile(const std::string& aFileName) {
    std::ifstream file(aFileName, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file) throw std::runtime_error("cannot be read");
    auto request = vexil::parseJsonText(vexil::ByteRange(text));
    if (request->getType() != JsonType::Object) throw std::runtime_error("holds no JSON object");
    return request;
}

ValueHolder readRequest(const std::string& aFileName) {
    try {
        return parseRequestFile(aFileName);
    } catch (const std::runtime_error& failure) {
        throw std::runtime_error(aFileName + ": " + failure.what());
    }
}

std::chrono::seconds parseSeconds(std::string_view aText) {
    constexpr int longest = 86400;
    int seconds = 0;
    const auto end = aText.data() + aText.size();
    const auto [rest, error] = std::from_chars(aText.data(), end, seconds);
    if (error != std::errc() || rest != end || seconds < 1 || seconds > longest) {
        throw UsageError("--timeout takes a number of seconds from 1 to " +
                         std::to_string(longest));
    }
    return std::chrono::seconds(seconds);
}

class Parser {
public:
    explicit Parser(char** aArguments) : mNext(aArguments + 1) { mOptions.arguments = aArguments; }

    Options parse() {
        while (*mNext) parseArgument(*mNext++);
        if (mOptions.help || mOptions.version) return std::move(mOptions);
        if (!mOptions.libraryName) throw UsageError("no library is named");
        if (!mOptions.typicalRequest) mOptions.typicalRequest = makeTypicalRequest();
        return std::move(mOptions);
    }

private:
    void parseArgument(const char* aArgument) {
        const std::string_view argument(aArgument);
        if (!argument.starts_with('-')) {
            if (mOptions.libraryName) throw UsageError("more than one library is named");
            mOptions.libraryName = aArgument;
        } else if (argument.starts_with(runCheckOption)) {
            mOptions.check = findCheck(std::string(argument.substr(std::strlen(runCheckOption))));
            // Without it this process would be a parent, and its children as well.
            if (!mOptions.check) throw UsageError("there is no such check");
        } else if (argument.starts_with(outcomeOption)) {
            mOptions.outcomePlace = argument.substr(std::strlen(outcomeOption));
        } else {
            parseOption(argument);
        }
    }

    void parseOption(std::string_view aName) {
        if (aName == "--json") {
            mOptions.json = true;
        } else if (aName == "--in-process") {
            mOptions.inProcess = true;
        } else if (aName == "--help") {
            mOptions.help = true;
        } else if (aName == "--version") {
            mOptions.version = true;
        } else if (aName == "--timeout") {
            mOptions.timeLimit = parseSeconds(takeValue(aName));
        } else if (aName == "--request") {
            mOptions.typicalRequest = readRequest(takeValue(aName));
        } else {
            throw UsageError("there is no option " + std::string(aName));
        }
    }

    const char* takeValue(std::string_view aName) {
        if (!*mNext) throw UsageError(std::string(aName) + " needs a value");
        return *mNext++;
    }

    char** mNext;
    Options mOptions;
};

} // namespace

Options parseOptions(char** aArguments) {
    return Parser(aArguments).parse();
}
