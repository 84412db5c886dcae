// SPDX-License-Identifier: MIT
#include "certbridge/reply.h"

#include "certbridge/failure_port.h"
#include "certbridge/parse_document.h"
#include "vexil/assert.h"
#include "vexil/json/json_tree_builder.h"

#include <string>
#include <string_view>

using vexil::JsonTreeBuilder;
using vexil::JsonType;
using vexil::JsonValue;

namespace {

const JsonValue& findList(FailurePort& aPort, const JsonValue& aReply, const char* aListName) {
    const JsonValue* const list = findMember(&aReply, aListName);
    if (!list || list->getType() != JsonType::Array) {
        aPort.fatalErrorFormat(ContentError, "invalid or missing \"%s\" member", aListName);
    }
    return *list;
}

// The contract spells it "erroMessage"; "errorMessage" passes through unchanged.
const char* translateErrorKey(const char* aKey) {
    const std::string_view key(aKey);
    if (key == "errorCode") return "code";
    if (key == "erroMessage") return "message";
    return aKey;
}

// Adds the member of one element to the result. Returns the reason if it is skipped or altered.
std::optional<AlteredElement::Reason> translateElement(const JsonValue& aElement, bool aIsError,
                                                       JsonTreeBuilder& aResult) {
    const JsonValue* const name = findMember(&aElement, "name");
    const JsonValue* const value = findMember(&aElement, "value");
    if (!name) return AlteredElement::NameMissing;
    if (name->getType() != JsonType::String) return AlteredElement::NameNotAString;
    if (!value) return AlteredElement::ValueMissing;

    const std::string& key = name->getString();
    const char* const resultKey = aIsError ? translateErrorKey(key.c_str()) : key.c_str();
    aResult.addString(resultKey); // up to its first NUL
    aResult.addCopy(*value);
    if (key.find('\0') != std::string::npos) return AlteredElement::NameContainsNul;
    return std::nullopt;
}

} // namespace

ReplyResult translateReply(FailurePort& aPort, const Reply& aReply) {
    VEXIL_ASSERT(aReply.text);
    const ReplyMode& mode = aReply.mode;
    ReplyResult reply;
    reply.tree = parseDocument(aPort, EnvironmentError, aReply.text);
    const JsonValue& list = findList(aPort, *reply.tree, mode.listName);
    JsonTreeBuilder document;
    document.beginObject();
    document.addString(mode.resultKey);
    document.beginObject();
    for (std::uint32_t index = 0; index < list.getSize(); ++index) {
        const JsonValue& element = *list.getValueAt(index);
        if (element.getType() != JsonType::Object) {
            aPort.fatalErrorFormat(ContentError, "element %u of \"%s\" is not a structure object",
                                   index, mode.listName);
        }
        const auto reason = translateElement(element, mode.isError, document);
        if (reason && !reply.firstAltered) reply.firstAltered = {index, *reason};
    }
    document.end();
    document.end();
    reply.document = document.take();
    return reply;
}
