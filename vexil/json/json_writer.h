#pragma once

#include "vexil/json/json_value.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vexil {

/// Writes trees of values to a stream as compact JSON text in UTF-8. No limit on the depth but
/// memory. Floats have six significant digits and always a point or an exponent of at least two
/// digits, whatever the locale; infinities and NaN come out as the runtime names them, which is not
/// JSON.
class JsonWriter : private NonCopyable {
public:
    /// EscapeNonAscii: characters from U+0080 on become "\u" escapes, so the text is plain ASCII.
    enum Flags : std::int32_t { EscapeNonAscii = 1 };

    /// @p aStream is borrowed and must outlive the writer. Throws InvalidArgument
    /// "JsonWriter: invalid argument aFlags" unless @p aFlags is 0 or EscapeNonAscii.
    JsonWriter(OutputStream& aStream, std::int32_t aFlags);
    ~JsonWriter();

    /// Writes the text of @p aValue, without a line end. Several values may follow each other; a
    /// blank parts two bare words or numbers. Each piece of text (a bracket, a number, a whole
    /// quoted string) is one write of the stream. Throws EncodingError for a string that is not
    /// valid UTF-8 (the texts of UnicodeString32::assignUtf8()), InvalidArgument "size out of
    /// range" for a piece of 2147483648 bytes or more, and what the stream throws; the pieces
    /// before stay written and the writer stays usable.
    void write(const JsonValue& aValue);

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Returns the text of @p aValue. Throws what JsonWriter::write() throws, and std::bad_alloc.
[[nodiscard]] std::string writeJsonText(const JsonValue& aValue);

} // namespace vexil
