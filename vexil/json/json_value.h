// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"

#include <cstdint>
#include <string>

namespace vexil {

/// Kinds of JSON values. The numbers are part of the interface.
enum class JsonType : std::int32_t {
    Null = 0,
    Boolean = 1,
    Integer = 2,
    Float = 3,
    String = 4,
    Array = 5,
    Object = 6,
};

/// A value of a JSON document and, if it is an array or object, the tree of its descendants.
///
/// A value never changes once it has been created, except that arrays and objects grow at the end.
/// A container owns its children: appending a value transfers its ownership, and a value returned
/// by a query is borrowed and lives as long as the container. Deleting the root destroys the tree:
/// the elements of an array in order, the names of an object in order and then its values in order.
/// Destruction does not recurse and does not allocate, however deep the tree is. Values cannot be
/// copied except by clone(). One thread at a time may use a tree, unless all only query it.
///
/// Each kind supports only its own operations. Any other operation throws UnsupportedFunction with
/// the name of the operation and "() not supported" ("getFloat() not supported") and changes
/// nothing. There is no conversion: an Integer does not support getFloat().
///
/// Classes outside the library may derive from JsonValue or JsonValueDefault; only their accessors
/// are used, never their type. While one of their operations runs, it must not modify the tree that
/// the value belongs to, and while the tree is being written, it must not use the writer or its
/// stream. It must not access the target string of a StringOutputStream either, whose contents and
/// length are unspecified until the writer returns. Builds with VEXIL_ASSERTIONS abort if it
/// changes one of them.
class VEXIL_API JsonValue : private NonCopyable {
public:
    virtual ~JsonValue() = default;

    /// The kind, which never changes. Supported by every kind.
    virtual JsonType getType() const = 0;

    /// Number of elements of an Array or of members of an Object, at most 2147483647.
    virtual std::uint32_t getSize() const = 0;
    /// The value of a Boolean.
    virtual bool getBoolean() const = 0;
    /// The value of an Integer.
    virtual std::int32_t getInteger() const = 0;
    /// The value of a Float.
    virtual double getFloat() const = 0;
    /// The bytes of a String, which may include zero bytes. They should be UTF-8, which is checked
    /// only when the string is written. The reference is valid as long as the value.
    virtual const std::string& getString() const = 0;

    /// @{
    /// The name of member @p aIndex of an Object, itself a value; borrowed. Throws
    /// std::out_of_range, with the standard library's message for a vector, if @p aIndex is not
    /// less than getSize().
    virtual const JsonValue* getNameAt(std::uint32_t aIndex) const = 0;
    virtual JsonValue* getNameAt(std::uint32_t aIndex) = 0;
    /// @}
    /// @{
    /// Element @p aIndex of an Array, or the value of member @p aIndex of an Object; borrowed.
    /// Throws std::out_of_range as getNameAt() does.
    virtual const JsonValue* getValueAt(std::uint32_t aIndex) const = 0;
    virtual JsonValue* getValueAt(std::uint32_t aIndex) = 0;
    /// @}
    /// @{
    /// The value of the first member of an Object whose name consists of exactly the bytes of the
    /// zero-terminated @p aName; borrowed. Null if there is none. Takes time linear in the number
    /// of members. Throws UnsupportedFunction "getString() not supported" at a name that is not a
    /// String.
    virtual const JsonValue* findFirst(const char* aName) const = 0;
    virtual JsonValue* findFirst(const char* aName) = 0;
    /// @}

    /// Appends an element to an Array and takes ownership of it. Throws std::bad_alloc, and
    /// std::length_error "JsonValue: too many entries" beyond 2147483647 entries; the array is then
    /// unchanged and the value stays with the caller.
    virtual void appendValue(JsonValue* aValue) = 0;
    /// Appends a member to an Object and takes ownership of its name and its value. A member that
    /// has this name already is not replaced. Throws as appendValue() does; the object is then
    /// unchanged and both values stay with the caller.
    virtual void appendNameAndValue(JsonValue* aName, JsonValue* aValue) = 0;

    /// Returns a deep copy, owned by the caller. Supported by every kind; does not recurse for the
    /// library's classes. Throws std::bad_alloc, and whatever the clone() of a class outside the
    /// library throws.
    [[nodiscard]] virtual JsonValue* clone() const = 0;

    /// @{
    /// Create a new value, owned by the caller. They throw std::bad_alloc. The factories of strings
    /// copy the text; a pointer is read up to the terminating zero byte.
    [[nodiscard]] static JsonValue* createNull();
    [[nodiscard]] static JsonValue* createBoolean(bool aValue);
    [[nodiscard]] static JsonValue* createInteger(std::int32_t aValue);
    [[nodiscard]] static JsonValue* createFloat(double aValue);
    [[nodiscard]] static JsonValue* createString(const std::string& aText);
    [[nodiscard]] static JsonValue* createString(const char* aText);
    [[nodiscard]] static JsonValue* createArray();
    [[nodiscard]] static JsonValue* createObject();
    /// @}

protected:
    JsonValue() = default;
};

/// Base of all kinds: throws UnsupportedFunction for every operation except getType() and clone().
class VEXIL_API JsonValueDefault : public JsonValue {
public:
    std::uint32_t getSize() const override;
    bool getBoolean() const override;
    std::int32_t getInteger() const override;
    double getFloat() const override;
    const std::string& getString() const override;
    const JsonValue* getNameAt(std::uint32_t aIndex) const override;
    JsonValue* getNameAt(std::uint32_t aIndex) override;
    const JsonValue* getValueAt(std::uint32_t aIndex) const override;
    JsonValue* getValueAt(std::uint32_t aIndex) override;
    const JsonValue* findFirst(const char* aName) const override;
    JsonValue* findFirst(const char* aName) override;
    void appendValue(JsonValue* aValue) override;
    void appendNameAndValue(JsonValue* aName, JsonValue* aValue) override;
};

} // namespace vexil
