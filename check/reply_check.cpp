// SPDX-License-Identifier: MIT
#include "check/reply_check.h"

#include "check/readable_text.h"
#include "check/throwing_port.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_parser.h"
#include "vexil/json/json_value.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"
#include "vexil/unicode_strings.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <vector>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

ThrowingPort port;

std::string describe(const AlteredElement& aElement, const char* aListName) {
    constexpr const char* reasons[] = {"has no \"name\"", "has a \"name\" that is not a string",
                                       "has no \"value\"",
                                       "has a name that is cut at its NUL character"};
    return "element " + std::to_string(aElement.index) + " of \"" + aListName + "\" " +
           reasons[aElement.reason] + "; it does not reach the caller unchanged";
}

// Callers read the members "code" and "message" of the error document.
void checkErrorDocument(const JsonValue& aDocument) {
    const JsonValue* const error = findMember(&aDocument, errorMode.resultKey);
    const JsonValue* const code = findMember(error, "code");
    if (!code || (code->getType() != JsonType::Integer && code->getType() != JsonType::Float)) {
        throw CheckFailure("the error reply has no element \"errorCode\" with a number");
    }
    const JsonValue* const message = findMember(error, "message");
    if (!message || message->getType() != JsonType::String) {
        throw CheckFailure("the error reply has no element \"erroMessage\" (sic) with a string");
    }
}

// The number as written by the plugin, as far as a double preserves it.
std::string formatExactly(double aNumber) {
    std::array<char, 32> text;
    const auto end = std::to_chars(text.data(), text.data() + text.size(), aNumber).ptr;
    return {text.data(), end};
}

// Callers receive numbers with six significant digits, unless they are 32-bit integers.
void checkNumber(const JsonValue& aNumber) {
    const std::string text = vexil::writeJsonText(aNumber);
    const ValueHolder received = vexil::parseJsonText(vexil::ByteRange(text));
    if (received->getFloat() == aNumber.getFloat()) return;
    throw CheckFailure("the number " + formatExactly(aNumber.getFloat()) +
                       " reaches the caller as " + text + "; send it as a string");
}

// Not recursive: a reply may be nested as deeply as memory allows.
void checkNumbers(const JsonValue& aDocument) {
    std::vector<const JsonValue*> pending{&aDocument};
    while (!pending.empty()) {
        const JsonValue& value = *pending.back();
        pending.pop_back();
        const JsonType type = value.getType();
        if (type == JsonType::Float) checkNumber(value);
        if (type != JsonType::Array && type != JsonType::Object) continue;
        for (std::uint32_t index = 0; index < value.getSize(); ++index) {
            pending.push_back(value.getValueAt(index));
        }
    }
}

void checkTranslation(const Reply& aReply) {
    const ReplyResult result = translateReply(port, aReply);
    if (result.firstAltered) {
        throw CheckFailure(describe(*result.firstAltered, aReply.mode.listName));
    }
    if (aReply.mode.isError) checkErrorDocument(*result.document);
    checkNumbers(*result.document);
    port.printJson(*result.document);
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
    const Reply reply = selectReply(port, aTexts);
    try {
        checkTranslation(reply);
    } catch (const CheckFailure& failure) {
        const auto* const kind =
            isUtf8(reply.text) ? "; the reply is " : "; the reply, not UTF-8, is ";
        throw CheckFailure(failure.what() + (kind + quotedExcerpt(reply.text)));
    }
    const bool isNoted = aTexts.error && aTexts.response;
    return isNoted ? "both texts were set; certbridge reads only the error" : "";
}
