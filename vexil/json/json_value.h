#pragma once

#include "vexil/non_copyable.h"

#include <cstdint>
#include <string>

namespace vexil {

/// The kinds of JSON values; the numbers are part of the interface.
enum class JsonType : std::int32_t {
    Null = 0,
    Boolean = 1,
    Integer = 2,
    Float = 3,
    String = 4,
    Array = 5,
    Object = 6,
};

/// One value of a JSON document, and through it the tree below.
///
/// A value never changes once created, except that arrays and objects grow at their end. A
/// container owns its children: what is appended belongs to it, what a query returns is borrowed
/// from it and lives as long as the container. Deleting the root frees the tree, in order, however
/// deep it is, without recursion and without allocating. Values are never copied but by clone().
///
/// An operation that a kind does not have throws UnsupportedFunction with the operation's name and
/// "() not supported" ("getFloat() not supported"), and changes nothing. There is no conversion: an
/// integer does not answer getFloat().
class JsonValue : private NonCopyable {
public:
    virtual ~JsonValue() = default;

    /// The kind, which never changes.
    virtual JsonType getType() const = 0;

    /// Elements of an array, members of an object.
    virtual std::uint32_t getSize() const = 0;
    /// The value of a Boolean.
    virtual bool getBoolean() const = 0;
    /// The value of an Integer.
    virtual std::int32_t getInteger() const = 0;
    /// The value of a Float.
    virtual double getFloat() const = 0;
    /// The bytes of a string, zero bytes included. UTF-8 by convention, which nothing here checks.
    virtual const std::string& getString() const = 0;

    /// @{
    /// The name of member @p aIndex, itself a value. Throws std::out_of_range from getSize() on.
    virtual const JsonValue* getNameAt(std::uint32_t aIndex) const = 0;
    virtual JsonValue* getNameAt(std::uint32_t aIndex) = 0;
    /// @}
    /// @{
    /// Element @p aIndex, or the value of that member. Throws std::out_of_range from getSize() on.
    virtual const JsonValue* getValueAt(std::uint32_t aIndex) const = 0;
    virtual JsonValue* getValueAt(std::uint32_t aIndex) = 0;
    /// @}
    /// @{
    /// The value of the first member whose name has exactly the bytes of the zero-terminated
    /// @p aName, or null. Linear in the number of members.
    virtual const JsonValue* findFirst(const char* aName) const = 0;
    virtual JsonValue* findFirst(const char* aName) = 0;
    /// @}

    /// Adds an element at the end and takes it over. On failure (std::bad_alloc) the array is
    /// unchanged and the value stays with the caller.
    virtual void appendValue(JsonValue* aValue) = 0;
    /// Adds a member at the end and takes name and value over; a name that is there already is not
    /// replaced. On failure the object is unchanged and both stay with the caller.
    virtual void appendNameAndValue(JsonValue* aName, JsonValue* aValue) = 0;

    /// A deep copy, owned by the caller, made without recursion.
    virtual JsonValue* clone() const = 0;

    /// @{
    /// Factories: each returns a new value that the caller owns. They throw std::bad_alloc. A text
    /// given as a pointer is zero-terminated.
    static JsonValue* createNull();
    static JsonValue* createBoolean(bool aValue);
    static JsonValue* createInteger(std::int32_t aValue);
    static JsonValue* createFloat(double aValue);
    static JsonValue* createString(const std::string& aText);
    static JsonValue* createString(const char* aText);
    static JsonValue* createArray();
    static JsonValue* createObject();
    /// @}

protected:
    JsonValue() = default;
};

/// Answers everything but getType() and clone() with UnsupportedFunction; the base of every kind.
class JsonValueDefault : public JsonValue {
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
