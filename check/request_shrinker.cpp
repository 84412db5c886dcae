// SPDX-License-Identifier: MIT
#include "check/request_shrinker.h"

#include "vexil/assert.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

using Candidates = std::vector<ValueHolder>;

// The first position from @p aPosition at which a character of the UTF-8 text begins or the text
// ends.
std::size_t findCharacter(const std::string& aText, std::size_t aPosition) {
    while (aPosition < aText.size() &&
           (static_cast<unsigned char>(aText[aPosition]) & 0xC0U) == 0x80U) {
        ++aPosition;
    }
    return aPosition;
}

// Empty, half of the text, and all but its first or its last character.
std::vector<std::string> simplifyText(const std::string& aText) {
    std::vector<std::string> texts;
    if (aText.empty()) return texts;
    texts.emplace_back();
    const auto half = findCharacter(aText, aText.size() / 2);
    const auto second = findCharacter(aText, 1);
    auto last = aText.size() - 1;
    while (findCharacter(aText, last) != last) --last;
    for (const auto end : {half, last}) {
        if (end > 0 && end < aText.size()) texts.push_back(aText.substr(0, end));
    }
    for (const auto begin : {half, second}) {
        if (begin > 0 && begin < aText.size()) texts.push_back(aText.substr(begin));
    }
    return texts;
}

// NOLINTBEGIN(misc-no-recursion): a random request has only a few levels.
Candidates simplify(const JsonValue& aValue);

// A copy of a container without the entry @p aIndex, or with @p aName and @p aValue instead of it.
// A null name leaves the name unchanged.
ValueHolder copyWith(const JsonValue& aContainer, std::uint32_t aIndex, const std::string* aName,
                     const JsonValue* aValue) {
    const bool isArray = aContainer.getType() == JsonType::Array;
    ValueHolder copy(isArray ? JsonValue::createArray() : JsonValue::createObject());
    for (std::uint32_t index = 0; index < aContainer.getSize(); ++index) {
        const bool isChanged = index == aIndex;
        if (isChanged && !aValue) continue;
        ValueHolder value((isChanged ? aValue : aContainer.getValueAt(index))->clone());
        if (isArray) {
            copy->appendValue(value.get());
            static_cast<void>(value.release());
        } else {
            const bool isRenamed = isChanged && aName;
            const std::string& name = isRenamed ? *aName : aContainer.getNameAt(index)->getString();
            appendMember(copy, name.c_str(), value);
        }
    }
    return copy;
}

// First without an entry, which simplifies most.
Candidates simplifyContainer(const JsonValue& aContainer) {
    Candidates candidates;
    const std::uint32_t size = aContainer.getSize();
    for (std::uint32_t index = 0; index < size; ++index) {
        candidates.push_back(copyWith(aContainer, index, nullptr, nullptr));
    }
    for (std::uint32_t index = 0; index < size; ++index) {
        const JsonValue& value = *aContainer.getValueAt(index);
        for (const ValueHolder& simpler : simplify(value)) {
            candidates.push_back(copyWith(aContainer, index, nullptr, simpler.get()));
        }
        if (aContainer.getType() != JsonType::Object) continue;
        for (const auto& name : simplifyText(aContainer.getNameAt(index)->getString())) {
            candidates.push_back(copyWith(aContainer, index, &name, &value));
        }
    }
    return candidates;
}

// Each candidate is smaller than the value, so that shrinking ends.
Candidates simplify(const JsonValue& aValue) {
    Candidates candidates;
    if (aValue.getType() == JsonType::Null) return candidates;
    candidates.emplace_back(JsonValue::createNull());
    if (aValue.getType() == JsonType::String) {
        for (const auto& text : simplifyText(aValue.getString())) {
            candidates.emplace_back(JsonValue::createString(text));
        }
    } else if (aValue.getType() == JsonType::Array || aValue.getType() == JsonType::Object) {
        for (ValueHolder& simpler : simplifyContainer(aValue)) {
            candidates.push_back(std::move(simpler));
        }
    }
    return candidates;
}
// NOLINTEND(misc-no-recursion)

} // namespace

ValueHolder shrinkRequest(const JsonValue& aRequest, int aMaxTests, const FailureTest& aFails) {
    VEXIL_ASSERT(aRequest.getType() == JsonType::Object);
    ValueHolder smallest(aRequest.clone());
    for (bool isSimplified = true; isSimplified;) {
        isSimplified = false;
        for (ValueHolder& candidate : simplifyContainer(*smallest)) {
            if (aMaxTests-- <= 0) return smallest;
            if (!aFails(*candidate)) continue;
            smallest = std::move(candidate);
            isSimplified = true;
            break;
        }
    }
    return smallest;
}
