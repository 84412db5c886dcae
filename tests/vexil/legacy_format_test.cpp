#include "tests/platform/test_platform.h"
#include "tests/vexil/format_rows.h"

#include <cstring>

using namespace vexil;
using testing::ThrowsMessage;

class LegacyFormat : public OnTestPlatform {
protected:
    // As runtimes did before there was a standard: no terminator where there is no room for it.
    LegacyFormat() {
        TestPlatform::inUse().formatBoundedArguments =
            [this](char* aDest, std::size_t aSize, const char* aFormat, std::va_list aArguments) {
                sizes.push_back(aSize);
                char text[4096];
                const int result = std::vsnprintf(text, sizeof text, aFormat, aArguments);
                const auto length = static_cast<std::size_t>(result);
                std::memcpy(aDest, text, std::min(length + 1, aSize));
                return length > aSize ? -2 : result;
            };
    }

    std::vector<std::size_t> sizes;
};

// The first test: a runtime once found out is never probed again.
TEST_F(LegacyFormat, IsNotMistakenForABrokenRuntime) {
    struct {
        int result;
        const char* bytes;
    } const rows[] = {{6, "1234xxxx"},  {-1, "123\0xxxx"}, {5, "123\0xxxx"}, {3, "123\0xxxx"},
                      {6, "123\0yxxx"}, {-1, "12345xxx"},  {4, "1234xxxx"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.result) + " " + row.bytes);
        const auto legacy = TestPlatform::inUse().formatBoundedArguments;
        TestPlatform::inUse().formatBoundedArguments = [&](char* aDest, auto...) {
            std::memcpy(aDest, row.bytes, 8);
            return row.result;
        };
        EXPECT_THAT([] { FormatToMemory::format("x"); },
                    ThrowsMessage<Exception>("FormatToMemory: snprintf() broken"));
        TestPlatform::inUse().formatBoundedArguments = legacy;
    }
    EXPECT_EQ(FormatToMemory::format("x"), "x");
}

TEST_F(LegacyFormat, KeepsItsLimit) {
    expectLimitsKept();
}

TEST_F(LegacyFormat, DoublesUpToTheLimit) {
    const std::string text(1000, 'x');
    FormatToMemory unlimited(0), limited(300);
    sizes.clear();
    formatInto(unlimited, "%s", text.c_str());
    EXPECT_THAT(sizes, testing::ElementsAre(127, 255, 511, 1023));
    sizes.clear();
    EXPECT_THROW(formatInto(limited, "%s", text.c_str()), FormatLimitExceeded);
    EXPECT_THAT(sizes, testing::ElementsAre(127, 255, 299));
}

TEST_F(LegacyFormat, RefusesALengthThatLeavesNoRoomForTheNull) {
    FormatToMemory formatter(0);
    int result = 127;
    TestPlatform::inUse().formatBoundedArguments = [&](auto...) { return result; };
    formatInto(formatter, "x");
    EXPECT_EQ(formatter.getLength(), 127);
    result = 128;
    EXPECT_THAT([&] { formatInto(formatter, "x"); },
                ThrowsMessage<Exception>("FormatToMemory::vformat(): vsnprintf is broken"));
    EXPECT_EQ(formatter.getLength(), 0);
}

TEST_F(LegacyFormat, EndsWithATextThatNeverFits) {
    FormatToMemory formatter(0);
    std::size_t last = 0;
    TestPlatform::inUse().formatBoundedArguments = [&](char*, std::size_t aSize, auto...) {
        last = aSize;
        return -1;
    };
    try {
        formatInto(formatter, "x");
        FAIL() << "it fits";
    } catch (const std::bad_alloc&) {
        GTEST_SKIP() << "not enough memory to reach the end";
    } catch (const Exception& exception) {
        EXPECT_STREQ(exception.what(), "FormatToMemory::vformat(): overflow");
    }
    EXPECT_EQ(last, 0x7FFFFFFE);
}
