#include "tests/vexil/legacy_runtime.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

int formatLegacy(char* aDest, std::size_t aSize, const char* aFormat, std::va_list aArguments) {
    char text[4096];
    const int result = std::vsnprintf(text, sizeof text, aFormat, aArguments);
    const auto length = static_cast<std::size_t>(result);
    std::memcpy(aDest, text, std::min(length + 1, aSize));
    return length > aSize ? -2 : result;
}
