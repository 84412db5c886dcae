// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/non_copyable.h"

#include <cstddef>
#include <memory>
#include <string_view>

// Private to the JSON library.

namespace vexil {

class JsonValue;

/// Memory of one tree whose root is a container: a few blocks that are released together. The root
/// itself lies at a fixed position in the first block, and deleting it releases the arena; until
/// the root exists, an Arena::Owner does.
///
/// The arena destroys the long strings in it and runs no other destructors: no other value in it
/// owns memory from elsewhere, unless a container has received children from outside. Then all
/// values but its strings have to be destroyed before the arena is released.
class Arena : private NonCopyable {
public:
    struct Release {
        void operator()(Arena* aArena) const noexcept { release(aArena); }
    };
    using Owner = std::unique_ptr<Arena, Release>;

    /// Alignment in bytes of all memory in an arena.
    static constexpr std::size_t alignment = 8;
    /// Maximum size of the root in bytes.
    static constexpr std::size_t maxRootSize = 32;

    /// An arena with memory for about @p aExpectedSize bytes besides the root; it grows as
    /// required. Throws std::bad_alloc.
    [[nodiscard]] static Owner create(std::size_t aExpectedSize);

    /// Returns @p aBytes bytes that live as long as the arena. Throws std::bad_alloc.
    [[nodiscard]] void* allocate(std::size_t aBytes);

    /// Creates a string value that holds memory outside the arena. The arena destroys it, and
    /// nothing else may. Throws std::bad_alloc.
    [[nodiscard]] JsonValue* createLongString(std::string_view aText);

    /// Memory for the root, maxRootSize bytes.
    void* getRootMemory() noexcept;
    /// The arena whose root lies at @p aRoot.
    static Arena* ofRoot(void* aRoot) noexcept;

    /// Destroys the long strings and frees all blocks. @p aArena must not be null.
    static void release(Arena* aArena) noexcept;

    /// Whether a container in the arena has received children from outside.
    bool hasOutsideChildren() const { return mHasOutsideChildren; }
    void noteOutsideChildren() { mHasOutsideChildren = true; }

private:
    struct Block {
        Block* next;
    };
    struct StringChunk;

    Arena(char* aNext, char* aEnd, std::size_t aNextBlockSize)
        : mNext(aNext), mEnd(aEnd), mNextBlockSize(aNextBlockSize) {}

    void* allocateFromNewBlock(std::size_t aBytes);
    void addStringChunk(std::size_t aCapacity);
    void destroyLongStrings() noexcept;

    Block* mBlocks = nullptr; ///< all but the first, which contains the arena itself
    char* mNext;              ///< free memory of the current block
    char* mEnd;
    std::size_t mNextBlockSize;
    StringChunk* mLongStrings = nullptr; ///< the chunk being filled
    bool mHasOutsideChildren = false;
};

} // namespace vexil
