#pragma once

#include "vexil/json/json_value.h"

#include <cstddef>
#include <memory>
#include <string>
#include <utility>

// The concrete kinds of values. Private to the JSON library: everybody else creates values through
// the factories of JsonValue.

namespace vexil {

class JsonValueNull final : public JsonValueDefault {
public:
    JsonType getType() const override { return JsonType::Null; }
    JsonValue* clone() const override { return new JsonValueNull; }
};

class JsonValueBoolean final : public JsonValueDefault {
public:
    explicit JsonValueBoolean(bool aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Boolean; }
    bool getBoolean() const override { return mValue; }
    JsonValue* clone() const override { return new JsonValueBoolean(mValue); }

private:
    bool mValue;
};

class JsonValueInteger final : public JsonValueDefault {
public:
    explicit JsonValueInteger(std::int32_t aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Integer; }
    std::int32_t getInteger() const override { return mValue; }
    JsonValue* clone() const override { return new JsonValueInteger(mValue); }

private:
    std::int32_t mValue;
};

class JsonValueFloat final : public JsonValueDefault {
public:
    explicit JsonValueFloat(double aValue) : mValue(aValue) {}
    JsonType getType() const override { return JsonType::Float; }
    double getFloat() const override { return mValue; }
    JsonValue* clone() const override { return new JsonValueFloat(mValue); }

private:
    double mValue;
};

class JsonValueString final : public JsonValueDefault {
public:
    explicit JsonValueString(std::string aText) : mText(std::move(aText)) {}
    JsonType getType() const override { return JsonType::String; }
    const std::string& getString() const override { return mText; }
    JsonValue* clone() const override { return new JsonValueString(mText); }

private:
    std::string mText;
};

/// What arrays and objects share: a growing block of owned children, one slot an element or two a
/// member (name, value), and the walk that destroys a whole tree.
class JsonValueContainer : public JsonValueDefault {
public:
    std::uint32_t getSize() const override { return mCount; }

protected:
    JsonValueContainer() = default;

    /// Makes room for one more entry of @p aSlots slots. On failure nothing has changed.
    void growForOne(std::uint32_t aSlots) {
        if (mCount == mCapacity) grow(aSlots);
    }
    /// Throws std::out_of_range unless there is an entry @p aIndex.
    void checkIndex(std::uint32_t aIndex) const {
        if (aIndex >= mCount) throwOutOfRange(aIndex);
    }
    /// Destroys everything below, in order, without recursion and without allocating. Every final
    /// class calls it in its destructor.
    void destroyChildren();

    std::unique_ptr<JsonValue*[]> mSlots;
    std::uint32_t mCount = 0; ///< entries

private:
    static JsonValueContainer* asFilledContainer(JsonValue* aValue);

    void grow(std::uint32_t aSlots);
    void throwOutOfRange(std::uint32_t aIndex) const;
    bool isObject() const;
    std::size_t slotInOrder(std::size_t aTaken) const;
    JsonValue* enter(JsonValueContainer* aParent);
    JsonValueContainer* leave();
    bool isDone() const;

    union {
        std::uint32_t mCapacity = 0; ///< entries
        std::uint32_t mTaken;        ///< while destroying: children taken so far
    };
};

class JsonValueArray final : public JsonValueContainer {
public:
    ~JsonValueArray() override { destroyChildren(); }
    JsonType getType() const override { return JsonType::Array; }
    const JsonValue* getValueAt(std::uint32_t aIndex) const override { return at(aIndex); }
    JsonValue* getValueAt(std::uint32_t aIndex) override { return at(aIndex); }
    void appendValue(JsonValue* aValue) override {
        growForOne(1);
        mSlots[mCount++] = aValue;
    }
    JsonValue* clone() const override;

private:
    JsonValue* at(std::uint32_t aIndex) const {
        checkIndex(aIndex);
        return mSlots[aIndex];
    }
};

class JsonValueObject final : public JsonValueContainer {
public:
    ~JsonValueObject() override { destroyChildren(); }
    JsonType getType() const override { return JsonType::Object; }
    const JsonValue* getNameAt(std::uint32_t aIndex) const override { return at(aIndex, 0); }
    JsonValue* getNameAt(std::uint32_t aIndex) override { return at(aIndex, 0); }
    const JsonValue* getValueAt(std::uint32_t aIndex) const override { return at(aIndex, 1); }
    JsonValue* getValueAt(std::uint32_t aIndex) override { return at(aIndex, 1); }
    const JsonValue* findFirst(const char* aName) const override { return find(aName); }
    JsonValue* findFirst(const char* aName) override { return find(aName); }
    void appendNameAndValue(JsonValue* aName, JsonValue* aValue) override {
        growForOne(2);
        JsonValue** const slot = &mSlots[std::size_t{2} * mCount++];
        slot[0] = aName;
        slot[1] = aValue;
    }
    JsonValue* clone() const override;

private:
    JsonValue* at(std::uint32_t aIndex, std::uint32_t aPart) const {
        checkIndex(aIndex);
        return mSlots[std::size_t{2} * aIndex + aPart];
    }
    JsonValue* find(const char* aName) const;
};

} // namespace vexil
