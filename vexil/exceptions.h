// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/export.h"

#include <stdexcept>
#include <string>

/// The support library of certbridge.
namespace vexil {

/// Base of the library's exceptions. Holds only its message, in ASCII, which what() returns
/// unchanged. The library also throws std::bad_alloc when memory runs out, and std::length_error or
/// std::out_of_range where an operation documents them.
///
/// Messages have three forms: "Class::operation(): problem" inside an operation, "Class: problem"
/// in a constructor, and the problem alone inside the JSON reader, writer and values.
class VEXIL_API Exception : public std::runtime_error {
public:
    /// @p aMessage is the text that what() returns.
    explicit Exception(const std::string& aMessage) : std::runtime_error(aMessage) {}
};

/// An argument outside its range: a negative length or position, an unknown flag or encoding.
class VEXIL_API InvalidArgument : public Exception {
public:
    using Exception::Exception;
};

/// Text that is not valid in its encoding, or a formatting function of the runtime that failed.
class VEXIL_API EncodingError : public Exception {
public:
    using Exception::Exception;
};

/// Formatted text that exceeds the limit set for it.
class VEXIL_API FormatLimitExceeded : public Exception {
public:
    using Exception::Exception;
};

/// A length or position that exceeds the range of its type.
class VEXIL_API Overflow : public Exception {
public:
    using Exception::Exception;
};

/// JSON text that does not follow the grammar.
class VEXIL_API JsonParserError : public Exception {
public:
    using Exception::Exception;
};

/// An operation that the kind of a JSON value does not support.
class VEXIL_API UnsupportedFunction : public Exception {
public:
    using Exception::Exception;
};

/// A stream operation that the stream class does not provide.
class VEXIL_API NotImplemented : public Exception {
public:
    using Exception::Exception;
};

} // namespace vexil
