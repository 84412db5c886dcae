#pragma once

#include "vexil/json/json_value.h"

#include <memory>

// Member lookup, and documents made of name/value lists: arrays of objects with the members "name"
// (a string) and then "value" (anything). Names and texts are NUL-terminated UTF-8.
//
// Nothing is checked here: the values' own exceptions pass through, and so does std::bad_alloc.
// After a failure the object or array is as it was. A value given as a pointer is then destroyed;
// one given in a holder stays there.

/// Owns at most one value.
using ValueHolder = std::unique_ptr<vexil::JsonValue>;

/// The value of the object's first member of exactly this name, borrowed; null if there is none or
/// @p aValue is null or no object. A name that holds a NUL is never found.
const vexil::JsonValue* findMember(const vexil::JsonValue* aValue, const char* aName);

/// Adds a member at the end of the object and empties @p aValueHolder.
void appendMember(ValueHolder& aObjectHolder, const char* aName, ValueHolder& aValueHolder);
/// Adds a member whose value is the new @p aValue, which the caller gives up.
void appendMember(ValueHolder& aObjectHolder, const char* aName, vexil::JsonValue* aValue);

/// Adds an element with this name and the new @p aValue, which the caller gives up. The element is
/// complete before the array sees it.
void appendNameValue(ValueHolder& aArrayHolder, const char* aName, vexil::JsonValue* aValue);
/// Adds an element with this name and a text.
void appendNameValue(ValueHolder& aArrayHolder, const char* aName, const char* aText);
