// SPDX-License-Identifier: MIT

// Measures the heap memory used while parsing. The malloc functions of the whole process, shared
// libraries included, are replaced by counting ones. Writes one line of comma-separated values per
// document and library: the size of the document, the maximum number of heap bytes in use, and the
// number of blocks allocated.
#include "documents.h"
#include "libraries.h"

#include <malloc.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace {

struct Heap {
    std::size_t used = 0;
    std::size_t peak = 0;
    std::size_t blocks = 0;
};

constinit Heap heap;

// Memory used by a block: its usable size and the allocator's header word.
std::size_t sizeOf(void* aBlock) {
    return aBlock == nullptr ? 0 : malloc_usable_size(aBlock) + sizeof(std::size_t);
}

void* count(void* aBlock) {
    heap.used += sizeOf(aBlock);
    heap.peak = std::max(heap.peak, heap.used);
    ++heap.blocks;
    return aBlock;
}

} // namespace

// The C library's functions under their internal names.
extern "C" {
void* __libc_malloc(std::size_t aSize);
void* __libc_calloc(std::size_t aCount, std::size_t aSize);
void* __libc_realloc(void* aBlock, std::size_t aSize);
void* __libc_memalign(std::size_t aAlignment, std::size_t aSize);
void __libc_free(void* aBlock);

void* malloc(std::size_t aSize) noexcept {
    return count(__libc_malloc(aSize));
}

void* calloc(std::size_t aCount, std::size_t aSize) noexcept {
    return count(__libc_calloc(aCount, aSize));
}

void* realloc(void* aBlock, std::size_t aSize) noexcept {
    heap.used -= sizeOf(aBlock);
    return count(__libc_realloc(aBlock, aSize));
}

void* aligned_alloc(std::size_t aAlignment, std::size_t aSize) noexcept {
    return count(__libc_memalign(aAlignment, aSize));
}

int posix_memalign(void** aBlock, std::size_t aAlignment, std::size_t aSize) noexcept {
    *aBlock = aligned_alloc(aAlignment, aSize);
    return *aBlock == nullptr ? ENOMEM : 0;
}

void free(void* aBlock) noexcept {
    heap.used -= sizeOf(aBlock);
    __libc_free(aBlock);
}
}

namespace {

using namespace benchmarks;

template <typename Library>
Heap measure(const std::string& aText) {
    static_cast<void>(
        Library::parse(aText)); // permanent allocations of the library are not counted
    const auto before = heap;
    heap.peak = heap.used;
    const auto tree = Library::parse(aText);
    return {heap.used - before.used, heap.peak - before.used, heap.blocks - before.blocks};
}

} // namespace

int main() {
    std::printf("document,library,bytes,peak,blocks\n");
    for (const auto& document : makeDocuments()) {
        forEachLibrary([&]<typename Library>() {
            const auto result = measure<Library>(document.text);
            std::printf("%s,%s,%zu,%zu,%zu\n", document.name.c_str(), Library::name,
                        document.text.size(), result.peak, result.blocks);
        });
    }
}
