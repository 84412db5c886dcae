// Measures what parsing takes from the heap. The functions of malloc are replaced for the whole
// process, shared libraries included, by ones that count. Writes one line of comma-separated values
// a document and library: the document's bytes, the largest number of heap bytes in use at once,
// and the number of blocks taken.
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

// What the allocator spends on a block: what can be used of it, and a word in front.
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

// The C library's own functions under the names by which they stay reachable.
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
    static_cast<void>(Library::parse(aText)); // what a library keeps for ever is not counted
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
