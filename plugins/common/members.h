// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace plugins {

/// Names with values, in the order in which the caller receives them. Texts may contain bytes that
/// are not UTF-8, as certificates do: each of those becomes U+FFFD. All operations throw
/// std::bad_alloc.
class Members {
public:
    void addText(const char* aName, std::string_view aText);
    void addInteger(const char* aName, std::int32_t aNumber);
    void addBoolean(const char* aName, bool aValue);
    void addNull(const char* aName);
    void addTexts(const char* aName, const std::vector<std::string>& aTexts);
    /// Adds an array of objects, one for each of @p aObjects.
    void addObjects(const char* aName, std::vector<Members> aObjects);

    /// Returns an array of objects with "name" and "value", one per member. No member is left.
    std::unique_ptr<vexil::JsonValue> takeList();
    /// Returns an object with these members. No member is left.
    std::unique_ptr<vexil::JsonValue> takeObject();

private:
    struct Member {
        const char* name; // a literal
        std::unique_ptr<vexil::JsonValue> value;
    };

    void add(const char* aName, vexil::JsonValue* aValue);

    std::vector<Member> mMembers;
};

} // namespace plugins
