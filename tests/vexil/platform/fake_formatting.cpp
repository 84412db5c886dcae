// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/fake_platform.h"

FakeFormatting fakeFormatting;

namespace vexil::platform {

int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments) {
    return fakeFormatting(aDest, aSize, aFormat, aArguments);
}

} // namespace vexil::platform
