#include "tests/vexil/legacy_runtime.h"

#include <cstdio>

int formatLegacy(char* aDest, std::size_t aSize, const char* aFormat, std::va_list aArguments) {
    return _vsnprintf(aDest, aSize, aFormat, aArguments);
}
