// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/failure_port.h"

#include <string>

/// Thrown instead of the end of the process.
struct ProcessEnd {};

/// The port of the fuzzed exchange: documents and failures are kept.
class RecordingPort final : public FailurePort {
public:
    void printJson(const vexil::JsonValue& aDocument) override;
    [[noreturn]] void fatalError(std::int32_t aCode, const char* aMessage) override;
    [[noreturn]] void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) override;
    [[noreturn]] void endAfterFailure() override;

    std::string text;       ///< the documents printed
    std::int32_t error = 0; ///< code of a fatal error
    std::string message;    ///< its message
    bool hasEnded = false;
};
