#pragma once

#include "certbridge/failure_port.h"

#include <stdexcept>

/// The reason why a check failed, as a text for the plugin's author.
class CheckFailure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The checker's port: a failure of the exchange is thrown as a CheckFailure that quotes the error
/// that certbridge would have reported. Documents are only written as text and dropped.
class ThrowingPort final : public FailurePort {
public:
    /// Writes the document as certbridge would, into memory.
    void printJson(const vexil::JsonValue& aDocument) override;
    [[noreturn]] void fatalError(std::int32_t aCode, const char* aMessage) override;
    [[noreturn]] void fatalErrorFormat(std::int32_t aCode, const char* aFormat, ...) override;
    [[noreturn]] void endAfterFailure() override;
};
