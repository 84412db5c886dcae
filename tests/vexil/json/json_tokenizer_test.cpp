#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_tokenizer.h"

#include <gmock/gmock.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <string>

using namespace std::string_literals;
using testing::ThrowsMessage;
using vexil::JsonToken;
using vexil::JsonTokenizer;

namespace {

constexpr const char* tokenNames[] = {"End",   "[",    "{", "]", "}", ":",     ",",      "null",
                                      "false", "true", "I", "F", "S", "Space", "Invalid"};

struct Description {
    std::string tokens;    ///< the kind of each, and its text where that differs
    std::string positions; ///< of the stream, behind each token
};

Description describeTokens(vexil::InputStream& aStream, std::int32_t aFlags) {
    JsonTokenizer tokenizer(aStream, aFlags);
    Description all;
    EXPECT_EQ(JsonToken::Invalid, tokenizer.getToken());
    do {
        const JsonToken token = tokenizer.nextToken();
        const std::string& text = tokenizer.getText();
        const std::string name = tokenNames[static_cast<int>(token)];
        EXPECT_EQ(token, tokenizer.getToken());
        EXPECT_EQ(token == JsonToken::Integer ? std::atol(text.c_str()) : 0,
                  tokenizer.getIntegerValue());
        EXPECT_EQ(std::bit_cast<std::uint64_t>(
                      token == JsonToken::Float ? std::strtod(text.c_str(), nullptr) : 0.0),
                  std::bit_cast<std::uint64_t>(tokenizer.getFloatValue()))
            << text;
        const bool isEmpty = token == JsonToken::End || token == JsonToken::Whitespace;
        all.tokens += name + (isEmpty || text == name ? "" : "<" + text + ">") + " ";
        EXPECT_TRUE(!isEmpty || text.empty()) << text;
        all.positions += std::to_string(aStream.tell()) + " ";
    } while (tokenizer.getToken() != JsonToken::End);
    EXPECT_EQ(JsonToken::End, tokenizer.nextToken());
    return all;
}

struct TokenRow {
    std::string text;
    std::string tokens; ///< without the End that each row has
    std::int32_t flags = 0;
};

class JsonTokenizerRows : public testing::TestWithParam<TokenRow> {};

TEST_P(JsonTokenizerRows, GiveTheSameTokensFromMemoryAndFromAnyStream) {
    errno = ERANGE; // left behind by somebody else
    const TokenRow& row = GetParam();
    vexil::MemoryInputStream memory{vexil::ByteRange(row.text)};
    const Description fromMemory = describeTokens(memory, row.flags);
    EXPECT_EQ(row.tokens + "End ", fromMemory.tokens);
    for (const int end : {0, -1, 2}) {
        ForeignInputStream foreign(row.text, end);
        const Description fromForeign = describeTokens(foreign, row.flags);
        EXPECT_EQ(fromMemory.tokens, fromForeign.tokens);
        EXPECT_EQ(fromMemory.positions, fromForeign.positions);
        EXPECT_TRUE(foreign.onlySingleBytes);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Structure, JsonTokenizerRows,
    testing::Values(TokenRow{"", ""}, TokenRow{" \t\r\n", ""}, TokenRow{"\t\r\n [", "[ "},
                    TokenRow{"[]{}:,", "[ ] { } : , "}, TokenRow{"\v1", "Invalid<\v> I<1> "},
                    TokenRow{"\f", "Invalid<\f> "}, TokenRow{"\0"s, "Invalid<\0> "s},
                    TokenRow{"\xFE\xFF", "Invalid<\xFE> Invalid<\xFF> "},
                    TokenRow{" \n1  2", "Space I<1> Space I<2> ", 1}, TokenRow{" ", "Space ", 3},
                    TokenRow{"1 2", "I<1> I<2> ", 2}, TokenRow{"true1", "true I<1> "},
                    TokenRow{"false null", "false null "}, TokenRow{"truex", "Invalid<truex> "},
                    TokenRow{"nul nulls", "Invalid<nul> Invalid<nulls> "},
                    TokenRow{"True", "Invalid<T> Invalid<rue> "}));

INSTANTIATE_TEST_SUITE_P(
    Numbers, JsonTokenizerRows,
    testing::Values(
        TokenRow{"0 -0 10", "I<0> I<-0> I<10> "},
        TokenRow{"2147483647 -2147483648", "I<2147483647> I<-2147483648> "},
        TokenRow{"2147483648 -2147483649", "F<2147483648> F<-2147483649> "},
        TokenRow{"1.5 1e5 1e+5 1e-5 -0.0", "F<1.5> F<1e5> F<1e+5> F<1e-5> F<-0.0> "},
        TokenRow{"0.0 0e5 4.9e-324", "F<0.0> F<0e5> F<4.9e-324> "},
        TokenRow{"1E5", "I<1> Invalid<E> I<5> "}, TokenRow{"12abc", "I<12> Invalid<abc> "},
        TokenRow{"01 -01", "Invalid<0> I<1> Invalid<-0> I<1> "}, TokenRow{"-", "Invalid<-> "},
        TokenRow{"-a", "Invalid<-> Invalid<a> "}, TokenRow{"1.", "Invalid<1.> "},
        TokenRow{"1.e5", "Invalid<1.> Invalid<e> I<5> "}, TokenRow{"1e", "Invalid<1e> "},
        TokenRow{"1e+", "Invalid<1e+> "}, TokenRow{"1e-,", "Invalid<1e-> , "},
        TokenRow{".5", "Invalid<.> I<5> "}, TokenRow{"+1", "Invalid<+> I<1> "},
        TokenRow{"1e400 ,", "Invalid<1e400> , "}, TokenRow{"1e-400", "Invalid<1e-400> "},
        TokenRow{"1e99999999999", "Invalid<1e99999999999> "},
        TokenRow{"0e99999999999", "Invalid<0e99999999999> "}));

INSTANTIATE_TEST_SUITE_P(
    Strings, JsonTokenizerRows,
    testing::Values(
        TokenRow{R"("")", "S<> "}, TokenRow{R"("a\u00e9b")", "S<a\u00e9b> "},
        TokenRow{R"("\uD83D\uDe00")", "S<\U0001F600> "}, TokenRow{R"("\u0000")", "S<\0> "s},
        TokenRow{R"("\"\\\/\b\f\n\r\t")", "S<\"\\/\b\f\n\r\t> "}, TokenRow{R"("a\qb")", "S<ab> "},
        TokenRow{"\"a\\\nb\"", "S<ab> "}, TokenRow{"\"a\\\xC3\xA9\"", "Invalid<a\xA9> "},
        TokenRow{"\"0123456789\x7F\"1", "S<0123456789\x7F> I<1> "},
        TokenRow{"\"\xC3\xA9\"", "S<\xC3\xA9> "}, TokenRow{"\"\xFF\"", "Invalid<\xFF> "},
        TokenRow{"\"\xC3\",", "Invalid<\xC3> , "}, TokenRow{"\"abcdefgh", "Invalid<abcdefgh> "},
        TokenRow{"\"abcdefgh\t1", "Invalid<abcdefgh> I<1> "},
        TokenRow{"\"\x1F\"", "Invalid<> Invalid<\x1F> Invalid<> "},
        TokenRow{"\"\0\""s, "Invalid<> Invalid<\0> Invalid<> "s}, TokenRow{"\"a\\", "Invalid<a> "},
        TokenRow{R"("\u12)", "Invalid<> "},
        TokenRow{R"("\u12g4 1)", "Invalid<> Invalid<g> I<4> I<1> "},
        TokenRow{R"("\uD83D")", "Invalid<> Invalid<> "},
        TokenRow{R"("\uD83Dx)", "Invalid<> Invalid<x> "},
        TokenRow{R"("\uD83D\n)", "Invalid<> Invalid<n> "},
        TokenRow{R"("\uD83D\u0041 )", "Invalid<> I<1> "},
        TokenRow{R"("\uDE00 )", "Invalid<> I<0> "},
        TokenRow{R"("\uD83D\uD83D1)", "Invalid<> Invalid<D> I<1> "},
        TokenRow{"\"12345678\xF0\x9F\x98\x80\"", "S<12345678\xF0\x9F\x98\x80> "},
        TokenRow{"\"12345678\xED\xA0\x80\"", "Invalid<12345678\xED\xA0\x80> "}));

TEST(JsonTokenizer, GoesOnWhereTheStreamWasMovedTo) {
    const std::string text = R"(["aaaaaaaaaa","bbbbbbbbbb"])";
    vexil::MemoryInputStream stream{vexil::ByteRange(text)};
    JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    EXPECT_EQ(2, stream.tell()); // one byte behind the bracket has been read: the quotation mark
    stream.seek(15);
    EXPECT_EQ(JsonToken::String, tokenizer.nextToken());
    EXPECT_EQ("bbbbbbbbbb", tokenizer.getText());
}

TEST(JsonTokenizer, PassesOnAStringTooLongForUnicodeText) {
    const std::string longest(67108861, 'a');
    const std::string tooLong = "\"a" + longest + "\"";
    EXPECT_EQ(longest, parseText("\"" + longest + "\"")->getString());
    EXPECT_THAT([&] { parseText(tooLong); },
                ThrowsMessage<vexil::Overflow>("UnicodeString32::alloc(): string too long"));
}

} // namespace
