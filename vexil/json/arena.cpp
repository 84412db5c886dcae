// SPDX-License-Identifier: MIT
#include "vexil/json/arena.h"

#include "vexil/assert.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace vexil {

namespace {

constexpr std::size_t maxBlockSize = 256 * 1024;

constexpr std::size_t roundUp(std::size_t aBytes) {
    return (aBytes + Arena::alignment - 1) / Arena::alignment * Arena::alignment;
}

constexpr std::size_t rootOffset = roundUp(sizeof(Arena));
constexpr std::size_t rootEnd = rootOffset + roundUp(Arena::maxRootSize);
static_assert(alignof(Arena) <= Arena::alignment);
static_assert(Arena::alignment <= __STDCPP_DEFAULT_NEW_ALIGNMENT__);

} // namespace

// The first block begins with the arena itself, followed by the memory of the root.
Arena::Owner Arena::create(std::size_t aExpectedSize) {
    VEXIL_ASSERT(aExpectedSize <= SIZE_MAX / 4);
    const std::size_t size = rootEnd + roundUp(aExpectedSize);
    char* const block = static_cast<char*>(::operator new(size));
    return Owner(new (block)
                     Arena(block + rootEnd, block + size, std::min(2 * size, maxBlockSize)));
}

void* Arena::getRootMemory() noexcept {
    return reinterpret_cast<char*>(this) + rootOffset;
}

Arena* Arena::ofRoot(void* aRoot) noexcept {
    VEXIL_ASSERT(aRoot != nullptr);
    return reinterpret_cast<Arena*>(static_cast<char*>(aRoot) - rootOffset);
}

void Arena::release(Arena* aArena) noexcept {
    VEXIL_ASSERT(aArena != nullptr);
    aArena->destroyLongStrings();
    for (Block* block = aArena->mBlocks; block != nullptr;) {
        Block* const next = block->next;
        ::operator delete(block);
        block = next;
    }
    ::operator delete(static_cast<void*>(aArena));
}

void* Arena::allocate(std::size_t aBytes) {
    VEXIL_ASSERT(aBytes <= SIZE_MAX / 2);
    const std::size_t size = roundUp(aBytes);
    if (size > static_cast<std::size_t>(mEnd - mNext)) return allocateFromNewBlock(size);
    return std::exchange(mNext, mNext + size);
}

void* Arena::allocateFromNewBlock(std::size_t aBytes) {
    constexpr std::size_t header = roundUp(sizeof(Block));
    // A large object gets a separate block, and the rest of the current block remains in use.
    const bool isLarge = aBytes > mNextBlockSize / 4;
    const std::size_t size = isLarge ? header + aBytes : mNextBlockSize;
    char* const memory = static_cast<char*>(::operator new(size));
    mBlocks = new (memory) Block{mBlocks};
    if (!isLarge) {
        mNext = memory + header + aBytes;
        mEnd = memory + size;
        mNextBlockSize = std::min(2 * mNextBlockSize, maxBlockSize);
    }
    return memory + header;
}

} // namespace vexil
