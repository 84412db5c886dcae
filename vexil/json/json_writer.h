// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"
#include "vexil/json/json_value.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <cstdint>
#include <memory>
#include <string>

namespace vexil {

/// Writes trees of values to a stream as compact JSON text in UTF-8. Nesting depth is limited by
/// memory only. Floats have six significant digits and always a decimal point or an exponent of at
/// least two digits, independent of the locale; infinities and NaN are written as the runtime
/// formats them, which is not JSON. Not thread-safe.
class VEXIL_API JsonWriter : private NonCopyable {
public:
    /// Option bits.
    enum Flags : std::int32_t {
        EscapeNonAscii = 1, ///< characters from U+0080 become "\u" escapes; the text is pure ASCII
    };

    /// @p aStream is borrowed and must outlive the writer. Throws InvalidArgument
    /// "JsonWriter: invalid argument aFlags" unless @p aFlags is 0 or EscapeNonAscii, and
    /// std::bad_alloc.
    JsonWriter(OutputStream& aStream, std::int32_t aFlags);
    ~JsonWriter();

    /// Writes the text of @p aValue without a line end. Several values may be written one after the
    /// other; a blank separates two that are both bare words or numbers. Each piece of text (a
    /// bracket, a number, a whole quoted string) is one call of the stream's write().
    ///
    /// Throws EncodingError for a string that is not valid UTF-8, with the messages of
    /// UnicodeString32::assignUtf8(), Overflow "UnicodeString32::alloc(): string too long" for a
    /// string of 67108862 bytes or more, InvalidArgument "size out of range" for a piece of
    /// 2147483648 bytes or more, std::bad_alloc, std::length_error if a text is longer than a
    /// std::string can be, and whatever the stream or a value of a class outside the library
    /// throws. The pieces before the failure stay written, and the writer stays usable.
    ///
    /// Must not be called by a value or by the stream during another call.
    void write(const JsonValue& aValue);

private:
    struct State;
    std::unique_ptr<State> mState;
};

/// Returns the text of @p aValue. Throws what JsonWriter::write() throws, and std::bad_alloc.
[[nodiscard]] VEXIL_API std::string writeJsonText(const JsonValue& aValue);

} // namespace vexil
