// SPDX-License-Identifier: MIT
#include "vexil/format_to_memory.h"

#include "tests/vexil/platform/fake_platform.h"

#include <cstdio>

// msvcrt.dll still has the function that does not follow the standard.
TEST(LegacyRuntime, FormatsTextsOfEachLength) {
    fakeFormatting = _vsnprintf;
    for (const std::size_t length : {0U, 1U, 126U, 127U, 128U, 129U, 1000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(vexil::FormatToMemory::format("%.1s%s", "", text.c_str()), text);
    }
}
