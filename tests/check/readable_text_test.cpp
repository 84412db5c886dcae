// SPDX-License-Identifier: MIT
#include "check/readable_text.h"

#include "tests/table.h"

class QuotedExcerpt : public TableTest {};

TEST_P(QuotedExcerpt, IsTheBeginningInOneLine) {
    const Columns& row = GetParam().columns;
    EXPECT_EQ(quotedExcerpt(row[0]), row[1]);
}

INSTANTIATE_TABLE(QuotedExcerpt, "quoted_excerpts.txt", 2);
