// SPDX-License-Identifier: MIT
#include "plugins/common/library_memory.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace plugins {

namespace {

std::atomic<bool> hasAllocationFailed = false;

// A request for no bytes returns null and has not failed.
void* recorded(void* aBlock, std::size_t aSize) {
    if (aBlock == nullptr && aSize != 0) hasAllocationFailed = true;
    return aBlock;
}

void* allocate(std::size_t aSize, const char*, int) {
    return recorded(aSize == 0 ? nullptr : std::malloc(aSize), aSize);
}

void release(void* aBlock, const char*, int) {
    std::free(aBlock);
}

void* reallocate(void* aBlock, std::size_t aSize, const char*, int) {
    if (aSize != 0) return recorded(std::realloc(aBlock, aSize), aSize);
    std::free(aBlock);
    return nullptr;
}

bool isMemoryReported() {
    return ERR_GET_REASON(ERR_peek_error()) == ERR_R_MALLOC_FAILURE ||
           ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE;
}

} // namespace

void recordFailedAllocations() {
    CRYPTO_set_mem_functions(allocate, reallocate, release);
}

void requireMemory() {
    if (!hasAllocationFailed.exchange(false) && !isMemoryReported()) return;
    ERR_clear_error();
    throw std::bad_alloc();
}

} // namespace plugins
