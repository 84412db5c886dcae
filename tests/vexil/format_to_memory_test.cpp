#include "tests/platform/test_platform.h"
#include "tests/vexil/format_rows.h"

using namespace vexil;
using testing::ThrowsMessage;

class FormatToMemoryTest : public OnTestPlatform {
protected:
    FormatToMemory formatter{0};
};

TEST_F(FormatToMemoryTest, KeepsItsLimit) {
    expectLimitsKept();
    EXPECT_THAT([] { FormatToMemory(-1); },
                ThrowsMessage<InvalidArgument>("FormatToMemory: invalid argument aLimit"));
}

TEST_F(FormatToMemoryTest, ReplacesTheTextInTheSameBuffer) {
    EXPECT_EQ(formatter.getBuffer(), nullptr);
    formatInto(formatter, "%300d", 1);
    const void* const buffer = formatter.getBuffer();
    formatInto(formatter, "%d", 2);
    EXPECT_STREQ(formatter.getBuffer(), "2");
    EXPECT_EQ(formatter.getBuffer(), buffer);
    EXPECT_EQ(FormatToMemory::format("%ld%c", 127L, 0), std::string("127\0", 4));
}

TEST_F(FormatToMemoryTest, ReportsAFaultOfTheRuntime) {
    const std::tuple<std::vector<int>, testing::Matcher<std::function<void()>>> rows[] = {
        {{-2}, ThrowsMessage<EncodingError>("FormatToMemory::vformat(): vsnprintf() failed")},
        {{128, -1}, ThrowsMessage<EncodingError>("FormatToMemory::vformat(): vsnprintf() failed")},
        {{0x7FFFFFFF}, ThrowsMessage<Exception>("FormatToMemory::vformat(): overflow")},
        {{300, 301},
         ThrowsMessage<Exception>("FormatToMemory::vformat(): vsnprintf() is inconsistent")}};
    for (const auto& [results, fails] : rows) {
        auto next = results.begin();
        TestPlatform::inUse().formatBoundedArguments = [&](auto...) { return *next++; };
        FormatToMemory faulty(0);
        EXPECT_THAT([&] { formatInto(faulty, "x"); }, fails) << testing::PrintToString(results);
        EXPECT_EQ(faulty.getLength(), 0);
        EXPECT_EQ(next, results.end());
        next = results.begin();
        EXPECT_THAT([] { FormatToMemory::format("x"); }, fails);
    }
}
