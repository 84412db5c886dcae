// SPDX-License-Identifier: MIT
#include "vexil/json/containers.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace vexil {

namespace {

/// An allocator of elements that do not exist: nothing is allocated, constructed or accessed.
template <class Element>
struct NoStorage {
    using value_type = Element;
    NoStorage() = default;
    template <class Other>
    explicit NoStorage(const NoStorage<Other>&) {}
    Element* allocate(std::size_t) {
        static Element none;
        return &none;
    }
    void deallocate(Element*, std::size_t) {}
    template <class Other, class... Arguments>
    void construct(Other*, Arguments&&...) {}
    template <class Other>
    void destroy(Other*) {}
    bool operator==(const NoStorage&) const = default;
};

} // namespace

std::uint32_t checkedEntryCount(std::size_t aCount) {
    if (aCount > maxEntryCount) throw std::length_error("JsonValue: too many entries");
    return static_cast<std::uint32_t>(aCount);
}

void JsonValueContainer::grow(std::uint32_t aSlotsPerEntry) {
    constexpr std::uint32_t firstCapacity = 4;
    const std::uint32_t needed = checkedEntryCount(std::size_t{mCount} + 1);
    const std::uint32_t capacity =
        std::min(std::max(firstCapacity, needed + mCount / 2), maxEntryCount);
    std::unique_ptr<JsonValue*[]> slots(new JsonValue*[std::size_t{capacity} * aSlotsPerEntry]);
    std::copy_n(mSlots, std::size_t{mCount} * aSlotsPerEntry, slots.get());
    if (mCapacity != 0) delete[] mSlots;
    if (mArena != nullptr) mArena->noteOutsideChildren();
    mSlots = slots.release();
    mCapacity = capacity & maxEntryCount;
}

void JsonValueContainer::throwOutOfRange(std::uint32_t aIndex) const {
    // The message is that of the standard library's container, which here owns no memory.
    static_cast<void>(std::vector<char, NoStorage<char>>(mCount).at(aIndex));
}

JsonValue* JsonValueObject::find(const char* aName) const {
    const std::size_t length = std::strlen(aName);
    for (std::uint32_t i = 0; i < mCount; ++i) {
        const std::string& name = at(i, 0)->getString();
        if (name.size() == length && std::memcmp(name.data(), aName, length) == 0) return at(i, 1);
    }
    return nullptr;
}

} // namespace vexil
