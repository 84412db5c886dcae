// SPDX-License-Identifier: MIT
#include "certbridge/request.h"

#include "certbridge/failure_port.h"
#include "vexil/assert.h"

#include <cstdint>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

constexpr const char* actionName = "action";

ValueHolder makeRequestList(const JsonValue& aRequest) {
    VEXIL_ASSERT(aRequest.getType() == JsonType::Object);
    ValueHolder list(JsonValue::createArray());
    for (std::uint32_t index = 0; index < aRequest.getSize(); ++index) {
        // Compared as a whole: a name such as "action\0" is not the action.
        const JsonValue* const name = aRequest.getNameAt(index);
        if (name->getType() != JsonType::String || name->getString() == actionName) continue;
        appendNameValue(list, name->getString().c_str(), aRequest.getValueAt(index)->clone());
    }
    return list;
}

ValueHolder makeEnvelope(const JsonValue& aRequest) {
    ValueHolder list = makeRequestList(aRequest);
    ValueHolder envelope(JsonValue::createObject());
    appendMember(envelope, "request", list);
    return envelope;
}

} // namespace

void validateRequest(FailurePort& aPort, const JsonValue& aRequest) {
    if (aRequest.getType() != JsonType::Object) {
        aPort.fatalError(ContentError, "top-level object must be a structure");
    }
    const JsonValue* const action = findMember(&aRequest, actionName);
    if (!action || action->getType() != JsonType::String) {
        aPort.fatalError(ContentError, "missing or invalid \"action\" member");
    }
    if (action->getString() != "getCertificate") {
        aPort.fatalError(ContentError, "invalid \"action\" member");
    }
}

PluginRequest::PluginRequest(const JsonValue& aRequest)
    : envelope(makeEnvelope(aRequest)), stream(&text), writer(stream, 0) {
    writer.write(*envelope);
}
