// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_value.h"

#include <memory>

// Member lookup, and documents made of name/value lists: arrays of objects with the members "name"
// (a string) and "value" (of any type), in this order. Names and texts are NUL-terminated UTF-8. No
// argument is null or an empty holder, except that of findMember().
//
// No kind of value is checked: exceptions of the values (UnsupportedFunction for a value of the
// wrong kind, std::length_error for a full container) and std::bad_alloc pass through. After a
// failure the object or array is unchanged; a value passed as a pointer has been destroyed, one
// passed in a holder is still there.

/// Owns at most one value.
using ValueHolder = std::unique_ptr<vexil::JsonValue>;

/// Returns the value of the object's first member with exactly this name, borrowed; null if there
/// is none, or if @p aValue is null or not an object. A name that contains a NUL is never found.
[[nodiscard]] const vexil::JsonValue* findMember(const vexil::JsonValue* aValue, const char* aName);

/// Appends a member to the object and empties @p aValueHolder.
void appendMember(ValueHolder& aObjectHolder, const char* aName, ValueHolder& aValueHolder);
/// Appends a member; takes ownership of @p aValue.
void appendMember(ValueHolder& aObjectHolder, const char* aName, vexil::JsonValue* aValue);

/// Appends an element with this name and value to the array; takes ownership of @p aValue. The
/// element is complete before it is appended.
void appendNameValue(ValueHolder& aArrayHolder, const char* aName, vexil::JsonValue* aValue);
/// Appends an element with this name and a string value.
void appendNameValue(ValueHolder& aArrayHolder, const char* aName, const char* aText);
