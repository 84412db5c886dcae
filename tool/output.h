#pragma once

#include <cstdint>
#include <string>

namespace vexil {
class JsonValue;
}

// Everything the program writes to standard output, one document on one line, and every way in
// which it ends after a failure. An exception of the writer or of the formatting passes through;
// nothing has been written then.

/// What a fatal error is about; the numbers go to the caller.
enum FatalErrorCode : std::int32_t {
    EnvironmentError = 100, ///< reading, the library, the plugin, or a reply that does not parse
    ContentError = 102,     ///< the request, or what a parsed reply holds
};

/// Ends the process with status 2 and writes nothing but what a plugin may have left in the buffer
/// of standard output. Releases nothing.
[[noreturn]] void endAfterFailure();

/// Writes @p aText to standard output and flushes it. Ends the process with status 2, without a
/// message, if that fails; what did not get out then never will. A pipe without a reader is such a
/// failure, not a signal.
void printText(const std::string& aText);

/// Prints @p aDocument and a line end.
void printJson(const vexil::JsonValue& aDocument);

/// Writes {"error":[{"name":"errorCode","value":aCode},{"name":"errorMessage","value":aMessage}]}
/// and ends the process with status 2. Releases nothing.
[[noreturn]] void fatalError(std::int32_t aCode, const char* aMessage);

/// The same with a message formatted as printf does, of any length.
[[noreturn]] void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...);
