#include "vexil/json/json_value.h"

#include "vexil/exceptions.h"
#include "vexil/json/json_value_classes.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace vexil {

namespace {

[[noreturn]] void throwUnsupported(const char* aOperation) {
    throw UnsupportedFunction(std::string(aOperation) + "() not supported");
}

} // namespace

// JsonValueDefault: what a kind does not have.

std::uint32_t JsonValueDefault::getSize() const {
    throwUnsupported("getSize");
}
bool JsonValueDefault::getBoolean() const {
    throwUnsupported("getBoolean");
}
std::int32_t JsonValueDefault::getInteger() const {
    throwUnsupported("getInteger");
}
double JsonValueDefault::getFloat() const {
    throwUnsupported("getFloat");
}
const std::string& JsonValueDefault::getString() const {
    throwUnsupported("getString");
}
const JsonValue* JsonValueDefault::getNameAt(std::uint32_t) const {
    throwUnsupported("getNameAt");
}
JsonValue* JsonValueDefault::getNameAt(std::uint32_t) {
    throwUnsupported("getNameAt");
}
const JsonValue* JsonValueDefault::getValueAt(std::uint32_t) const {
    throwUnsupported("getValueAt");
}
JsonValue* JsonValueDefault::getValueAt(std::uint32_t) {
    throwUnsupported("getValueAt");
}
const JsonValue* JsonValueDefault::findFirst(const char*) const {
    throwUnsupported("findFirst");
}
JsonValue* JsonValueDefault::findFirst(const char*) {
    throwUnsupported("findFirst");
}
void JsonValueDefault::appendValue(JsonValue*) {
    throwUnsupported("appendValue");
}
void JsonValueDefault::appendNameAndValue(JsonValue*, JsonValue*) {
    throwUnsupported("appendNameAndValue");
}

// The factories.

JsonValue* JsonValue::createNull() {
    return new JsonValueNull;
}
JsonValue* JsonValue::createBoolean(bool aValue) {
    return new JsonValueBoolean(aValue);
}
JsonValue* JsonValue::createInteger(std::int32_t aValue) {
    return new JsonValueInteger(aValue);
}
JsonValue* JsonValue::createFloat(double aValue) {
    return new JsonValueFloat(aValue);
}
JsonValue* JsonValue::createString(const std::string& aText) {
    return new JsonValueString(aText);
}
JsonValue* JsonValue::createString(const char* aText) {
    return new JsonValueString(aText);
}
JsonValue* JsonValue::createArray() {
    return new JsonValueArray;
}
JsonValue* JsonValue::createObject() {
    return new JsonValueObject;
}

// Containers.

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

/// The value as a container whose children are to be destroyed one by one, or null.
JsonValueContainer* JsonValueContainer::asWalked(JsonValue* aValue) {
    auto* const container = const_cast<JsonValueContainer*>(from(aValue));
    return container != nullptr && container->needsWalk() ? container : nullptr;
}

/// The slot of the child that comes after @p aTaken others: the elements of an array in order, all
/// names of an object and then all its values.
std::size_t JsonValueContainer::slotInOrder(std::size_t aTaken) const {
    if (!isObject()) return aTaken;
    return aTaken < mCount ? 2 * aTaken : 2 * (aTaken - mCount) + 1;
}

/// Starts on a container: gives its first child and keeps in that child's slot the way back.
JsonValue* JsonValueContainer::enter(JsonValueContainer* aParent) {
    JsonValue* const first = mSlots[0];
    mSlots[0] = aParent;
    mTaken = 1;
    return first;
}

/// Ends with a container whose children are gone, and gives the way back.
JsonValueContainer* JsonValueContainer::leave() {
    mCount = 0;
    return static_cast<JsonValueContainer*>(mSlots[0]);
}

bool JsonValueContainer::isDone() const {
    return mTaken == (isObject() ? std::size_t{2} * mCount : mCount);
}

void JsonValueContainer::walkAndDestroy() {
    JsonValueContainer* current = this;
    JsonValue* child = enter(nullptr);
    for (;;) {
        if (JsonValueContainer* const container = asWalked(child)) {
            child = container->enter(current);
            current = container;
            continue;
        }
        delete child;
        while (current->isDone()) {
            JsonValueContainer* const parent = current->leave();
            if (current == this) return;
            delete current;
            current = parent;
        }
        child = current->mSlots[current->slotInOrder(current->mTaken++)];
    }
}

JsonValue* JsonValueObject::find(const char* aName) const {
    const std::size_t length = std::strlen(aName);
    for (std::uint32_t i = 0; i < mCount; ++i) {
        const std::string& name = at(i, 0)->getString();
        if (name.size() == length && std::memcmp(name.data(), aName, length) == 0) return at(i, 1);
    }
    return nullptr;
}

// Deep copies.

namespace {

/// Copies a tree with a stack of its own instead of recursion.
class TreeCopier {
public:
    std::unique_ptr<JsonValue> copy(const JsonValue& aRoot) {
        std::unique_ptr<JsonValue> done = start(aRoot);
        while (!mLevels.empty()) {
            if (done) deliver(std::move(done));
            done = advance();
        }
        return done;
    }

private:
    struct Level {
        const JsonValue* source;
        std::unique_ptr<JsonValue> copy;
        std::unique_ptr<JsonValue> value; ///< of a member whose name is still to be copied
        std::uint32_t size;
        bool isObject;
    };

    /// Copies a value at once, or begins a level for a container of ours and gives nothing yet.
    std::unique_ptr<JsonValue> start(const JsonValue& aSource) {
        if (JsonValueContainer::from(&aSource) == nullptr) {
            return std::unique_ptr<JsonValue>(aSource.clone());
        }
        const bool isObject = aSource.getType() == JsonType::Object;
        std::unique_ptr<JsonValue> copy(isObject ? JsonValue::createObject()
                                                 : JsonValue::createArray());
        mLevels.push_back({&aSource, std::move(copy), nullptr, aSource.getSize(), isObject});
        return nullptr;
    }

    /// Goes on with the innermost container: starts its next child, or gives its copy if complete.
    std::unique_ptr<JsonValue> advance() {
        Level& level = mLevels.back();
        const std::uint32_t index = level.copy->getSize();
        if (index == level.size) {
            std::unique_ptr<JsonValue> done = std::move(level.copy);
            mLevels.pop_back();
            return done;
        }
        return start(level.value ? *level.source->getNameAt(index)
                                 : *level.source->getValueAt(index));
    }

    /// Puts a finished copy into the innermost container; of a member the value comes first.
    void deliver(std::unique_ptr<JsonValue> aDone) {
        Level& level = mLevels.back();
        if (!level.isObject) {
            level.copy->appendValue(aDone.get());
        } else if (!level.value) {
            level.value = std::move(aDone);
            return;
        } else {
            level.copy->appendNameAndValue(aDone.get(), level.value.get());
            static_cast<void>(level.value.release());
        }
        static_cast<void>(aDone.release());
    }

    std::vector<Level> mLevels;
};

} // namespace

JsonValue* JsonValueArray::clone() const {
    return TreeCopier().copy(*this).release();
}
JsonValue* JsonValueObject::clone() const {
    return TreeCopier().copy(*this).release();
}

} // namespace vexil
