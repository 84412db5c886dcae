// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vexil {

/// Kinds of tokens. The numbers are part of the interface.
enum class JsonToken : std::int32_t {
    End = 0,
    ArrayBegin = 1,
    ObjectBegin = 2,
    ArrayEnd = 3,
    ObjectEnd = 4,
    Colon = 5,
    Comma = 6,
    Null = 7,
    False = 8,
    True = 9,
    Integer = 10,
    Float = 11,
    String = 12,
    Whitespace = 13,
    Invalid = 14,
};

/// Splits the bytes of a stream into JSON tokens.
///
/// Malformed text does not throw but yields a token of kind Invalid, and scanning continues after
/// it. A number without fraction and exponent is an Integer if it fits 32 bits; every other number
/// is a Float, or Invalid if it is out of the range of a double. Only a lowercase "e" introduces an
/// exponent. An unknown escape in a string is dropped with its backslash; a string that is not
/// valid UTF-8 is Invalid.
///
/// The tokenizer is always one byte ahead: after a token, the stream is positioned one byte past
/// the character that follows it, unless the input has ended. Other streams than MemoryInputStream
/// are read one byte at a time. Not thread-safe.
class VEXIL_API JsonTokenizer : private NonCopyable {
public:
    /// Option bits.
    enum Flags : std::int32_t {
        ReportWhitespace = 1, ///< a run of whitespace is a token instead of being skipped
    };

    /// Reads nothing. @p aStream is borrowed and must outlive the tokenizer; @p aFlags holds option
    /// bits, of which unknown ones are ignored. Throws std::bad_alloc.
    JsonTokenizer(InputStream& aStream, std::int32_t aFlags);
    virtual ~JsonTokenizer();

    /// Scans the next token, makes it current and returns its kind; at the end of the input, End
    /// every time. Throws whatever the stream throws, std::bad_alloc, std::length_error for a text
    /// longer than a std::string can be, and Overflow "UnicodeString32::alloc(): string too long"
    /// for a string of 67108862 bytes or more; the tokenizer must not be used further after that.
    JsonToken nextToken();

    /// The kind of the current token; Invalid before the first call of nextToken().
    JsonToken getToken() const;
    /// The value of an Integer, 0 for any other token.
    std::int32_t getIntegerValue() const;
    /// The value of a Float, 0.0 for any other token.
    double getFloatValue() const;
    /// The decoded content of a String in UTF-8, the characters of any other token (none for End
    /// and Whitespace). Borrowed; valid until the next call of nextToken(). Throws std::bad_alloc
    /// or std::length_error when a long text is first copied from the stream's memory.
    const std::string& getText() const;

private:
    friend class JsonParser; // scans all tokens of a value in one go

    struct State;
    std::unique_ptr<State> mState;
};

} // namespace vexil
