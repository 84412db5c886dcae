#include "tests/failing_memory.h"

#include <cstdlib>
#include <new>

// The linker leads every call of malloc, realloc and free here (--wrap).
extern "C" {
void* __real_malloc(std::size_t aSize);
void* __real_realloc(void* aBlock, std::size_t aSize);
void __real_free(void* aBlock);
void* __wrap_malloc(std::size_t aSize) {
    void* const block = FailingMemory::mayAllocate() ? __real_malloc(aSize) : nullptr;
    FailingMemory::liveBlocks += block != nullptr;
    return block;
}
void* __wrap_realloc(void* aBlock, std::size_t aSize) {
    void* const block = FailingMemory::mayAllocate() ? __real_realloc(aBlock, aSize) : nullptr;
    FailingMemory::liveBlocks += block && !aBlock;
    return block;
}
void __wrap_free(void* aBlock) {
    FailingMemory::liveBlocks -= aBlock != nullptr;
    __real_free(aBlock);
}
}

void* operator new(std::size_t aSize) {
    if (void* const block = std::malloc(aSize + 1)) return block;
    throw std::bad_alloc();
}
void operator delete(void* aBlock) noexcept {
    std::free(aBlock);
}
void operator delete(void* aBlock, std::size_t) noexcept {
    std::free(aBlock);
}
