#include "vexil/json/containers.h"

namespace vexil {

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

} // namespace vexil
