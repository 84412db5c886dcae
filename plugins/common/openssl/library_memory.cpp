// SPDX-License-Identifier: MIT
#include "plugins/common/library_memory.h"

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>

namespace plugins {

namespace {

std::atomic<bool> hasAllocationFailed = false;

// Memory for the state of a thread, if there is no other. OpenSSL 3.6 allocates the state in which
// it reports failures for the first report, and without memory for it reports that without end;
// OpenSSL 3.2 and later abort without memory for the state of a thread's locks. It is never given
// back.
constexpr std::size_t reserveSize = 16384;
alignas(std::max_align_t) std::byte reserve[reserveSize];
std::atomic<std::size_t> reserveUsed = 0;
std::atomic<bool> usesReserve = false; // thread_local memory would have to be allocated

// Null if the rest of the reserve is too small.
void* takeReserve(std::size_t aSize) {
    if (aSize > reserveSize) return nullptr;
    constexpr std::size_t alignment = alignof(std::max_align_t);
    const std::size_t size = (aSize + alignment - 1) / alignment * alignment;
    std::size_t start = reserveUsed;
    do {
        if (size > reserveSize - start) return nullptr;
    } while (!reserveUsed.compare_exchange_weak(start, start + size));
    return reserve + start;
}

bool isInReserve(const void* aBlock) {
    const auto* const block = static_cast<const std::byte*>(aBlock);
    return !std::less<>()(block, reserve) && std::less<>()(block, reserve + reserveSize);
}

// threads_pthread.c and threads_win.c of OpenSSL hold locks and their state in each thread. An
// OpenSSL built without file names passes none.
bool isForLock(const char* aFile) {
    return aFile != nullptr && std::strstr(aFile, "threads_") != nullptr;
}

// A request for no bytes returns null and has not failed.
void* allocate(std::size_t aSize, const char* aFile, int) {
    if (aSize == 0) return nullptr;
    if (void* const block = std::malloc(aSize)) return block;
    hasAllocationFailed = true;
    return usesReserve || isForLock(aFile) ? takeReserve(aSize) : nullptr;
}

void release(void* aBlock, const char*, int) {
    if (!isInReserve(aBlock)) std::free(aBlock);
}

// The size of a block in the reserve is not recorded; it ends before the reserve does.
void* moveFromReserve(void* aBlock, std::size_t aSize) {
    void* const block = allocate(aSize, nullptr, 0);
    const auto rest =
        static_cast<std::size_t>(reserve + reserveSize - static_cast<std::byte*>(aBlock));
    if (block != nullptr) std::memmove(block, aBlock, std::min(aSize, rest));
    return block;
}

void* reallocate(void* aBlock, std::size_t aSize, const char*, int) {
    if (aSize == 0) {
        release(aBlock, nullptr, 0);
        return nullptr;
    }
    if (isInReserve(aBlock)) return moveFromReserve(aBlock, aSize);
    void* const block = std::realloc(aBlock, aSize);
    if (block == nullptr) hasAllocationFailed = true;
    return block;
}

bool isMemoryReported() {
    return ERR_GET_REASON(ERR_peek_error()) == ERR_R_MALLOC_FAILURE ||
           ERR_GET_REASON(ERR_peek_last_error()) == ERR_R_MALLOC_FAILURE;
}

} // namespace

void recordFailedAllocations() {
    CRYPTO_set_mem_functions(allocate, reallocate, release);
    usesReserve = true;
    ERR_clear_error(); // creates the state of the thread
    usesReserve = false;
}

void requireMemory() {
    if (!hasAllocationFailed.exchange(false) && !isMemoryReported()) return;
    ERR_clear_error();
    throw std::bad_alloc();
}

} // namespace plugins
