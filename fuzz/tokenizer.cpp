// SPDX-License-Identifier: MIT

// Tokens are the same whatever the stream and whether or not white space is reported.
#include "fuzz/require.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/json/json_tokenizer.h"

#include <algorithm>
#include <bit>
#include <vector>

using namespace vexil;

namespace {

struct Token {
    JsonToken kind;
    std::string text;
    std::int32_t integerValue;
    std::uint64_t floatBits;
    std::int32_t position;

    bool operator==(const Token&) const = default;
};

Token currentToken(const JsonTokenizer& aTokenizer, InputStream& aStream) {
    return {aTokenizer.getToken(), aTokenizer.getText(), aTokenizer.getIntegerValue(),
            std::bit_cast<std::uint64_t>(aTokenizer.getFloatValue()), aStream.tell()};
}

std::vector<Token> readTokens(InputStream& aStream, std::int32_t aFlags) {
    JsonTokenizer tokenizer(aStream, aFlags);
    std::vector<Token> tokens;
    std::int32_t position = -1;
    while (tokenizer.nextToken() != JsonToken::End) {
        tokens.push_back(currentToken(tokenizer, aStream));
        const bool hasMoved = tokens.back().position > position;
        require(hasMoved || aStream.available() == 0, "each token takes something");
        position = tokens.back().position;
    }
    tokens.push_back(currentToken(tokenizer, aStream));
    require(tokenizer.nextToken() == JsonToken::End, "the end stays the end");
    return tokens;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    std::vector<Token> tokens[2];
    for (const std::int32_t flags : {0, std::int32_t{JsonTokenizer::ReportWhitespace}}) {
        MemoryInputStream memory(ByteRange(aData, aSize));
        tokens[flags] = readTokens(memory, flags);
        ForeignInputStream foreign({aData, aData + aSize});
        require(readTokens(foreign, flags) == tokens[flags], "every stream gives the same tokens");
        require(foreign.onlySingleBytes, "a stream is asked for one byte at a time");
    }
    std::erase_if(tokens[1],
                  [](const Token& aToken) { return aToken.kind == JsonToken::Whitespace; });
    require(tokens[0] == tokens[1], "reported white space changes no other token");
    return 0;
}
