#pragma once

#include "vexil/export.h"

#include <stdexcept>
#include <string>

/// The support library of certbridge.
namespace vexil {

/// Base of everything the library throws by itself. Holds its message and nothing else; what()
/// returns it unchanged, plain ASCII. Running out of memory is std::bad_alloc instead.
///
/// Messages have three forms: "Class::operation(): problem" inside an operation, "Class: problem"
/// in a constructor, and the problem alone inside the JSON reader, writer and values.
class VEXIL_API Exception : public std::runtime_error {
public:
    /// @p aMessage is what what() will return.
    explicit Exception(const std::string& aMessage) : std::runtime_error(aMessage) {}
};

/// An argument outside its range: a negative length or position, an unknown flag or encoding.
class VEXIL_API InvalidArgument : public Exception {
public:
    using Exception::Exception;
};

/// Text that is not valid in its encoding, or a formatting call of the runtime that failed.
class VEXIL_API EncodingError : public Exception {
public:
    using Exception::Exception;
};

/// Formatted text that needs more room than the limit set for it.
class VEXIL_API FormatLimitExceeded : public Exception {
public:
    using Exception::Exception;
};

/// A length or position that does not fit the type that must hold it.
class VEXIL_API Overflow : public Exception {
public:
    using Exception::Exception;
};

/// JSON text that does not follow the grammar.
class VEXIL_API JsonParserError : public Exception {
public:
    using Exception::Exception;
};

/// An operation asked of a JSON value whose kind does not have it.
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
