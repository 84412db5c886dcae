#include "tests/platform/test_platform.h"
#include "tests/vexil/format_rows.h"

#include <algorithm>
#include <cstring>

using namespace vexil;
using testing::ThrowsMessage;

// Formats as runtimes did before there was a standard: below 0 for a text that does not fit, which
// then fills all of the room, and no terminator where there is no room for it.
static int formatLegacy(char* aDest, std::size_t aSize, const char* aFormat,
                        std::va_list aArguments) {
    char text[4096];
    const int length = std::vsnprintf(text, sizeof text, aFormat, aArguments);
    std::memcpy(aDest, text, std::min(std::size_t(length) + 1, aSize));
    return std::size_t(length) > aSize ? -2 : length;
}

class LegacyFormat : public OnTestPlatform {
protected:
    LegacyFormat() { TestPlatform::inUse().formatBoundedArguments = formatLegacy; }
};

// The first test: a runtime once found out is never probed again.
TEST_F(LegacyFormat, IsNotMistakenForABrokenRuntime) {
    int result = 0;
    const char* bytes = "";
    TestPlatform::inUse().formatBoundedArguments = [&](char* aDest, auto...) {
        std::memcpy(aDest, bytes, 8);
        return result;
    };
    const std::pair<int, const char*> rows[] = {{6, "1234xxxx"},   {4, "1234xxxx"},
                                                {-1, "123\0xxxx"}, {3, "123\0xxxx"},
                                                {6, "123\0yxxx"},  {-1, "12345xxx"}};
    for (const auto& row : rows) {
        std::tie(result, bytes) = row;
        EXPECT_THAT([] { FormatToMemory(0); },
                    ThrowsMessage<Exception>("FormatToMemory: snprintf() broken"));
    }
    TestPlatform::inUse().formatBoundedArguments = formatLegacy;
    expectLimitsKept();
}

TEST_F(LegacyFormat, DoublesTheBufferUpToItsLimit) {
    const auto exceeded = ThrowsMessage<FormatLimitExceeded>(
        "FormatToMemory::vformat(): maximum buffer size exceeded");
    const auto overflow = ThrowsMessage<Exception>("FormatToMemory::vformat(): overflow");
    const std::tuple<int, std::size_t, std::size_t, testing::Matcher<std::function<void()>>>
        rows[] = {{200, 2, 199, exceeded}, {300, 3, 299, exceeded}, {0, 25, 0x7FFFFFFE, overflow}};
    for (const auto& [limit, attempts, largest, fails] : rows) {
        if (limit == 0 && sizeof(void*) == 4) GTEST_SKIP() << "no room for the largest buffer";
        FormatToMemory formatter(limit);
        std::vector<std::size_t> sizes;
        TestPlatform::inUse().formatBoundedArguments = [&](char*, std::size_t aSize, auto...) {
            sizes.push_back(aSize);
            return -1;
        };
        EXPECT_THAT([&] { formatInto(formatter, "x"); }, fails);
        EXPECT_EQ(sizes.size(), attempts) << testing::PrintToString(sizes);
        EXPECT_EQ(sizes.back(), largest);
    }
}

TEST_F(LegacyFormat, RefusesALengthThatLeavesNoRoomForTheNull) {
    FormatToMemory formatter(0);
    int result = 127;
    TestPlatform::inUse().formatBoundedArguments = [&](auto...) { return result; };
    formatInto(formatter, "x");
    EXPECT_EQ(formatter.getLength(), result++);
    EXPECT_THAT([&] { formatInto(formatter, "x"); },
                ThrowsMessage<Exception>("FormatToMemory::vformat(): vsnprintf is broken"));
    EXPECT_EQ(formatter.getLength(), 0);
}
