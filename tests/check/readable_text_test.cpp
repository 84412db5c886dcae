// SPDX-License-Identifier: MIT
#include "check/readable_text.h"

#include <gtest/gtest.h>

#include <string>

struct Excerpt {
    const char* name;
    std::string bytes;
    std::string quoted;
};

void PrintTo(const Excerpt& aRow, std::ostream* aStream) {
    *aStream << aRow.name;
}

class QuotedExcerpt : public testing::TestWithParam<Excerpt> {};

TEST_P(QuotedExcerpt, IsTheBeginningInOneLine) {
    EXPECT_EQ(quotedExcerpt(GetParam().bytes), GetParam().quoted);
}

const std::string full = "b" + std::string(158, 'a');

INSTANTIATE_TEST_SUITE_P(Rows, QuotedExcerpt,
                         testing::Values(Excerpt{"Lines", "a\n\"", R"("a\n\"")"},
                                         Excerpt{"Latin1", "\xE9", "\"\u00E9\""},
                                         Excerpt{"GreatestSize", full + "c", '"' + full + "c\""},
                                         Excerpt{"TooLong", full + "cd", '"' + full + "c\"..."},
                                         Excerpt{"CutBeforeACharacter", full + "\u00E9",
                                                 '"' + full + "\"..."}),
                         [](const auto& aRow) { return std::string(aRow.param.name); });
