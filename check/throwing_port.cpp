// SPDX-License-Identifier: MIT
#include "check/throwing_port.h"

#include "vexil/format_to_memory.h"
#include "vexil/json/json_writer.h"

#include <cstdarg>
#include <string>

void ThrowingPort::printJson(const vexil::JsonValue& aDocument) {
    static_cast<void>(vexil::writeJsonText(aDocument));
}

void ThrowingPort::fatalError(std::int32_t aCode, const char* aMessage) {
    throw CheckFailure("certbridge ends with error " + std::to_string(aCode) + ", \"" + aMessage +
                       '"');
}

void ThrowingPort::fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) {
    vexil::FormatToMemory message(0);
    std::va_list arguments;
    va_start(arguments, aFormat);
    message.vformat(aFormat, arguments);
    va_end(arguments);
    fatalError(aCode, message.getBuffer());
}

void ThrowingPort::endAfterFailure() {
    throw CheckFailure("certbridge ends with status 2 and prints nothing");
}
