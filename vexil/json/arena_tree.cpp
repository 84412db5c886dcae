// SPDX-License-Identifier: MIT
#include "vexil/json/arena_tree.h"

#include "vexil/assert.h"
#include "vexil/json/arena_values.h"
#include "vexil/json/containers.h"
#include "vexil/json/scalar_values.h"

#include <new>
#include <utility>

namespace vexil {

namespace {

template <class Kind>
constexpr bool fitsArena = alignof(Kind) <= Arena::alignment;
static_assert(fitsArena<JsonValueNull> && fitsArena<JsonValueBoolean> &&
              fitsArena<JsonValueInteger> && fitsArena<JsonValueFloat> &&
              fitsArena<JsonValueString> && fitsArena<JsonValueArray> &&
              fitsArena<JsonValueObject>);
static_assert(sizeof(ArenaRoot<JsonValueArray>) <= Arena::maxRootSize &&
              sizeof(ArenaRoot<JsonValueObject>) <= Arena::maxRootSize);

std::uint32_t countEntries(const ContainerContents& aContents) {
    VEXIL_ASSERT(!aContents.isObject || aContents.slotCount % 2 == 0);
    return checkedEntryCount(aContents.isObject ? aContents.slotCount / 2 : aContents.slotCount);
}

} // namespace

template <class Kind, class... Arguments>
JsonValue* ArenaValueFactory::place(Arguments&&... aArguments) {
    return new (mArena.allocate(sizeof(InArena<Kind>)))
        InArena<Kind>(std::forward<Arguments>(aArguments)...);
}

JsonValue* ArenaValueFactory::createNull() {
    return place<JsonValueNull>();
}
JsonValue* ArenaValueFactory::createBoolean(bool aValue) {
    return place<JsonValueBoolean>(aValue);
}
JsonValue* ArenaValueFactory::createInteger(std::int32_t aValue) {
    return place<JsonValueInteger>(aValue);
}
JsonValue* ArenaValueFactory::createFloat(double aValue) {
    return place<JsonValueFloat>(aValue);
}
JsonValue* ArenaValueFactory::createString(std::string_view aText) {
    return isLongString(aText.size()) ? mArena.createLongString(aText)
                                      : place<JsonValueString>(aText);
}

JsonValue** ArenaValueFactory::createSlots(std::size_t aCount) {
    return aCount == 0 ? nullptr
                       : static_cast<JsonValue**>(mArena.allocate(aCount * sizeof(JsonValue*)));
}

JsonValue* ArenaValueFactory::createContainer(const ContainerContents& aContents) {
    const std::uint32_t count = countEntries(aContents);
    if (aContents.isObject) return place<JsonValueObject>(aContents.slots, count, &mArena);
    return place<JsonValueArray>(aContents.slots, count, &mArena);
}

JsonValue* createArenaRoot(Arena::Owner& aArena, const ContainerContents& aContents) {
    VEXIL_ASSERT(aArena != nullptr);
    const std::uint32_t count = countEntries(aContents);
    Arena* const arena = aArena.release(); // nothing below throws
    void* const memory = arena->getRootMemory();
    if (aContents.isObject) {
        return new (memory) ArenaRoot<JsonValueObject>(aContents.slots, count, arena);
    }
    return new (memory) ArenaRoot<JsonValueArray>(aContents.slots, count, arena);
}

} // namespace vexil
