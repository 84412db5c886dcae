// SPDX-License-Identifier: MIT
#include "vexil/json/containers.h"
#include "vexil/json/library_classes.h"

#include <memory>

// Destroys a tree without recursion: while the children of a container are being destroyed, its
// first slot, whose child has been taken, holds the parent container (Schorr-Waite pointer
// reversal).

namespace vexil {

/// Returns @p aValue as a container whose descendants have to be destroyed one by one, or null.
JsonValueContainer* JsonValueContainer::asTraversed(JsonValue* aValue) {
    auto* const container = const_cast<JsonValueContainer*>(asLibraryContainer(aValue));
    return container != nullptr && container->needsTraversal() ? container : nullptr;
}

/// Begins with a container: takes its first child and stores the parent in that child's slot.
JsonValue* JsonValueContainer::enter(JsonValueContainer* aParent) {
    VEXIL_ASSERT(!mIsBeingDestroyed && mCount != 0);
    JsonValue* const first = mSlots[0];
    mSlots[0] = aParent;
    mIsBeingDestroyed = 1;
    std::construct_at(&mTakenCount, std::size_t{1});
    return first;
}

/// Takes the next child: the elements of an array in order; all names of an object, then all
/// values.
JsonValue* JsonValueContainer::takeNextChild() {
    VEXIL_ASSERT(mIsBeingDestroyed && !isEmptied());
    const std::size_t taken = mTakenCount++;
    if (!isObject()) return mSlots[taken];
    return mSlots[taken < mCount ? 2 * taken : 2 * (taken - mCount) + 1];
}

/// Finishes a container whose children have all been destroyed, and returns its parent.
JsonValueContainer* JsonValueContainer::leave() {
    VEXIL_ASSERT(isEmptied());
    mCount = 0;
    return static_cast<JsonValueContainer*>(mSlots[0]);
}

bool JsonValueContainer::isEmptied() const {
    VEXIL_ASSERT(mIsBeingDestroyed);
    return mTakenCount == (isObject() ? std::size_t{2} * mCount : mCount);
}

void JsonValueContainer::destroyDescendants() {
    JsonValueContainer* current = this;
    JsonValue* child = enter(nullptr);
    for (;;) {
        if (JsonValueContainer* const container = asTraversed(child)) {
            child = container->enter(current);
            current = container;
            continue;
        }
        if (!isArenaString(child)) delete child; // otherwise the arena destroys it
        while (current->isEmptied()) {
            JsonValueContainer* const parent = current->leave();
            if (current == this) return;
            delete current;
            current = parent;
        }
        child = current->takeNextChild();
    }
}

} // namespace vexil
