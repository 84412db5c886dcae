// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/arena_values.h"
#include "vexil/json/containers.h"
#include "vexil/json/json_value.h"
#include "vexil/json/scalar_values.h"

#include <cstdint>
#include <typeinfo>

// Recognition of the library's classes of values, whose content is accessed without virtual calls.
// Private to the JSON library.

namespace vexil {

/// The class of a value without regard to the owner of its memory.
enum class LibraryClass : std::uint8_t {
    None, ///< a class from outside the library
    Null,
    Boolean,
    Integer,
    Float,
    String,
    Array,
    Object,
};

// Each class has one type_info object, as it is private to the library. The most frequent classes
// are compared first.

inline LibraryClass libraryContainerClassOf(const std::type_info& aType) {
    if (&aType == &typeid(InArena<JsonValueObject>)) return LibraryClass::Object;
    if (&aType == &typeid(InArena<JsonValueArray>)) return LibraryClass::Array;
    if (&aType == &typeid(JsonValueObject)) return LibraryClass::Object;
    if (&aType == &typeid(JsonValueArray)) return LibraryClass::Array;
    if (&aType == &typeid(ArenaRoot<JsonValueObject>)) return LibraryClass::Object;
    if (&aType == &typeid(ArenaRoot<JsonValueArray>)) return LibraryClass::Array;
    return LibraryClass::None;
}

inline LibraryClass libraryClassOf(const JsonValue& aValue) {
    const std::type_info& type = typeid(aValue);
    if (&type == &typeid(InArena<JsonValueString>)) return LibraryClass::String;
    if (&type == &typeid(InArena<JsonValueInteger>)) return LibraryClass::Integer;
    if (&type == &typeid(InArena<JsonValueFloat>)) return LibraryClass::Float;
    if (&type == &typeid(InArena<JsonValueBoolean>)) return LibraryClass::Boolean;
    if (&type == &typeid(InArena<JsonValueNull>)) return LibraryClass::Null;
    const LibraryClass container = libraryContainerClassOf(type);
    if (container != LibraryClass::None) return container;
    if (&type == &typeid(JsonValueString)) return LibraryClass::String;
    if (&type == &typeid(JsonValueInteger)) return LibraryClass::Integer;
    if (&type == &typeid(JsonValueFloat)) return LibraryClass::Float;
    if (&type == &typeid(JsonValueBoolean)) return LibraryClass::Boolean;
    if (&type == &typeid(JsonValueNull)) return LibraryClass::Null;
    return LibraryClass::None;
}

/// A value of the library's class @p Kind or a class derived from it, which overrides no accessor.
template <class Kind>
const Kind& as(const JsonValue& aValue) {
    return static_cast<const Kind&>(aValue);
}

/// Whether @p aValue is a string in an arena; false for null.
inline bool isArenaString(const JsonValue* aValue) {
    return aValue != nullptr && &typeid(*aValue) == &typeid(InArena<JsonValueString>);
}

/// @p aValue as a container of the library, or null for any other value and for null.
inline const JsonValueContainer* asLibraryContainer(const JsonValue* aValue) {
    if (aValue == nullptr || libraryContainerClassOf(typeid(*aValue)) == LibraryClass::None) {
        return nullptr;
    }
    return static_cast<const JsonValueContainer*>(aValue);
}

} // namespace vexil
