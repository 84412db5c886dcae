// SPDX-License-Identifier: MIT
#include "members.h"

#include "utf8_text.h"

#include "certbridge/name_value_list.h"

#include <utility>

using vexil::JsonValue;

namespace plugins {

namespace {

void appendElement(JsonValue& aArray, ValueHolder aElement) {
    aArray.appendValue(aElement.get());
    aElement.release(); // owned by the array
}

} // namespace

void Members::add(const char* aName, JsonValue* aValue) {
    ValueHolder value(aValue);
    mMembers.push_back({aName, std::move(value)});
}

void Members::addText(const char* aName, std::string_view aText) {
    add(aName, JsonValue::createString(toValidUtf8(aText)));
}

void Members::addInteger(const char* aName, std::int32_t aNumber) {
    add(aName, JsonValue::createInteger(aNumber));
}

void Members::addBoolean(const char* aName, bool aValue) {
    add(aName, JsonValue::createBoolean(aValue));
}

void Members::addNull(const char* aName) {
    add(aName, JsonValue::createNull());
}

void Members::addTexts(const char* aName, const std::vector<std::string>& aTexts) {
    ValueHolder array(JsonValue::createArray());
    for (const auto& text : aTexts) {
        appendElement(*array, ValueHolder(JsonValue::createString(toValidUtf8(text))));
    }
    add(aName, array.release());
}

void Members::addObjects(const char* aName, std::vector<Members> aObjects) {
    ValueHolder array(JsonValue::createArray());
    for (auto& object : aObjects) appendElement(*array, object.takeObject());
    add(aName, array.release());
}

std::unique_ptr<JsonValue> Members::takeList() {
    ValueHolder list(JsonValue::createArray());
    for (auto& member : std::exchange(mMembers, {})) {
        appendNameValue(list, member.name, member.value.release());
    }
    return list;
}

std::unique_ptr<JsonValue> Members::takeObject() {
    ValueHolder object(JsonValue::createObject());
    for (auto& member : std::exchange(mMembers, {})) {
        appendMember(object, member.name, member.value);
    }
    return object;
}

} // namespace plugins
