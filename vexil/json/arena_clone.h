// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/containers.h"

// Private to the JSON library.

namespace vexil {

/// Returns a deep copy of an array or object in an arena, owned by the caller; null if a descendant
/// is of a class from outside the library. Throws std::bad_alloc.
[[nodiscard]] JsonValue* cloneInArena(const JsonValueContainer& aRoot, bool aIsObject);

} // namespace vexil
