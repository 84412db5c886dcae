#include "tool/output.h"

#include "vexil/format_to_memory.h"
#include "vexil/json/json_value.h"
#include "vexil/json/json_writer.h"
#include "vexil/platform/platform.h"
#include "vexil/streams.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

using vexil::JsonValue;

namespace {

constexpr int failureStatus = 2;

// Also writes what a plugin may have left in the buffer.
bool writeToStandardOutput(const std::string& aText) {
    const vexil::platform::FailedWriteGuard guard;
    std::fwrite(aText.data(), 1, aText.size(), stdout);
    if (std::ferror(stdout) == 0 && std::fflush(stdout) == 0) return true;
    // Nobody shall try again on the way out: neither the runtime with what is left in the buffer,
    // nor a plugin that has last words and would raise the signal after all.
    vexil::platform::discardStandardOutput();
    return false;
}

} // namespace

void endAfterFailure() {
    writeToStandardOutput({});
    std::exit(failureStatus);
}

void printText(const std::string& aText) {
    if (!writeToStandardOutput(aText)) endAfterFailure();
}

void printJson(const JsonValue& aDocument) {
    std::string text;
    vexil::StringOutputStream stream(&text);
    vexil::JsonWriter writer(stream, 0);
    writer.write(aDocument);
    text += '\n';
    printText(text);
}

void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) {
    vexil::FormatToMemory message(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    message.vformat(aFormat, arguments);
    va_end(arguments);
    fatalError(aCode, message.getBuffer());
}
