// SPDX-License-Identifier: MIT
#include "vexil/assert.h"
#include "vexil/json/arena.h"
#include "vexil/json/arena_values.h"
#include "vexil/json/scalar_values.h"

#include <algorithm>
#include <memory>
#include <new>

// The long strings of a tree lie side by side, so that they are destroyed without visiting the
// tree.

namespace vexil {

namespace {

using LongString = InArena<JsonValueString>;

} // namespace

/// A header in the arena, followed by memory for strings, of which the first ones exist.
struct Arena::StringChunk {
    LongString* begin() { return reinterpret_cast<LongString*>(this + 1); }

    StringChunk* next;
    std::size_t count;
    std::size_t capacity;
};

void Arena::addStringChunk(std::size_t aCapacity) {
    static_assert(sizeof(StringChunk) % alignof(LongString) == 0);
    void* const memory = allocate(sizeof(StringChunk) + aCapacity * sizeof(LongString));
    mLongStrings = new (memory) StringChunk{mLongStrings, 0, aCapacity};
}

JsonValue* Arena::createLongString(std::string_view aText) {
    constexpr std::size_t firstCapacity = 2;
    constexpr std::size_t maxCapacity = 64;
    if (mLongStrings == nullptr) {
        addStringChunk(firstCapacity);
    } else if (mLongStrings->count == mLongStrings->capacity) {
        addStringChunk(std::min(2 * mLongStrings->capacity, maxCapacity));
    }
    auto* const string = new (mLongStrings->begin() + mLongStrings->count) LongString(aText);
    ++mLongStrings->count;
    return string;
}

void Arena::destroyLongStrings() noexcept {
    for (StringChunk* chunk = mLongStrings; chunk != nullptr; chunk = chunk->next) {
        std::destroy_n(chunk->begin(), chunk->count);
    }
}

} // namespace vexil
