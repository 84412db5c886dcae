// SPDX-License-Identifier: MIT
#include "vexil/json/arena_tree.h"

#include "vexil/assert.h"
#include "vexil/json/arena_values.h"
#include "vexil/json/containers.h"
#include "vexil/json/scalar_values.h"

#include <algorithm>
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

JsonValue** copySlots(Arena& aArena, const ContainerContents& aContents) {
    if (aContents.slotCount == 0) return nullptr;
    auto* const slots =
        static_cast<JsonValue**>(aArena.allocate(aContents.slotCount * sizeof(JsonValue*)));
    std::copy_n(aContents.slots, aContents.slotCount, slots);
    return slots;
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
    return place<JsonValueString>(aText);
}

JsonValue* ArenaValueFactory::createContainer(const ContainerContents& aContents) {
    const std::uint32_t count = countEntries(aContents);
    JsonValue** const slots = copySlots(mArena, aContents);
    Arena* const arenaIfWhole = aContents.isWithinArena ? &mArena : nullptr;
    if (aContents.isObject) return place<JsonValueObject>(slots, count, arenaIfWhole);
    return place<JsonValueArray>(slots, count, arenaIfWhole);
}

JsonValue* createArenaRoot(Arena::Owner& aArena, const ContainerContents& aContents) {
    VEXIL_ASSERT(aArena != nullptr);
    const std::uint32_t count = countEntries(aContents);
    JsonValue** const slots = copySlots(*aArena, aContents);
    Arena* const arenaIfWhole = aContents.isWithinArena ? aArena.get() : nullptr;
    void* const memory = aArena.release()->getRootMemory(); // nothing below throws
    if (aContents.isObject) {
        return new (memory) ArenaRoot<JsonValueObject>(slots, count, arenaIfWhole);
    }
    return new (memory) ArenaRoot<JsonValueArray>(slots, count, arenaIfWhole);
}

} // namespace vexil
