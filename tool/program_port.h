// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/failure_port.h"

/// Exit status after every failure except a wrong command line.
inline constexpr int failureStatus = 2;

/// The program's port: documents go to standard output, one on a line, and a failure ends the
/// process with status 2. Nothing is released and nothing is unwound when it does.
class ProgramPort final : public FailurePort {
public:
    /// Ends the process with status 2, without a message, if standard output does not take the
    /// whole line; the rest of the line is then never written. A pipe without a reader is such a
    /// failure, not a signal. Passes on what JsonWriter::write() throws; nothing has been written
    /// then.
    void printJson(const vexil::JsonValue& aDocument) override;

    /// Prints
    /// {"error":[{"name":"errorCode","value":aCode},{"name":"errorMessage","value":aMessage}]} and
    /// ends the process with status 2.
    [[noreturn]] void fatalError(std::int32_t aCode, const char* aMessage) override;

    /// Formats the message, of any length, and continues as fatalError().
    [[noreturn]] void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) override;

    /// Ends the process with status 2. Writes nothing except text that a plugin may have left in
    /// the buffer of standard output.
    [[noreturn]] void endAfterFailure() override;
};
