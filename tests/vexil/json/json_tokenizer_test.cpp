// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_tokenizer.h"

#include <gmock/gmock.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <string>

using testing::ThrowsMessage;
using vexil::JsonToken;
using vexil::JsonTokenizer;

namespace {

constexpr const char* tokenNames[] = {"End",   "[",    "{", "]", "}", ":",     ",",      "null",
                                      "false", "true", "I", "F", "S", "Space", "Invalid"};

struct Description {
    std::string tokens;    ///< the kind of each, and its text if that differs
    std::string positions; ///< of the stream, after each token
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
        all.tokens += (all.tokens.empty() ? "" : " ") + name;
        if (!isEmpty && text != name) all.tokens += "<" + text + ">";
        EXPECT_TRUE(!isEmpty || text.empty()) << text;
        all.positions += std::to_string(aStream.tell()) + " ";
    } while (tokenizer.getToken() != JsonToken::End);
    EXPECT_EQ(JsonToken::End, tokenizer.nextToken());
    return all;
}

class JsonTokens : public TableTest {};

TEST_P(JsonTokens, AreTheSameFromMemoryAndFromAnyStream) {
    const Columns& row = GetParam().columns;
    errno = ERANGE; // left by an earlier call
    const int flags = std::atoi(row[1].c_str());
    vexil::MemoryInputStream memory{vexil::ByteRange(row[0])};
    const Description fromMemory = describeTokens(memory, flags);
    EXPECT_EQ(row[2] + (row[2].empty() ? "End" : " End"), fromMemory.tokens);
    for (const int end : {0, -1, 2}) {
        ForeignInputStream foreign(row[0], end);
        const Description fromForeign = describeTokens(foreign, flags);
        EXPECT_EQ(fromMemory.tokens, fromForeign.tokens);
        EXPECT_EQ(fromMemory.positions, fromForeign.positions);
        EXPECT_TRUE(foreign.onlySingleBytes);
    }
}

INSTANTIATE_TABLE(JsonTokens, "tokens.txt", 3);

TEST(JsonTokenizer, GoesOnWhereTheStreamWasMovedTo) {
    const std::string text = R"(["aaaaaaaaaa","bbbbbbbbbb"])";
    vexil::MemoryInputStream stream{vexil::ByteRange(text)};
    JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    EXPECT_EQ(2, stream.tell()); // the quotation mark after the bracket has been read
    stream.seek(15);
    EXPECT_EQ(JsonToken::String, tokenizer.nextToken());
    EXPECT_EQ("bbbbbbbbbb", tokenizer.getText());
}

TEST(JsonTokenizer, PassesOnAStringTooLongForUnicodeText) {
    const std::string tooLong = "[\"" + std::string(67108862, 'a') + "\"]";
    vexil::MemoryInputStream stream{vexil::ByteRange(tooLong)};
    JsonTokenizer tokenizer(stream, 0);
    tokenizer.nextToken();
    EXPECT_THAT([&] { tokenizer.nextToken(); },
                ThrowsMessage<vexil::Overflow>("UnicodeString32::alloc(): string too long"));
    EXPECT_EQ(JsonToken::Invalid, tokenizer.getToken());
}

} // namespace
