// SPDX-License-Identifier: MIT
#include "vexil/json/arena_clone.h"

#include "vexil/json/arena_tree.h"
#include "vexil/json/library_classes.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vexil {

namespace {

std::size_t countSlots(const JsonValueContainer& aContainer, bool aIsObject) {
    return std::size_t{aContainer.getSize()} * (aIsObject ? 2 : 1);
}

/// Copies values of the library's classes into an arena, with an explicit stack instead of
/// recursion.
class ArenaCopier {
public:
    explicit ArenaCopier(Arena& aArena) : mFactory(aArena) {}

    /// Copies a scalar, or begins the copy of a container. Returns null for a value of a class from
    /// outside the library.
    JsonValue* copyOne(const JsonValue& aValue) {
        switch (libraryClassOf(aValue)) {
        case LibraryClass::None:
            break;
        case LibraryClass::Null:
            return mFactory.createNull();
        case LibraryClass::Boolean:
            return mFactory.createBoolean(as<JsonValueBoolean>(aValue).getBoolean());
        case LibraryClass::Integer:
            return mFactory.createInteger(as<JsonValueInteger>(aValue).getInteger());
        case LibraryClass::Float:
            return mFactory.createFloat(as<JsonValueFloat>(aValue).getFloat());
        case LibraryClass::String:
            return mFactory.createString(as<JsonValueString>(aValue).getString());
        case LibraryClass::Array:
            return mFactory.createContainer(begin(as<JsonValueContainer>(aValue), false));
        case LibraryClass::Object:
            return mFactory.createContainer(begin(as<JsonValueContainer>(aValue), true));
        }
        return nullptr;
    }

    /// Begins the copy of a container: creates its slots, which copyChildren() fills.
    ContainerContents begin(const JsonValueContainer& aSource, bool aIsObject) {
        const std::size_t count = countSlots(aSource, aIsObject);
        JsonValue** const copies = mFactory.createSlots(count);
        if (count != 0) mOpen.push_back({aSource.getSlots(), aSource.getSlots() + count, copies});
        return {aIsObject, copies, count};
    }

    /// Copies all descendants of the container that was begun, if one was. Returns false at a value
    /// of a class from outside the library.
    bool copyDescendants() {
        while (!mOpen.empty()) {
            const Children children = mOpen.back();
            mOpen.pop_back();
            if (!copyChildren(children)) return false;
        }
        return true;
    }

private:
    /// The children of a container that have not been copied yet, and the slots of their copies.
    struct Children {
        const JsonValue* const* next;
        const JsonValue* const* end;
        JsonValue** copies;
    };

    /// Copies children up to the first one that has children itself, which are copied next.
    bool copyChildren(Children aChildren) {
        const std::size_t depth = mOpen.size();
        while (aChildren.next != aChildren.end) {
            JsonValue* const copy =
                *aChildren.next == nullptr ? nullptr : copyOne(**aChildren.next);
            if (copy == nullptr) return false;
            ++aChildren.next;
            *aChildren.copies++ = copy;
            if (mOpen.size() == depth) continue;
            mOpen.insert(mOpen.end() - 1, aChildren);
            break;
        }
        return true;
    }

    ArenaValueFactory mFactory;
    std::vector<Children> mOpen;
};

} // namespace

JsonValue* cloneInArena(const JsonValueContainer& aRoot, bool aIsObject) {
    // The children of most containers are scalars.
    constexpr std::size_t childSize = sizeof(JsonValue*) + sizeof(JsonValueString);
    Arena::Owner arena = Arena::create(countSlots(aRoot, aIsObject) * childSize);
    ArenaCopier copier(*arena);
    const ContainerContents contents = copier.begin(aRoot, aIsObject);
    std::unique_ptr<JsonValue> root(createArenaRoot(arena, contents));
    return copier.copyDescendants() ? root.release() : nullptr;
}

JsonValue* copyToArena(Arena& aArena, const JsonValue& aValue) {
    ArenaCopier copier(aArena);
    JsonValue* const copy = copier.copyOne(aValue);
    return copy != nullptr && copier.copyDescendants() ? copy : nullptr;
}

} // namespace vexil
