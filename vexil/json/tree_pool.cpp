#include "vexil/json/tree_pool.h"

#include "vexil/json/containers.h"
#include "vexil/json/pooled_values.h"
#include "vexil/json/scalar_values.h"

#include <algorithm>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace vexil {

namespace {

constexpr std::size_t alignment = 8;
constexpr std::size_t firstBlockSize = 1024;
constexpr std::size_t maxBlockSize = 256 * 1024;

constexpr std::size_t roundUp(std::size_t aBytes) {
    return (aBytes + alignment - 1) / alignment * alignment;
}

constexpr std::size_t rootOffset = roundUp(sizeof(TreePool));
constexpr std::size_t rootSize =
    roundUp(std::max(sizeof(PoolRoot<JsonValueArray>), sizeof(PoolRoot<JsonValueObject>)));
static_assert(alignof(TreePool) <= alignment && alignof(JsonValueString) <= alignment &&
              alignof(JsonValueFloat) <= alignment);

} // namespace

// The pool lies at the beginning of its first block, the place of the root right behind it.
TreePool::Owner TreePool::create() {
    char* const block = static_cast<char*>(::operator new(firstBlockSize));
    Owner pool(new (block) TreePool);
    pool->mNext = block + rootOffset + rootSize;
    pool->mEnd = block + firstBlockSize;
    pool->mNextBlockSize = 2 * firstBlockSize;
    return pool;
}

TreePool* TreePool::ofRoot(void* aRoot) noexcept {
    return reinterpret_cast<TreePool*>(static_cast<char*>(aRoot) - rootOffset);
}

void TreePool::release(TreePool* aPool) noexcept {
    for (Block* block = aPool->mBlocks; block != nullptr;) {
        Block* const next = block->next;
        ::operator delete(block);
        block = next;
    }
    ::operator delete(static_cast<void*>(aPool));
}

void* TreePool::allocate(std::size_t aBytes) {
    const std::size_t size = roundUp(aBytes);
    if (size > static_cast<std::size_t>(mEnd - mNext)) return allocateFromNewBlock(size);
    return std::exchange(mNext, mNext + size);
}

void* TreePool::allocateFromNewBlock(std::size_t aBytes) {
    constexpr std::size_t header = roundUp(sizeof(Block));
    // What is large gets a block of its own, and the rest of the current one stays in use.
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

template <class Kind, class... Arguments>
JsonValue* TreePool::place(Arguments&&... aArguments) {
    return new (allocate(sizeof(InPool<Kind>)))
        InPool<Kind>(std::forward<Arguments>(aArguments)...);
}

JsonValue* TreePool::createNull() {
    return place<JsonValueNull>();
}
JsonValue* TreePool::createBoolean(bool aValue) {
    return place<JsonValueBoolean>(aValue);
}
JsonValue* TreePool::createInteger(std::int32_t aValue) {
    return place<JsonValueInteger>(aValue);
}
JsonValue* TreePool::createFloat(double aValue) {
    return place<JsonValueFloat>(aValue);
}
JsonValue* TreePool::createString(std::string_view aText) {
    return place<JsonValueString>(aText);
}

JsonValue** TreePool::copySlots(const Children& aChildren) {
    if (aChildren.slotCount == 0) return nullptr;
    auto* const slots =
        static_cast<JsonValue**>(allocate(aChildren.slotCount * sizeof(JsonValue*)));
    std::copy_n(aChildren.slots, aChildren.slotCount, slots);
    return slots;
}

std::uint32_t TreePool::Children::getEntryCount() const {
    const std::size_t count = isObject ? slotCount / 2 : slotCount;
    if (count > std::numeric_limits<std::uint32_t>::max()) {
        throw std::length_error("JsonValue: too many entries");
    }
    return static_cast<std::uint32_t>(count);
}

JsonValue* TreePool::createContainer(const Children& aChildren) {
    const std::uint32_t count = aChildren.getEntryCount();
    JsonValue** const slots = copySlots(aChildren);
    TreePool* const plainPool = aChildren.isPlain ? this : nullptr;
    if (aChildren.isObject) return place<JsonValueObject>(slots, count, plainPool);
    return place<JsonValueArray>(slots, count, plainPool);
}

JsonValue* TreePool::createRoot(Owner& aPool, const Children& aChildren) {
    const std::uint32_t count = aChildren.getEntryCount();
    JsonValue** const slots = aPool->copySlots(aChildren);
    TreePool* const pool = aPool.release();
    TreePool* const plainPool = aChildren.isPlain ? pool : nullptr;
    void* const memory = reinterpret_cast<char*>(pool) + rootOffset;
    if (aChildren.isObject) return new (memory) PoolRoot<JsonValueObject>(slots, count, plainPool);
    return new (memory) PoolRoot<JsonValueArray>(slots, count, plainPool);
}

} // namespace vexil
