// SPDX-License-Identifier: MIT
#include "vexil/platform/platform.h"

#include <cstdio>

namespace vexil::platform {

int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments) {
    return std::vsnprintf(aDest, aSize, aFormat, aArguments);
}

} // namespace vexil::platform
