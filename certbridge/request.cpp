// SPDX-License-Identifier: MIT
#include "certbridge/request.h"

#include "certbridge/failure_port.h"
#include "vexil/assert.h"
#include "vexil/json/json_tree_builder.h"

#include <cstdint>
#include <string>

using vexil::JsonTreeBuilder;
using vexil::JsonType;
using vexil::JsonValue;

namespace {

constexpr const char* actionName = "action";

void addElement(JsonTreeBuilder& aBuilder, const std::string& aName, const JsonValue& aValue) {
    aBuilder.beginObject();
    aBuilder.addString("name");
    const char* const name = aName.c_str(); // ends at the first NUL
    aBuilder.addString(name);
    aBuilder.addString("value");
    aBuilder.addCopy(aValue);
    aBuilder.end();
}

ValueHolder makeEnvelope(const JsonValue& aRequest) {
    VEXIL_ASSERT(aRequest.getType() == JsonType::Object);
    JsonTreeBuilder builder;
    builder.beginObject();
    builder.addString("request");
    builder.beginArray();
    for (std::uint32_t index = 0; index < aRequest.getSize(); ++index) {
        // Compared as a whole: a name such as "action\0" is not the action.
        const JsonValue* const name = aRequest.getNameAt(index);
        if (name->getType() != JsonType::String || name->getString() == actionName) continue;
        addElement(builder, name->getString(), *aRequest.getValueAt(index));
    }
    builder.end();
    builder.end();
    return builder.take();
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
