// Built twice, since the runtime is classified once per process: FORMAT_ROWS is the table for a
// standard runtime or, if LEGACY, for a legacy one.
#include "vexil/format_to_memory.h"

#include "tests/table.h"
#include "tests/vexil/platform/fake_platform.h"

#include <algorithm>
#include <cstring>

using vexil::FormatToMemory;

class FormatToMemoryTest : public testing::Test {
protected:
    void answerProbe() {
        fakeFormatting = [](char* aDest, auto...) {
            std::memcpy(aDest, LEGACY ? "1234xxxx" : "123\0xxxx", 8);
            return LEGACY ? -1 : 6;
        };
    }

    /// The runtime returns these results in turn. Its texts are x's, without a terminator if LEGACY
    /// and they fill the buffer.
    void giveResults(const std::vector<int>& aResults) {
        rooms.clear();
        fakeFormatting = [=, this](char* aDest, std::size_t aSize, auto...) {
            const int result = aResults.at(rooms.size());
            rooms.push_back(int(aSize));
            const std::size_t room = aSize - !LEGACY;
            const auto end = std::min(std::size_t(result), room);
            std::fill_n(aDest, std::min<std::size_t>(end, 4096), 'x');
            if (end < aSize) aDest[end] = 0;
            return result;
        };
    }

    std::string format(FormatToMemory& aFormatter, ...) {
        std::va_list arguments;
        va_start(arguments, aFormatter);
        const auto failure = failureOf([&] { aFormatter.vformat("", arguments); });
        va_end(arguments);
        EXPECT_TRUE(failure.empty() || aFormatter.getLength() == 0);
        return failure;
    }

    std::vector<int> rooms;
};

TEST_F(FormatToMemoryTest, RefusesANegativeLimit) {
    EXPECT_EQ(failureOf([] { FormatToMemory(-1); }),
              "InvalidArgument FormatToMemory: invalid argument aLimit");
}

TEST_F(FormatToMemoryTest, EnlargesTheBufferUntilTheTextFits) {
    forEachRow(FORMAT_ROWS, 4, [this](const Columns& aRow) {
        if (sizeof(void*) == 4 && aRow[2].ends_with("2147483646")) return; // no such buffer here
        answerProbe();
        FormatToMemory formatter(std::stoi(aRow[0]));
        const auto results = numbersOf(aRow[1]);
        giveResults(results);
        EXPECT_EQ(format(formatter), aRow[3]);
        EXPECT_EQ(rooms, numbersOf(aRow[2]));
        if (aRow[3].empty()) {
            EXPECT_EQ(formatter.getBuffer(), std::string(std::size_t(results.back()), 'x'));
            EXPECT_EQ(formatter.getLength(), results.back());
            const void* const buffer = formatter.getBuffer();
            giveResults({0});
            EXPECT_EQ(format(formatter), "");
            EXPECT_STREQ(formatter.getBuffer(), "");
            EXPECT_EQ(formatter.getBuffer(), buffer);
        }
        if (aRow[0] != "0") return;
        giveResults(results);
        std::string text;
        EXPECT_EQ(failureOf([&] { text = FormatToMemory::format(""); }), aRow[3]);
        EXPECT_TRUE(text.size() == std::size_t(results.back()) || !aRow[3].empty());
    });
}
