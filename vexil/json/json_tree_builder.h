// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_value.h"
#include "vexil/non_copyable.h"

#include <memory>
#include <string_view>

namespace vexil {

/// Builds an array or object with all its descendants from the outside inwards, in shared blocks of
/// memory and much faster than value by value. The result is like any other tree. Values appended
/// to it later have separate memory. All operations throw std::bad_alloc, after which the builder
/// can only be destroyed. Private to this project, unlike the factories of JsonValue.
class JsonTreeBuilder : private NonCopyable {
public:
    JsonTreeBuilder();
    /// Destroys all values that take() has not returned.
    ~JsonTreeBuilder();

    /// @{
    /// Begin a container: the root, an element of the innermost array, or the value of a member.
    void beginArray();
    void beginObject();
    /// @}
    /// Completes the innermost container. Throws std::length_error "JsonValue: too many entries"
    /// for more than 2147483647 entries.
    void end();

    /// Adds a string to the innermost container: an element, or the name or value of a member.
    void addString(std::string_view aText);
    /// Adds what aValue.clone() returns, likewise. Throws whatever the clone() of a class from
    /// outside the library throws.
    void addCopy(const JsonValue& aValue);

    /// Returns the tree after the end() of its root.
    [[nodiscard]] std::unique_ptr<JsonValue> take();

private:
    struct State;
    std::unique_ptr<State> mState;
};

} // namespace vexil
