#include "check/reply_check.h"

#include "check/check_failure.h"
#include "check/readable_text.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_value.h"
#include "vexil/unicode_strings.h"

#include <cstdint>
#include <cstring>
#include <string_view>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

std::string faultOfElement(const JsonValue& aElement) {
    const JsonValue* const name = findMember(&aElement, "name");
    if (!name) return "has no \"name\"";
    if (name->getType() != JsonType::String) return "has a \"name\" that is no string";
    if (!findMember(&aElement, "value")) return "has no \"value\"";
    if (name->getString().find('\0') != std::string::npos) {
        return "has a name with a NUL character, where it is cut";
    }
    return {};
}

void checkElements(const JsonValue& aList, const char* aListName) {
    for (std::uint32_t index = 0; index < aList.getSize(); ++index) {
        const auto fault = faultOfElement(*aList.getValueAt(index));
        if (fault.empty()) continue;
        throw CheckFailure("element " + std::to_string(index) + " of \"" + aListName + "\" " +
                           fault + "; it does not reach the caller as it is");
    }
}

// The value of the first element of this name, or null.
const JsonValue* findElement(const JsonValue& aList, std::string_view aName) {
    for (std::uint32_t index = 0; index < aList.getSize(); ++index) {
        const JsonValue* const element = aList.getValueAt(index);
        if (findMember(element, "name")->getString() == aName) return findMember(element, "value");
    }
    return nullptr;
}

void checkErrorList(const JsonValue& aList) {
    const JsonValue* const code = findElement(aList, "errorCode");
    if (!code || (code->getType() != JsonType::Integer && code->getType() != JsonType::Float)) {
        throw CheckFailure("the error reply has no element \"errorCode\" with a number");
    }
    const JsonValue* const message = findElement(aList, "erroMessage");
    if (!message || message->getType() != JsonType::String) {
        throw CheckFailure("the error reply has no element \"erroMessage\", spelt so, with a text");
    }
}

void checkText(const Reply& aReply) {
    const ValueHolder tree = parseReply(aReply.text);
    makeResult(*tree, aReply.mode);
    const JsonValue& list = *findMember(tree.get(), aReply.mode.listName);
    checkElements(list, aReply.mode.listName);
    if (aReply.mode.isError) checkErrorList(list);
}

bool isUtf8(const char* aText) {
    try {
        vexil::UnicodeString32::checkUtf8(aText, std::strlen(aText));
        return true;
    } catch (const vexil::Exception&) {
        return false;
    }
}

} // namespace

std::string checkReply(const PluginTexts& aTexts) {
    const Reply reply = chooseReply(aTexts);
    try {
        checkText(reply);
    } catch (const CheckFailure& failure) {
        const auto* const kind =
            isUtf8(reply.text) ? "; the reply is " : "; the reply, not UTF-8, is ";
        throw CheckFailure(failure.what() + (kind + quotedExcerpt(reply.text)));
    }
    const bool isNoted = aTexts.error && aTexts.response;
    return isNoted ? "both texts were set; certbridge looks at the error only" : "";
}
