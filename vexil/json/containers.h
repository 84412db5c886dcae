// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/json/arena.h"
#include "vexil/json/json_value.h"

#include <cstddef>
#include <cstdint>

// The classes of arrays and objects. Private to the JSON library: all other code creates them
// through the factories of JsonValue.

namespace vexil {

/// Maximum number of entries of an array or object, appended or parsed.
constexpr std::uint32_t maxEntryCount = 0x7FFFFFFF;

/// Returns @p aCount, or throws std::length_error "JsonValue: too many entries" above
/// maxEntryCount.
[[nodiscard]] std::uint32_t checkedEntryCount(std::size_t aCount);

/// Common part of arrays and objects: a growing block of owned children, one slot per element or
/// two per member (name, value), and the destruction of a whole tree.
class JsonValueContainer : public JsonValueDefault {
public:
    std::uint32_t getSize() const final { return mCount; }

    /// The children: the elements, or the name and value of each member in turn. Valid until the
    /// next append.
    JsonValue* const* getSlots() const { return mSlots; }

protected:
    JsonValueContainer() : JsonValueContainer(nullptr, 0, nullptr) {}
    /// A container in @p aArena, to which its children and the slots belong as well; or an empty
    /// one without an arena.
    JsonValueContainer(JsonValue** aSlots, std::uint32_t aCount, Arena* aArena)
        : mSlots(aSlots), mCount(aCount), mCapacity(0), mIsBeingDestroyed(0), mArena(aArena) {
        VEXIL_ASSERT(aCount <= maxEntryCount);
        VEXIL_ASSERT(aCount == 0 || aSlots != nullptr);
    }
    ~JsonValueContainer() override {
        if (mCapacity != 0) delete[] mSlots;
    }

    /// Provides capacity for one more entry of @p aSlotsPerEntry slots. Throws std::bad_alloc or
    /// std::length_error, with nothing changed.
    void growForOne(std::uint32_t aSlotsPerEntry) {
        VEXIL_ASSERT(!mIsBeingDestroyed);
        if (mCount >= mCapacity) grow(aSlotsPerEntry);
    }
    /// Throws std::out_of_range unless @p aIndex is less than the number of entries.
    void checkIndex(std::uint32_t aIndex) const {
        VEXIL_ASSERT(!mIsBeingDestroyed);
        if (aIndex >= mCount) throwOutOfRange(aIndex);
    }
    /// Destroys all descendants in their documented order, without recursion and without
    /// allocating. The destructor of each container class must call it.
    void destroyChildren() {
        if (needsTraversal()) destroyDescendants();
    }

    JsonValue** mSlots;
    std::uint32_t mCount; ///< entries

private:
    void grow(std::uint32_t aSlotsPerEntry);
    void throwOutOfRange(std::uint32_t aIndex) const;
    bool isObject() const { return getType() == JsonType::Object; }

    /// Whether a descendant has to be destroyed before the memory is released.
    bool needsTraversal() const {
        if (mCount == 0) return false;
        VEXIL_ASSERT(!mIsBeingDestroyed);
        return mArena == nullptr || mArena->hasOutsideChildren();
    }
    void destroyDescendants();
    static JsonValueContainer* asTraversed(JsonValue* aValue);
    JsonValue* enter(JsonValueContainer* aParent);
    JsonValue* takeNextChild();
    JsonValueContainer* leave();
    bool isEmptied() const;

    std::uint32_t mCapacity : 31; ///< in entries; 0 if there are no slots or the arena owns them
    std::uint32_t mIsBeingDestroyed : 1; ///< selects the member of the union
    union {
        Arena* mArena;           ///< of the container; null: none
        std::size_t mTakenCount; ///< children taken so far by destroyDescendants()
    };
};

class JsonValueArray : public JsonValueContainer {
public:
    JsonValueArray() = default;
    JsonValueArray(JsonValue** aSlots, std::uint32_t aCount, Arena* aArena)
        : JsonValueContainer(aSlots, aCount, aArena) {}
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
    JsonValueObject(JsonValue** aSlots, std::uint32_t aCount, Arena* aArena)
        : JsonValueContainer(aSlots, aCount, aArena) {}
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
