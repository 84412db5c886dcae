#pragma once

#include "vexil/json/json_value.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

// Private to the JSON library.

namespace vexil {

/// Memory for the values of one tree whose root is an array or object. The values lie next to each
/// other in a few blocks, which go back to the system when the root is deleted: from then on the
/// pool belongs to the root. Until there is a root it belongs to whoever made it.
///
/// A value in a pool is an object like any other, with its own destructor to be run, but its memory
/// is not freed by itself. What is appended to such a tree later comes from elsewhere.
class TreePool {
public:
    struct Release {
        void operator()(TreePool* aPool) const noexcept { release(aPool); }
    };
    using Owner = std::unique_ptr<TreePool, Release>;

    static Owner create();
    TreePool(const TreePool&) = delete;
    TreePool& operator=(const TreePool&) = delete;

    /// A longer string may have memory of its own, so it needs to be destroyed.
    static std::size_t plainStringSize() { return std::string().capacity(); }

    /// What a container is to hold.
    struct Children {
        bool isObject;
        bool isPlain;            ///< none of them and nothing below needs to be destroyed
        JsonValue* const* slots; ///< one an element, two a member: name, value
        std::size_t slotCount;

        std::uint32_t getEntryCount() const;
    };

    // Each creates a value in the pool and throws std::bad_alloc. Delete it before the root.
    JsonValue* createNull();
    JsonValue* createBoolean(bool aValue);
    JsonValue* createInteger(std::int32_t aValue);
    JsonValue* createFloat(double aValue);
    JsonValue* createString(std::string_view aText);
    /// Takes the children over.
    JsonValue* createContainer(const Children& aChildren);
    /// The same for the root, which takes over the pool as well.
    static JsonValue* createRoot(Owner& aPool, const Children& aChildren);

    /// Whether a container of the tree has got children from elsewhere, so that even what was plain
    /// has to be walked when it is destroyed.
    bool hasGrown() const { return mHasGrown; }
    void setGrown() { mHasGrown = true; }

    static void release(TreePool* aPool) noexcept;
    /// The pool of a tree's root.
    static TreePool* ofRoot(void* aRoot) noexcept;

private:
    struct Block {
        Block* next;
    };

    TreePool() = default;

    void* allocate(std::size_t aBytes);
    void* allocateFromNewBlock(std::size_t aBytes);
    JsonValue** copySlots(const Children& aChildren);

    template <class Kind, class... Arguments>
    JsonValue* place(Arguments&&... aArguments);

    Block* mBlocks = nullptr; ///< all but the one that holds the pool itself
    char* mNext;
    char* mEnd;
    std::size_t mNextBlockSize;
    bool mHasGrown = false;
};

} // namespace vexil
