// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/arena.h"

#include <cstddef>
#include <string>

// The classes of values whose memory belongs to an arena. Each is constructed and destroyed like
// any other value. Private to the JSON library.

namespace vexil {

/// Whether a string of @p aSize bytes needs memory in addition to the string object.
inline bool isLongString(std::size_t aSize) {
    return aSize > std::string().capacity();
}

/// A value in an arena, which releases its memory.
template <class Kind>
class InArena final : public Kind {
public:
    using Kind::Kind;
    static void operator delete(void*) noexcept {}
};

/// The root of a tree in an arena; deleting it releases the arena.
template <class Kind>
class ArenaRoot final : public Kind {
public:
    using Kind::Kind;
    static void operator delete(void* aRoot) noexcept { Arena::release(Arena::ofRoot(aRoot)); }
};

} // namespace vexil
