// SPDX-License-Identifier: MIT
#include "certbridge/parse_document.h"

#include "vexil/json/json_parser.h"
#include "vexil/streams.h"

#include <stdexcept>

ValueHolder parseDocument(FailurePort& aPort, FatalErrorCode aCode, std::string_view aText) {
    ValueHolder document;
    try {
        document = vexil::parseJsonText(vexil::ByteRange(aText.data(), aText.size()));
    } catch (const std::runtime_error& failure) {
        aPort.fatalError(aCode, failure.what());
    }
    return document;
}
