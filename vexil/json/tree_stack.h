// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/json/arena.h"
#include "vexil/json/arena_tree.h"
#include "vexil/json/library_classes.h"
#include "vexil/non_copyable.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <vector>

// Private to the JSON library.

namespace vexil {

/// A tree in an arena while it is being built, without recursion. The children of a container are
/// kept on a stack until it is complete, so that it is created with its final size. Values left on
/// the stack are destroyed.
class TreeStack : private NonCopyable {
public:
    TreeStack() : mArena(Arena::create(expectedSize)), mFactory(*mArena) {
        mFinished.reserve(32); // enough for a small text
        mOpen.reserve(8);
    }
    ~TreeStack() {
        // Otherwise the arena destroys all values.
        if (mArena && mArena->hasOutsideChildren()) destroyFinished();
    }

    /// Creates the values that are passed to push().
    ArenaValueFactory& getFactory() { return mFactory; }
    Arena& getArena() { return *mArena; }

    /// Appends a complete value to the innermost container, or makes it the root.
    void push(JsonValue* aValue) { mFinished.push_back(aValue); }

    /// The same for a value that is not in the arena. Throws std::bad_alloc for null.
    void pushFromOutside(std::unique_ptr<JsonValue> aValue) {
        if (!aValue) throw std::bad_alloc();
        mArena->noteOutsideChildren();
        mFinished.emplace_back(); // may throw; the value still has an owner
        mFinished.back() = aValue.release();
    }

    /// Begins a container.
    void open(bool aIsObject) { mOpen.push_back({mFinished.size(), aIsObject}); }
    bool hasOpen() const { return !mOpen.empty(); }
    /// Whether the innermost container is an object; requires hasOpen(), as the next two do.
    bool isInObject() const { return mOpen.back().isObject; }
    /// Number of complete children of the innermost container, names and values.
    std::size_t countChildren() const { return mFinished.size() - mOpen.back().firstChild; }

    /// Completes the innermost container. The outermost one takes ownership of the arena, and no
    /// further value can be created.
    void close() {
        VEXIL_ASSERT(hasOpen());
        const OpenContainer container = mOpen.back();
        const std::size_t count = countChildren();
        JsonValue** const slots = mFactory.createSlots(count);
        std::copy_n(mFinished.data() + container.firstChild, count, slots);
        const ContainerContents contents{container.isObject, slots, count};
        const bool isRoot = mOpen.size() == 1;
        JsonValue* const created =
            isRoot ? createArenaRoot(mArena, contents) : mFactory.createContainer(contents);
        mFinished.resize(container.firstChild); // no longer owns the children
        mOpen.pop_back();
        if (isRoot) {
            mRoot.reset(created);
        } else {
            push(created);
        }
    }

    /// The complete tree, owned by the caller.
    std::unique_ptr<JsonValue> takeRoot() {
        VEXIL_ASSERT(!hasOpen());
        // The root of a tree in an arena is a container; a scalar is returned as a copy.
        if (!mRoot) mRoot.reset(mFinished.back()->clone());
        return std::move(mRoot);
    }

private:
    static constexpr std::size_t expectedSize = 896; // of a small text

    /// A container that is not complete.
    struct OpenContainer {
        std::size_t firstChild; ///< index of its first child in mFinished
        bool isObject;
    };

    void destroyFinished() {
        for (JsonValue* const value : mFinished) {
            if (!isArenaString(value)) delete value;
        }
    }

    Arena::Owner mArena;
    ArenaValueFactory mFactory;
    std::vector<JsonValue*> mFinished; ///< complete values without a container, innermost last
    std::vector<OpenContainer> mOpen;
    std::unique_ptr<JsonValue> mRoot;
};

} // namespace vexil
