#pragma once

#include "vexil/json/json_tokenizer.h"

#include <cstdint>
#include <string>
#include <string_view>

// Private to the JSON library.

namespace vexil {

constexpr int endOfInput = -1;
constexpr int nothingRead = -2;

/// The current token and where scanning stands.
struct Scan {
    int current = nothingRead; ///< the character behind the token: 0 to 255 or one of the above
    JsonToken token = JsonToken::Invalid;
    std::string_view text; ///< of the token: in the buffer, in the block being read, or constant
    std::string buffer;    ///< reused from token to token; it may be longer than a text in it
    std::int32_t integerValue = 0; ///< of an Integer, else anything
    double floatValue = 0.0;       ///< of a Float, else anything

    /// The text as a string, in the buffer from then on.
    const std::string& bringTextToBuffer() {
        if (text.data() != buffer.data()) buffer.assign(text);
        buffer.resize(text.size());
        text = buffer;
        return buffer;
    }
};

} // namespace vexil
