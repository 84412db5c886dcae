// SPDX-License-Identifier: MIT

// Built twice, since the runtime is classified once per process: FORMAT_ROWS is the table for a
// standard runtime or, if LEGACY, for a legacy one.
#include "vexil/format_to_memory.h"

#include "tests/table.h"
#include "tests/vexil/platform/fake_platform.h"

#include <algorithm>
#include <cstring>

using vexil::FormatToMemory;

namespace {

/// The first formatting call of the process classifies the runtime.
int answerProbe(char* aDest) {
    std::memcpy(aDest, LEGACY ? "1234xxxx" : "123\0xxxx", 8);
    return LEGACY ? -1 : 6;
}

TEST(FormatToMemory, RefusesANegativeLimit) {
    EXPECT_EQ(failureOf([] { FormatToMemory(-1); }),
              "InvalidArgument FormatToMemory: invalid argument aLimit");
}

class Formatting : public testing::Test {
protected:
    Formatting() {
        fakeFormatting = [](char* aDest, auto...) { return answerProbe(aDest); };
        FormatToMemory(0);
    }

    /// The runtime returns these results in turn. Its texts are x's, without a terminator if LEGACY
    /// and they fill the buffer.
    void giveResults(const std::vector<int>& aResults) {
        sizes.clear();
        fakeFormatting = [=, this](char* aDest, std::size_t aSize, auto...) {
            const int result = aResults.at(sizes.size());
            sizes.push_back(static_cast<int>(aSize));
            const std::size_t usable = LEGACY ? aSize : aSize - 1;
            const auto end = std::min(static_cast<std::size_t>(result), usable);
            std::fill_n(aDest, std::min<std::size_t>(end, 4096), 'x');
            if (end < aSize) aDest[end] = 0;
            return result;
        };
    }

    static std::string format(FormatToMemory& aFormatter, ...) {
        std::va_list arguments;
        va_start(arguments, aFormatter);
        const auto failure = failureOf([&] { aFormatter.vformat("", arguments); });
        va_end(arguments);
        return failure;
    }

    std::vector<int> sizes;
};

/// A row is a limit, the results of the runtime, the sizes passed to it, and the failure.
class FormattingCalls : public Formatting, public testing::WithParamInterface<TableRow> {
protected:
    const std::vector<int> results = numbersOf(GetParam().columns[1]);
    const std::string& failure = GetParam().columns[3];
};

TEST_P(FormattingCalls, HaveTheExpectedBufferSizesAndOutcome) {
    const std::string& limit = GetParam().columns[0];
    const std::vector<int> expectedSizes = numbersOf(GetParam().columns[2]);
    if (sizeof(void*) == 4 && expectedSizes.back() == 2147483646) {
        GTEST_SKIP() << "a 32-bit process has no buffer of this size";
    }
    FormatToMemory formatter(std::stoi(limit));
    giveResults(results);
    EXPECT_EQ(format(formatter), failure);
    EXPECT_EQ(sizes, expectedSizes);
    EXPECT_EQ(formatter.getLength(), failure.empty() ? results.back() : 0);
    if (failure.empty()) {
        EXPECT_EQ(formatter.getBuffer(),
                  std::string(static_cast<std::size_t>(results.back()), 'x'));
    }
    if (limit == "0") {
        giveResults(results);
        std::string text;
        EXPECT_EQ(failureOf([&] { text = FormatToMemory::format(""); }), failure);
        EXPECT_EQ(sizes, expectedSizes);
        EXPECT_EQ(text.size(), failure.empty() ? static_cast<std::size_t>(results.back()) : 0);
    }
}

TEST_F(Formatting, ReplacesTheTextInTheSameBuffer) {
    FormatToMemory formatter(0);
    giveResults(LEGACY ? std::vector{-1, 200, 0} : std::vector{200, 200, 0});
    EXPECT_EQ(format(formatter), "");
    const void* const buffer = formatter.getBuffer();
    EXPECT_EQ(format(formatter), "");
    EXPECT_STREQ(formatter.getBuffer(), "");
    EXPECT_EQ(formatter.getBuffer(), buffer);
}

INSTANTIATE_TABLE(FormattingCalls, FORMAT_ROWS, 4);

} // namespace
