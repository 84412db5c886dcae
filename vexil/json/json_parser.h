// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/json/json_tokenizer.h"
#include "vexil/json/json_value.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>

namespace vexil {

/// Builds a tree of values from the tokens of a JsonTokenizer. Nesting depth is limited by memory
/// only. Not thread-safe.
class VEXIL_API JsonParser : private NonCopyable {
public:
    /// @p aTokenizer is borrowed and must outlive the parser. Its nextToken() must have been called
    /// once, so that it is positioned on the first token. No option is defined: pass 0 for
    /// @p aOptions. Throws std::bad_alloc.
    JsonParser(JsonTokenizer& aTokenizer, std::int32_t aOptions);
    ~JsonParser();

    /// Parses one value that begins with the current token and returns the tree, owned by the
    /// caller. With @p aExpectEnd only whitespace may follow the value; otherwise the tokenizer is
    /// left on the last token of the value. Throws JsonParserError with one of these messages:
    /// - "no input": a value is expected, but the input has ended,
    /// - "unexpected token": a value is expected, but the token does not begin one,
    /// - "',' or ']' expected": after an element of an array,
    /// - "string expected": the name of a member is not a string,
    /// - "':' expected": after the name of a member,
    /// - "',' or '}' expected": after the value of a member,
    /// - "unexpected characters after value".
    /// Also throws std::bad_alloc, std::length_error "JsonValue: too many entries" for a container
    /// of more than 2147483647 entries, and everything that JsonTokenizer::nextToken() throws.
    /// After a failure no value is left, and the tokenizer must not be used further.
    [[nodiscard]] JsonValue* parse(bool aExpectEnd);

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Parses a text that consists of exactly one value. Throws as JsonParser::parse() does.
[[nodiscard]] VEXIL_API std::unique_ptr<JsonValue> parseJsonText(const ByteRange& aText);

} // namespace vexil
