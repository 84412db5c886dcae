#include "vexil/json/containers.h"

#include "vexil/json/pooled_values.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

namespace vexil {

void JsonValueContainer::grow(std::uint32_t aSlots) {
    constexpr std::uint32_t firstCapacity = 4;
    constexpr std::uint32_t maxCount = 0x80000000;
    if (mCount >= maxCount) throw std::length_error("JsonValue: too many entries");
    const std::uint32_t capacity = std::max(firstCapacity, mCount + mCount / 2 + 1);
    std::unique_ptr<JsonValue*[]> slots(new JsonValue*[std::size_t{capacity} * aSlots]);
    std::copy_n(mSlots, std::size_t{mCount} * aSlots, slots.get());
    if (mCapacity != 0) delete[] mSlots;
    if (mPlainPool != nullptr) mPlainPool->setGrown();
    mSlots = slots.release();
    mCapacity = capacity;
}

void JsonValueContainer::throwOutOfRange(std::uint32_t aIndex) const {
    // The text is to be that of the standard library's own container.
    static_cast<void>(std::vector<char>(mCount).at(aIndex));
}

namespace {

template <class... Classes>
bool isOneOf(const JsonValue& aValue) {
    const std::type_info& type = typeid(aValue);
    return ((type == typeid(Classes)) || ...);
}

/// Asks for the most frequent class first.
template <class Kind>
bool isOurs(const JsonValue& aValue) {
    return isOneOf<InPool<Kind>, Kind, PoolRoot<Kind>>(aValue);
}

} // namespace

const JsonValueContainer* JsonValueContainer::from(const JsonValue* aValue) {
    if (aValue == nullptr) return nullptr;
    const JsonType type = aValue->getType();
    const bool isContainer = (type == JsonType::Array && isOurs<JsonValueArray>(*aValue)) ||
                             (type == JsonType::Object && isOurs<JsonValueObject>(*aValue));
    return isContainer ? static_cast<const JsonValueContainer*>(aValue) : nullptr;
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
