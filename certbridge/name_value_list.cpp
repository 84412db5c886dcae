// SPDX-License-Identifier: MIT
#include "certbridge/name_value_list.h"

#include "vexil/assert.h"

#include <cstdint>
#include <string>
#include <string_view>

using vexil::JsonType;
using vexil::JsonValue;

const JsonValue* findMember(const JsonValue* aValue, const char* aName) {
    if (!aValue || aValue->getType() != JsonType::Object) return nullptr;
    const std::string_view name(aName);
    const auto count = aValue->getSize();
    for (std::uint32_t index = 0; index < count; ++index) {
        if (aValue->getNameAt(index)->getString() == name) return aValue->getValueAt(index);
    }
    return nullptr;
}

void appendMember(ValueHolder& aObjectHolder, const char* aName, ValueHolder& aValueHolder) {
    VEXIL_ASSERT(aObjectHolder && aName && aValueHolder);
    ValueHolder name(JsonValue::createString(aName));
    aObjectHolder->appendNameAndValue(name.get(), aValueHolder.get());
    // Only now are both owned by the object: had it thrown, the holders would still own them.
    name.release();
    aValueHolder.release();
}

void appendMember(ValueHolder& aObjectHolder, const char* aName, JsonValue* aValue) {
    ValueHolder value(aValue);
    appendMember(aObjectHolder, aName, value);
}

void appendNameValue(ValueHolder& aArrayHolder, const char* aName, JsonValue* aValue) {
    VEXIL_ASSERT(aArrayHolder);
    ValueHolder value(aValue);
    ValueHolder element(JsonValue::createObject());
    appendMember(element, "name", JsonValue::createString(aName));
    appendMember(element, "value", value);
    aArrayHolder->appendValue(element.get());
    element.release();
}

void appendNameValue(ValueHolder& aArrayHolder, const char* aName, const char* aText) {
    appendNameValue(aArrayHolder, aName, JsonValue::createString(aText));
}
