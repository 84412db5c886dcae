#pragma once

#include "vexil/json/tree_pool.h"

// Private to the JSON library.

namespace vexil {

/// A value whose memory goes with its pool.
template <class Kind>
class InPool final : public Kind {
public:
    using Kind::Kind;
    static void operator delete(void*) noexcept {}
};

/// The root of a tree in a pool, whose end is the pool's.
template <class Kind>
class PoolRoot final : public Kind {
public:
    using Kind::Kind;
    static void operator delete(void* aRoot) noexcept {
        TreePool::release(TreePool::ofRoot(aRoot));
    }
};

} // namespace vexil
