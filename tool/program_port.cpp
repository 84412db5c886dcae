// SPDX-License-Identifier: MIT
#include "tool/program_port.h"

#include "certbridge/name_value_list.h"
#include "vexil/format_to_memory.h"
#include "vexil/json/json_writer.h"
#include "vexil/platform/platform.h"

#include <cstdarg>
#include <cstdlib>
#include <string>

using vexil::JsonValue;
using vexil::platform::writeStandardOutput;

void ProgramPort::printJson(const JsonValue& aDocument) {
    std::string line = vexil::writeJsonText(aDocument);
    line += '\n';
    if (!writeStandardOutput(line)) endAfterFailure();
}

void ProgramPort::fatalError(std::int32_t aCode, const char* aMessage) {
    ValueHolder list(JsonValue::createArray());
    appendNameValue(list, "errorCode", JsonValue::createInteger(aCode));
    appendNameValue(list, "errorMessage", aMessage);
    ValueHolder document(JsonValue::createObject());
    appendMember(document, "error", list);
    printJson(*document);
    endAfterFailure();
}

void ProgramPort::fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) {
    vexil::FormatToMemory message(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    message.vformat(aFormat, arguments);
    va_end(arguments);
    fatalError(aCode, message.getBuffer());
}

void ProgramPort::endAfterFailure() {
    // Flushed here, with signals held back, and not by the runtime on exit.
    static_cast<void>(writeStandardOutput({}));
    std::exit(failureStatus);
}
