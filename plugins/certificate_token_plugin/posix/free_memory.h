// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <new>

namespace plugins {

/// Throws std::bad_alloc unless a block of aSize bytes can be allocated. For libraries that crash
/// if memory runs out.
inline void requireFreeMemory(std::size_t aSize) {
    void* const volatile block = ::operator new(aSize); // volatile: not optimised away
    ::operator delete(block);
}

/// Call before modules and their libraries are loaded.
inline void requireFreeMemoryForModules() {
    requireFreeMemory(128u << 20);
}

} // namespace plugins
