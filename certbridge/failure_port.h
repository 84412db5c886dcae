// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>

namespace vexil {
class JsonValue;
}

/// The subject of a fatal error; the numbers are part of the error document.
enum FatalErrorCode : std::int32_t {
    EnvironmentError = 100, ///< reading, the library, the plugin, or a reply that does not parse
    ContentError = 102,     ///< the content of the request or of a parsed reply
};

/// Interface through which the exchange prints documents and reports failures, so that the exchange
/// itself never exits and never touches a standard stream. The caller owns the port, which must
/// outlive every call that receives it.
///
/// Except for printJson(), no operation returns: each ends the process or throws. If one throws
/// inside performGetCertificate(), the exception is caught there and endAfterFailure() is called as
/// well.
class FailurePort {
public:
    /// Prints @p aDocument, which is borrowed, as one line.
    virtual void printJson(const vexil::JsonValue& aDocument) = 0;

    /// Reports a failure: @p aCode is a FatalErrorCode, @p aMessage NUL-terminated UTF-8.
    [[noreturn]] virtual void fatalError(std::int32_t aCode, const char* aMessage) = 0;

    /// Reports a failure whose message is formatted as by printf, without a limit on its length.
    [[noreturn]] virtual void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) = 0;

    /// Ends the exchange after a failure that is already reported or cannot be reported: an error
    /// reply whose document has been printed, or an exception, most likely for lack of memory.
    [[noreturn]] virtual void endAfterFailure() = 0;

protected:
    FailurePort() = default;
    FailurePort(const FailurePort&) = default;
    FailurePort& operator=(const FailurePort&) = default;
    ~FailurePort() = default;
};
