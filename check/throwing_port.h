// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/failure_port.h"

#include <stdexcept>

/// The reason for the failure of a check, as a text for the author of the plugin.
class CheckFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The checker's port: throws a failure of the exchange as a CheckFailure that quotes the error
/// that certbridge would report.
class ThrowingPort final : public FailurePort {
public:
    /// Converts the document to text, as certbridge would, and discards the text.
    void printJson(const vexil::JsonValue& aDocument) override;
    [[noreturn]] void fatalError(std::int32_t aCode, const char* aMessage) override;
    [[noreturn]] void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) override;
    [[noreturn]] void endAfterFailure() override;
};
