// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/arena.h"
#include "vexil/json/json_value.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Creation of values in an arena, for the code that builds whole trees. Values appended to such a
// tree later have separate memory. Private to the JSON library.

namespace vexil {

/// The children of a container to be created.
struct ContainerContents {
    bool isObject;
    bool isWithinArena;      ///< no descendant holds memory outside the arena
    JsonValue* const* slots; ///< one per element, or two per member: name, value
    std::size_t slotCount;
};

/// Creates values in an arena. They must be deleted before the root; deleting one frees no memory.
/// All operations throw std::bad_alloc.
class ArenaValueFactory {
public:
    /// @p aArena is borrowed.
    explicit ArenaValueFactory(Arena& aArena) : mArena(aArena) {}

    [[nodiscard]] JsonValue* createNull();
    [[nodiscard]] JsonValue* createBoolean(bool aValue);
    [[nodiscard]] JsonValue* createInteger(std::int32_t aValue);
    [[nodiscard]] JsonValue* createFloat(double aValue);
    [[nodiscard]] JsonValue* createString(std::string_view aText);
    /// Takes ownership of the children. Throws std::length_error for more than maxEntryCount.
    [[nodiscard]] JsonValue* createContainer(const ContainerContents& aContents);

    /// Whether a string of @p aSize bytes is stored without memory outside the arena.
    static bool isWithinArena(std::size_t aSize) { return aSize <= std::string().capacity(); }

private:
    template <class Kind, class... Arguments>
    JsonValue* place(Arguments&&... aArguments);

    Arena& mArena;
};

/// Creates the root of a tree, which takes ownership of its children and of the arena. On failure,
/// as for ArenaValueFactory::createContainer(), both stay with the caller.
[[nodiscard]] JsonValue* createArenaRoot(Arena::Owner& aArena, const ContainerContents& aContents);

} // namespace vexil
