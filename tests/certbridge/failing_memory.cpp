// SPDX-License-Identifier: MIT
#include "tests/certbridge/failing_memory.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <iconv.h>
#include <locale.h>

// The linker redirects every call of these functions to the wrappers (--wrap). The allocations of
// the system for a locale or a conversion fail as well.
extern "C" {
void* __real_malloc(std::size_t aSize);
void* __real_realloc(void* aBlock, std::size_t aSize);
void __real_free(void* aBlock);
void* __wrap_malloc(std::size_t aSize) {
    FailingMemory::largestRequest = std::max(FailingMemory::largestRequest, aSize);
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
locale_t __real_newlocale(int aMask, const char* aName, locale_t aBase);
locale_t __wrap_newlocale(int aMask, const char* aName, locale_t aBase) {
    if (FailingMemory::mayAllocate()) return __real_newlocale(aMask, aName, aBase);
    errno = ENOMEM;
    return {};
}
iconv_t __real_iconv_open(const char* aTo, const char* aFrom);
iconv_t __wrap_iconv_open(const char* aTo, const char* aFrom) {
    if (FailingMemory::mayAllocate()) return __real_iconv_open(aTo, aFrom);
    errno = ENOMEM;
    return reinterpret_cast<iconv_t>(std::intptr_t{-1});
}
}

extern "C" {
void* __real_dlopen(const char* aName, int aMode);
int __real_dlclose(void* aLibrary);
void* __wrap_dlopen(const char* aName, int aMode) {
    void* const library = __real_dlopen(aName, aMode);
    FailingMemory::openLibraries += library != nullptr;
    return library;
}
int __wrap_dlclose(void* aLibrary) {
    --FailingMemory::openLibraries;
    return __real_dlclose(aLibrary);
}
}

void* operator new(std::size_t aSize) {
    if (void* const block = std::malloc(aSize + 1)) return block;
    throw std::bad_alloc();
}
// The standard library's allocates with malloc as well, but not the address sanitizer's.
void* operator new(std::size_t aSize, const std::nothrow_t&) noexcept {
    return std::malloc(aSize + 1);
}
void operator delete(void* aBlock) noexcept {
    std::free(aBlock);
}
void operator delete(void* aBlock, std::size_t) noexcept {
    std::free(aBlock);
}
