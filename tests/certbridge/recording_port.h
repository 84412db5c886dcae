// SPDX-License-Identifier: MIT
#pragma once

#include "certbridge/failure_port.h"
#include "vexil/json/json_writer.h"

#include <cfenv>
#include <stdexcept>
#include <string>

/// A port that keeps the printed documents and throws failures.
class RecordingPort final : public FailurePort {
public:
    void printJson(const vexil::JsonValue& aDocument) override {
        rounding = std::fegetround();
        printed += vexil::writeJsonText(aDocument);
    }
    [[noreturn]] void fatalError(std::int32_t, const char* aMessage) override {
        rounding = std::fegetround();
        throw std::logic_error(aMessage);
    }
    [[noreturn]] void fatalErrorFormat(std::int32_t, const char* aFormat, ...) override {
        rounding = std::fegetround();
        throw std::logic_error(aFormat);
    }
    /// Rethrows the exception that ended the exchange.
    [[noreturn]] void endAfterFailure() override { throw; }

    std::string printed;
    int rounding = -1; ///< of floating-point operations at the last call
};
