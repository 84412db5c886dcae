#pragma once

#include "vexil/json/json_value.h"
#include "vexil/json/tree_pool.h"

#include <cstddef>
#include <cstdint>

// The concrete kinds of values. Private to the JSON library: everybody else creates values through

namespace vexil {

/// What arrays and objects share: a growing block of owned children, one slot an element or two a
/// member (name, value), and the walk that destroys a whole tree.
class JsonValueContainer : public JsonValueDefault {
public:
    std::uint32_t getSize() const override { return mCount; }

    /// The value as a container of this library; null for any other, those of classes from outside
    /// included.
    static const JsonValueContainer* from(const JsonValue* aValue);

    /// The children: the elements, or name and value of each member in turn. Valid until the next
    /// append.
    JsonValue* const* getSlots() const { return mSlots; }

protected:
    JsonValueContainer() = default;
    /// A container of children in a pool. The slots belong to the pool as well. A null @p
    /// aPlainPool says that something below needs to be destroyed.
    JsonValueContainer(JsonValue** aSlots, std::uint32_t aCount, TreePool* aPlainPool)
        : mSlots(aSlots), mCount(aCount), mPlainPool(aPlainPool) {}
    ~JsonValueContainer() override {
        if (mCapacity != 0) delete[] mSlots;
    }

    /// Makes room for one more entry of @p aSlots slots. On failure nothing has changed.
    void growForOne(std::uint32_t aSlots) {
        if (mCount >= mCapacity) grow(aSlots);
    }
    /// Throws std::out_of_range unless there is an entry @p aIndex.
    void checkIndex(std::uint32_t aIndex) const {
        if (aIndex >= mCount) throwOutOfRange(aIndex);
    }
    /// Destroys everything below, in order, without recursion and without allocating. Every kind of
    /// container calls it in its destructor.
    void destroyChildren() {
        if (needsWalk()) walkAndDestroy();
    }

    JsonValue** mSlots = nullptr;
    std::uint32_t mCount = 0; ///< entries

private:
    void grow(std::uint32_t aSlots);
    void throwOutOfRange(std::uint32_t aIndex) const;
    bool isObject() const { return getType() == JsonType::Object; }

    bool needsWalk() const {
        return mCount != 0 && (mPlainPool == nullptr || mPlainPool->hasGrown());
    }
    void walkAndDestroy();
    static JsonValueContainer* asWalked(JsonValue* aValue);
    std::size_t slotInOrder(std::size_t aTaken) const;
    JsonValue* enter(JsonValueContainer* aParent);
    JsonValueContainer* leave();
    bool isDone() const;

    std::uint32_t mCapacity = 0; ///< entries; 0: there are no slots, or they belong to a pool
    union {
        TreePool* mPlainPool = nullptr; ///< set if nothing below needs to be destroyed
        std::size_t mTaken;             ///< on the walk: children taken so far
    };
};

class JsonValueArray : public JsonValueContainer {
public:
    JsonValueArray() = default;
    JsonValueArray(JsonValue** aSlots, std::uint32_t aCount, TreePool* aPlainPool)
        : JsonValueContainer(aSlots, aCount, aPlainPool) {}
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

class JsonValueObject : public JsonValueContainer {
public:
    JsonValueObject() = default;
    JsonValueObject(JsonValue** aSlots, std::uint32_t aCount, TreePool* aPlainPool)
        : JsonValueContainer(aSlots, aCount, aPlainPool) {}
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
