// What the system allocates for itself fails with the rest of the memory (see failing_memory.cpp).
#include "tests/failing_memory.h"

#include <cerrno>
#include <cstdint>

#include <iconv.h>
#include <locale.h>

extern "C" {
locale_t __real_newlocale(int aMask, const char* aName, locale_t aBase);
iconv_t __real_iconv_open(const char* aTo, const char* aFrom);

locale_t __wrap_newlocale(int aMask, const char* aName, locale_t aBase) {
    if (FailingMemory::mayAllocate()) return __real_newlocale(aMask, aName, aBase);
    errno = ENOMEM;
    return {};
}
iconv_t __wrap_iconv_open(const char* aTo, const char* aFrom) {
    if (FailingMemory::mayAllocate()) return __real_iconv_open(aTo, aFrom);
    errno = ENOMEM;
    return reinterpret_cast<iconv_t>(std::intptr_t{-1});
}
}
