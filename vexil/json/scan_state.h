// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>

// Private to the JSON library.

namespace vexil {

// Values of ScanState::lookahead and of a source's current character that are not bytes.
constexpr int endOfInput = -1;
constexpr int nothingRead = -2;

/// The current token of a tokenizer, and the character after it.
struct ScanState {
    int lookahead = nothingRead; ///< the character after the token: 0 to 255, or as above
    JsonToken token = JsonToken::Invalid;
    std::string_view text; ///< of the token: in the buffer, in the block being read, or constant
    std::string buffer;    ///< reused from token to token; may be longer than a text in it
    std::int32_t integerValue = 0; ///< of an Integer; otherwise unspecified
    double floatValue = 0.0;       ///< of a Float; otherwise unspecified

    /// The token's text as a string, in the buffer from then on. Throws std::bad_alloc or
    /// std::length_error.
    const std::string& moveTextToBuffer() {
        if (text.data() != buffer.data()) buffer.assign(text);
        buffer.resize(text.size());
        text = buffer;
        return buffer;
    }
};

} // namespace vexil
