// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/arena.h"
#include "vexil/json/containers.h"

// Private to the JSON library.

namespace vexil {

/// Returns a deep copy of an array or object in an arena, owned by the caller; null if a descendant
/// is of a class from outside the library. Throws std::bad_alloc.
[[nodiscard]] JsonValue* cloneInArena(const JsonValueContainer& aRoot, bool aIsObject);

/// Returns a deep copy of a value in an arena, to which it belongs; null as above.
[[nodiscard]] JsonValue* copyToArena(Arena& aArena, const JsonValue& aValue);

} // namespace vexil
