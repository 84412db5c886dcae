#include "fuzz/recorded_output.h"

#include "tests/vexil/json/json_helpers.h"
#include "tool/output.h"
#include "vexil/format_to_memory.h"

#include <cstdarg>

RecordedOutput& RecordedOutput::inUse() {
    static RecordedOutput output;
    return output;
}

void endAfterFailure() {
    RecordedOutput::inUse().hasEnded = true;
    throw ProgramEnd();
}

void printJson(const vexil::JsonValue& aDocument) {
    RecordedOutput::inUse().text += writeText(aDocument) + '\n';
}

void fatalError(std::int32_t aCode, const char* aMessage) {
    RecordedOutput::inUse().error = aCode;
    RecordedOutput::inUse().message = aMessage;
    endAfterFailure();
}

void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) {
    vexil::FormatToMemory message(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    message.vformat(aFormat, arguments);
    va_end(arguments);
    fatalError(aCode, message.getBuffer());
}
