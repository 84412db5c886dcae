#include "vexil/format_to_memory.h"

#include "tests/vexil/platform/test_platform.h"

#include <cstdio>

class OnLegacyRuntime : public OnTestPlatform {};

// The system still has a runtime from before there was a standard.
TEST_F(OnLegacyRuntime, GivesTextsOfEachLength) {
    TestPlatform::inUse().formatBoundedArguments = _vsnprintf;
    for (const std::size_t length : {0U, 1U, 126U, 127U, 128U, 129U, 1000U}) {
        const std::string text(length, 'x');
        EXPECT_EQ(vexil::FormatToMemory::format("%.1s%s", "", text.c_str()), text);
    }
}
