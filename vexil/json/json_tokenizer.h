#pragma once

#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vexil {

/// The kinds of tokens; the numbers are part of the interface.
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
/// Malformed text is no exception but a token of kind Invalid; scanning goes on behind it. A number
/// without fraction and exponent is an Integer if it fits 32 bits, every other number a Float; one
/// that leaves the range of a double is Invalid. Only a lowercase "e" starts an exponent. In a
/// string an unknown escape is dropped together with its backslash; text that is not valid UTF-8 is
/// Invalid.
///
/// The stream is borrowed and must outlive the tokenizer. It is asked for one byte at a time and
/// always stands one byte behind the current token, unless it has ended.
class JsonTokenizer : private NonCopyable {
public:
    /// Option bits. ReportWhitespace: a run of whitespace is a token instead of being skipped.
    enum Flags : std::int32_t { ReportWhitespace = 1 };

    /// Reads nothing yet. @p aFlags holds option bits; others are ignored.
    JsonTokenizer(InputStream& aStream, std::int32_t aFlags);
    virtual ~JsonTokenizer();

    /// Scans the next token, makes it current and returns its kind; End again and again at the end.
    /// Passes on what the stream throws, std::bad_alloc, and Overflow
    /// "UnicodeString32::alloc(): string too long" for a string of 67108862 bytes or more; it is
    /// not to be used after that.
    JsonToken nextToken();

    /// The kind of the current token; Invalid before the first nextToken().
    JsonToken getToken() const;
    /// The value of an Integer, else 0.
    std::int32_t getIntegerValue() const;
    /// The value of a Float, else 0.0.
    double getFloatValue() const;
    /// The decoded content of a String in UTF-8, the characters of any other token (none for End
    /// and Whitespace). Valid until the next nextToken().
    const std::string& getText() const;

private:
    friend class JsonParser; // takes all tokens of a value in one go

    struct State;
    std::unique_ptr<State> mState;
};

} // namespace vexil
