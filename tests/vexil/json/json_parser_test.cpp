#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_parser.h"

#include <gmock/gmock.h>

using testing::ThrowsMessage;
using vexil::JsonParserError;

TEST(JsonParser, RefusesATextWithItsOwnMessage) {
    forEachRow("rejected_texts.txt", 2, [](const Columns& aRow) {
        EXPECT_THAT([&] { parseText(aRow[0]); }, ThrowsMessage<JsonParserError>(aRow[1]));
    });
}

TEST(JsonParser, BuildsWhatTheTextHolds) {
    forEachRow("texts_written_again.txt", 2, [](const Columns& aRow) {
        EXPECT_EQ(aRow[1], writeText(*parseText(aRow[0])));
        ForeignInputStream stream(aRow[0]);
        vexil::JsonTokenizer tokenizer(stream, 0);
        tokenizer.nextToken();
        EXPECT_EQ(aRow[1], writeText(*JsonTree(vexil::JsonParser(tokenizer, 0).parse(true))));
    });
}

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
