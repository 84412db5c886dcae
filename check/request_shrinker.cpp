// SPDX-License-Identifier: MIT
#include "check/request_shrinker.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using vexil::JsonType;
using vexil::JsonValue;

namespace {

using Candidates = std::vector<ValueHolder>;

void addSimplerTexts(const std::string& aText, std::vector<std::string>& aTexts) {
    if (aText.empty()) return;
    aTexts.emplace_back();
    const auto half = aText.size() / 2;
    if (half == 0) return;
    aTexts.push_back(aText.substr(0, half));
    aTexts.push_back(aText.substr(half));
}

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
        std::vector<std::string> names;
        addSimplerTexts(aContainer.getNameAt(index)->getString(), names);
        for (const std::string& name : names) {
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
        std::vector<std::string> texts;
        addSimplerTexts(aValue.getString(), texts);
        for (const auto& text : texts) candidates.emplace_back(JsonValue::createString(text));
    } else if (aValue.getType() == JsonType::Array || aValue.getType() == JsonType::Object) {
        for (ValueHolder& simpler : simplifyContainer(aValue)) {
            candidates.push_back(std::move(simpler));
        }
    }
    return candidates;
}

} // namespace

ValueHolder shrinkRequest(const JsonValue& aRequest, int aMaxTests, const FailureTest& aFails) {
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
