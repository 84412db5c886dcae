#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_parser.h"

#include <gmock/gmock.h>

#include <string>

using testing::ThrowsMessage;
using vexil::JsonParserError;

namespace {

struct RejectedText {
    const char* text;
    const char* message;
};

class JsonParserRejects : public testing::TestWithParam<RejectedText> {};

TEST_P(JsonParserRejects, WithItsOwnMessage) {
    EXPECT_THAT([] { parseText(GetParam().text); },
                ThrowsMessage<JsonParserError>(GetParam().message))
        << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Grammar, JsonParserRejects,
    testing::Values(
        RejectedText{"", "no input"}, RejectedText{" \r\n", "no input"},
        RejectedText{"[", "no input"}, RejectedText{"[1,", "no input"},
        RejectedText{"{", "no input"}, RejectedText{"{\"a\":", "no input"},
        RejectedText{"{\"a\":1,", "no input"}, RejectedText{"]", "unexpected token"},
        RejectedText{"[,", "unexpected token"}, RejectedText{"[1,]", "unexpected token"},
        RejectedText{"{\"a\":1,}", "unexpected token"}, RejectedText{":", "unexpected token"},
        RejectedText{"nul", "unexpected token"}, RejectedText{"-", "unexpected token"},
        RejectedText{"01", "unexpected token"}, RejectedText{"\"a", "unexpected token"},
        RejectedText{"[\"\t\"]", "unexpected token"}, RejectedText{"[1", "',' or ']' expected"},
        RejectedText{"[1 2]", "',' or ']' expected"}, RejectedText{"[1}", "',' or ']' expected"},
        RejectedText{"{1:2}", "string expected"}, RejectedText{"{null:2}", "string expected"},
        RejectedText{"{[1,{}]:2}", "string expected"}, RejectedText{"{{}}", "string expected"},
        RejectedText{"{\"a\":1,true:2}", "string expected"},
        RejectedText{"{[1}", "',' or ']' expected"}, RejectedText{"{\"a\"", "':' expected"},
        RejectedText{"{\"a\" 1}", "':' expected"}, RejectedText{"{\"a\":1", "',' or '}' expected"},
        RejectedText{"{\"a\":1 \"b\":2}", "',' or '}' expected"},
        RejectedText{"{\"a\":1]", "',' or '}' expected"},
        RejectedText{"1 2", "unexpected characters after value"},
        RejectedText{"{} x", "unexpected characters after value"},
        RejectedText{"1E5", "unexpected characters after value"}));

TEST(JsonParser, BuildsWhatTheTextHolds) {
    for (const char* const text :
         {"[]", "{}", "[[],[{}],{\"a\":[1,{\"b\":null}]}]", "{\"a\":1,\"a\":2,\"\":\"\\u0000\"}",
          "[2147483647,2.14748e+09,true,false,-0.5]", "\"x\""}) {
        EXPECT_EQ(text, writeText(*parseText(std::string(" \n") + text + "\t\r ")));
        ForeignInputStream stream(text);
        vexil::JsonTokenizer tokenizer(stream, 0);
        tokenizer.nextToken();
        EXPECT_EQ(text, writeText(*JsonTree(vexil::JsonParser(tokenizer, 0).parse(true))));
    }
    EXPECT_EQ(vexil::JsonType::Float, parseText("2147483648")->getType());
}

TEST(JsonParser, WithoutTheEndCheckStaysOnTheLastToken) {
    const std::string text = "[1,{}] \"a\" 7 x";
    vexil::MemoryInputStream stream{vexil::ByteRange(text)};
    vexil::JsonTokenizer tokenizer(stream, 0);
    vexil::JsonParser parser(tokenizer, 0);
    EXPECT_THAT([&] { parser.parse(false); }, ThrowsMessage<JsonParserError>("unexpected token"));
    for (const char* const expected : {"[1,{}]", "\"a\"", "7"}) {
        tokenizer.nextToken();
        EXPECT_EQ(expected, writeText(*JsonTree(parser.parse(false))));
    }
    EXPECT_EQ("7", tokenizer.getText());
}

TEST(JsonParser, LeavesNothingBehindWhenADeepTextBreaksOff) {
    EXPECT_THAT([] { parseText(std::string(1000000, '[')); },
                ThrowsMessage<JsonParserError>("no input"));
    EXPECT_THAT([] { parseText(std::string(1000000, '{')); },
                ThrowsMessage<JsonParserError>("no input"));
}

} // namespace
