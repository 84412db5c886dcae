// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/arena.h"
#include "vexil/json/json_value.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

// Creation of values in an arena, for the code that builds whole trees. Values appended to such a
// tree later have separate memory. Private to the JSON library.

namespace vexil {

/// The children of a container to be created.
struct ContainerContents {
    bool isObject;
    JsonValue** slots; ///< one per element, or two per member: name, value; part of the arena
    std::size_t slotCount;
};

/// Creates values in an arena. The arena releases them; they need not be deleted, unless children
/// from outside are appended to one of them. All operations throw std::bad_alloc.
class ArenaValueFactory {
public:
    /// @p aArena is borrowed.
    explicit ArenaValueFactory(Arena& aArena) : mArena(aArena) {}

    [[nodiscard]] JsonValue* createNull();
    [[nodiscard]] JsonValue* createBoolean(bool aValue);
    [[nodiscard]] JsonValue* createInteger(std::int32_t aValue);
    [[nodiscard]] JsonValue* createFloat(double aValue);
    [[nodiscard]] JsonValue* createString(std::string_view aText);
    /// Memory for the slots of a container; null for none.
    [[nodiscard]] JsonValue** createSlots(std::size_t aCount);
    /// The children may still be missing. Throws std::length_error for more than maxEntryCount.
    [[nodiscard]] JsonValue* createContainer(const ContainerContents& aContents);

private:
    template <class Kind, class... Arguments>
    JsonValue* place(Arguments&&... aArguments);

    Arena& mArena;
};

/// Creates the root of a tree, which takes ownership of the arena. On failure, as for
/// ArenaValueFactory::createContainer(), the arena stays with the caller.
[[nodiscard]] JsonValue* createArenaRoot(Arena::Owner& aArena, const ContainerContents& aContents);

} // namespace vexil
