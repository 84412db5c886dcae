#pragma once

#include "vexil/json/json_tokenizer.h"
#include "vexil/json/json_value.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>

namespace vexil {

/// Turns the tokens of a tokenizer into a tree of values. No limit on the depth but memory.
class JsonParser : private NonCopyable {
public:
    /// @p aTokenizer is borrowed and must outlive the parser; it must stand on the first token, so
    /// its nextToken() has been called once. No option is defined: pass 0.
    JsonParser(JsonTokenizer& aTokenizer, std::int32_t aOptions);
    ~JsonParser();

    /// Parses one value from the current token on and returns the tree, owned by the caller. With
    /// @p aExpectEnd only white space may follow; without it the tokenizer is left standing on the
    /// value's last token. Throws JsonParserError with one of
    /// - "no input": a value is due and the text has ended,
    /// - "unexpected token": a value is due and none begins here,
    /// - "',' or ']' expected", "',' or '}' expected", "':' expected",
    /// - "string expected": a member's name is something else,
    /// - "unexpected characters after value";
    /// passes on what the tokenizer throws. A failed parse leaves no tree behind.
    JsonValue* parse(bool aExpectEnd);

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Parses a text that holds exactly one value. Throws what JsonParser::parse() throws.
std::unique_ptr<JsonValue> parseJsonText(const ByteRange& aText);

} // namespace vexil
