#include "tests/failing_memory.h"
#include "tests/platform/test_platform.h"
#include "tests/vexil/format_rows.h"

using namespace vexil;
using testing::ThrowsMessage;

TEST(FormatToMemory, KeepsItsLimit) {
    expectLimitsKept();
    EXPECT_THAT([] { FormatToMemory(-1); },
                ThrowsMessage<InvalidArgument>("FormatToMemory: invalid argument aLimit"));
}

TEST(FormatToMemory, ReplacesTheTextInTheSameBuffer) {
    FormatToMemory formatter(0);
    EXPECT_EQ(formatter.getBuffer(), nullptr);
    formatInto(formatter, "%300d", 1);
    const void* const buffer = formatter.getBuffer();
    formatInto(formatter, "%d", 2);
    EXPECT_STREQ(formatter.getBuffer(), "2");
    EXPECT_EQ(formatter.getBuffer(), buffer);
}

TEST(FormatToMemory, FormatsAString) {
    EXPECT_EQ(FormatToMemory::format("GetProcAddress failed, error %ld%c", 127L, 0),
              std::string("GetProcAddress failed, error 127\0", 33));
}

TEST(FormatToMemory, SurvivesFailingMemory) {
    for (const long count : {0, 1}) {
        FormatToMemory formatter(0);
        EXPECT_THROW(
            {
                const FailingMemory memory(count);
                formatInto(formatter, "%300d", 1);
            },
            std::bad_alloc);
        EXPECT_EQ(formatter.getLength(), 0);
        formatInto(formatter, "%300d", 1);
        EXPECT_EQ(formatter.getLength(), 300);
    }
}

struct RuntimeFault {
    const char* name;
    std::vector<int> results; // of one formatting call after the other
    testing::Matcher<std::function<void()>> failure;
};
class FormatToMemoryReports : public OnTestPlatform,
                              public testing::WithParamInterface<RuntimeFault> {};
TEST_P(FormatToMemoryReports, AFaultOfTheRuntime) {
    FormatToMemory formatter(0);
    formatInto(formatter, "%d", 1);
    auto next = GetParam().results.begin();
    TestPlatform::inUse().formatBoundedArguments = [&](auto...) { return *next++; };
    EXPECT_THAT([&] { formatInto(formatter, "%d", 2); }, GetParam().failure);
    EXPECT_EQ(formatter.getLength(), 0);
    EXPECT_EQ(next, GetParam().results.end());
}
INSTANTIATE_TEST_SUITE_P(
    Results, FormatToMemoryReports,
    testing::Values(
        RuntimeFault{"Negative",
                     {-2},
                     ThrowsMessage<EncodingError>("FormatToMemory::vformat(): vsnprintf() failed")},
        RuntimeFault{"NegativeLater",
                     {128, -1},
                     ThrowsMessage<EncodingError>("FormatToMemory::vformat(): vsnprintf() failed")},
        RuntimeFault{"Largest",
                     {0x7FFFFFFF},
                     ThrowsMessage<Exception>("FormatToMemory::vformat(): overflow")},
        RuntimeFault{
            "LongerLater",
            {300, 301},
            ThrowsMessage<Exception>("FormatToMemory::vformat(): vsnprintf() is inconsistent")}),
    [](const auto& aRow) { return std::string(aRow.param.name); });
