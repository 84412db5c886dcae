// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_parser.h"

#include <gmock/gmock.h>

using testing::ThrowsMessage;
using vexil::JsonParserError;

class JsonParserRefusals : public TableTest {};

TEST_P(JsonParserRefusals, HaveTheirOwnMessage) {
    const Columns& row = GetParam().columns;
    EXPECT_THAT([&] { parseText(row[0]); }, ThrowsMessage<JsonParserError>(row[1]));
}

INSTANTIATE_TABLE(JsonParserRefusals, "rejected_texts.txt", 2);

class JsonParserTrees : public TableTest {};

TEST_P(JsonParserTrees, AreWrittenAsExpected) {
    const Columns& row = GetParam().columns;
    EXPECT_EQ(row[1], writeText(*parseText(row[0])));
    ForeignInputStream stream(row[0]);
    vexil::JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    EXPECT_EQ(row[1], writeText(*JsonTree(vexil::JsonParser(tokenizer, 0).parse(true))));
}

INSTANTIATE_TABLE(JsonParserTrees, "texts_written_again.txt", 2);

TEST(JsonParser, WithoutTheEndCheckStaysOnTheLastToken) {
    const std::string text = "[1,{}] \"a\" 7 x";
    vexil::MemoryInputStream stream{vexil::ByteRange(text)};
    vexil::JsonTokenizer tokenizer(stream, 0);
    vexil::JsonParser parser(tokenizer, 0);
    EXPECT_THAT([&] { JsonTree(parser.parse(false)); },
                ThrowsMessage<JsonParserError>("unexpected token"));
    for (const char* const expected : {"[1,{}]", "\"a\"", "7"}) {
        tokenizer.nextToken();
        EXPECT_EQ(expected, writeText(*JsonTree(parser.parse(false))));
    }
    EXPECT_EQ("7", tokenizer.getText());
}
