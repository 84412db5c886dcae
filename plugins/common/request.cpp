// SPDX-License-Identifier: MIT
#include "request.h"

#include "failure.h"

#include "certbridge/name_value_list.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_parser.h"

#include <cstring>

using vexil::JsonType;
using vexil::JsonValue;

namespace plugins {

namespace {

[[noreturn]] void failMember(const char* aName, const std::string& aProblem) {
    throw Failure(ErrorCode::InvalidRequest, std::string("member \"") + aName + "\" " + aProblem);
}

[[noreturn]] void failRequest() {
    throw Failure(ErrorCode::InvalidRequest, "the request is not a JSON name/value list");
}

void checkType(const char* aName, const JsonValue& aValue, JsonType aType, const char* aExpected) {
    if (aValue.getType() != aType) failMember(aName, std::string("must be ") + aExpected);
}

const std::string& textOf(const char* aName, const JsonValue& aValue, const char* aExpected) {
    checkType(aName, aValue, JsonType::String, aExpected);
    const auto& text = aValue.getString();
    // System calls and back ends would take the text up to the NUL.
    if (text.find('\0') != text.npos) failMember(aName, "must not contain a NUL character");
    return text;
}

std::unique_ptr<JsonValue> parseRequest(const char* aRequest) {
    try {
        return vexil::parseJsonText(vexil::ByteRange(aRequest, std::strlen(aRequest)));
    } catch (const vexil::Exception&) {
        failRequest();
    }
}

} // namespace

Request::Request(const char* aRequest)
    : mDocument(parseRequest(aRequest)), mList(findMember(mDocument.get(), "request")) {
    if (mList == nullptr || mList->getType() != JsonType::Array) failRequest();
}

const JsonValue* Request::find(const char* aName) const {
    const std::string_view wanted(aName);
    for (std::uint32_t i = 0; i < mList->getSize(); ++i) {
        const auto* const element = mList->getValueAt(i);
        const auto* const name = findMember(element, "name");
        const auto* const value = findMember(element, "value");
        if (name == nullptr || name->getType() != JsonType::String || value == nullptr) {
            failRequest();
        }
        if (name->getString() == wanted) return value;
    }
    return nullptr;
}

std::optional<std::string> Request::findText(const char* aName) const {
    const auto* const value = find(aName);
    if (value == nullptr) return std::nullopt;
    return textOf(aName, *value, "a string");
}

std::string Request::getText(const char* aName) const {
    auto text = findNonEmptyText(aName);
    if (!text) failMember(aName, "is missing");
    return *std::move(text);
}

std::optional<std::string> Request::findNonEmptyText(const char* aName) const {
    auto text = findText(aName);
    if (text && text->empty()) failMember(aName, "is empty");
    return text;
}

std::optional<std::int32_t> Request::findInteger(const char* aName, std::int32_t aMinimum,
                                                 std::int32_t aMaximum) const {
    const auto* const value = find(aName);
    if (value == nullptr) return std::nullopt;
    if (value->getType() == JsonType::Integer) {
        const auto number = value->getInteger();
        if (number >= aMinimum && number <= aMaximum) return number;
    }
    failMember(aName, "must be an integer from " + std::to_string(aMinimum) + " to " +
                          std::to_string(aMaximum));
}

bool Request::getFlag(const char* aName) const {
    const auto* const value = find(aName);
    if (value == nullptr) return false;
    checkType(aName, *value, JsonType::Boolean, "true or false");
    return value->getBoolean();
}

std::vector<std::string> Request::findTexts(const char* aName) const {
    constexpr const char* expected = "an array of strings";
    const auto* const value = find(aName);
    if (value == nullptr) return {};
    checkType(aName, *value, JsonType::Array, expected);
    std::vector<std::string> texts;
    texts.reserve(value->getSize());
    for (std::uint32_t i = 0; i < value->getSize(); ++i) {
        texts.push_back(textOf(aName, *value->getValueAt(i), expected));
    }
    return texts;
}

std::optional<Secret> Request::takeSecret(const char* aName) {
    const auto* const value = find(aName);
    if (value == nullptr) return std::nullopt;
    const auto& text = textOf(aName, *value, "a string");
    Secret secret(text);
    // The tree belongs to this request alone, and no value of it is defined const.
    wipe(const_cast<char*>(text.data()), text.size());
    return secret;
}

} // namespace plugins
