// SPDX-License-Identifier: MIT
#include "fuzz/recording_port.h"

#include "vexil/format_to_memory.h"
#include "vexil/json/json_writer.h"

#include <cstdarg>

void RecordingPort::endAfterFailure() {
    hasEnded = true;
    throw ProcessEnd();
}

void RecordingPort::printJson(const vexil::JsonValue& aDocument) {
    text += vexil::writeJsonText(aDocument) + '\n';
}

void RecordingPort::fatalError(std::int32_t aCode, const char* aMessage) {
    error = aCode;
    message = aMessage;
    endAfterFailure();
}

void RecordingPort::fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) {
    vexil::FormatToMemory formatted(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    formatted.vformat(aFormat, arguments);
    va_end(arguments);
    fatalError(aCode, formatted.getBuffer());
}
