// SPDX-License-Identifier: MIT
#pragma once

#include "secret.h"

#include "vexil/json/json_value.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// The members of one request, each read by the type that it must have. Members that a plugin does
/// not read are ignored; of several with the same name the first counts.
///
/// All operations throw Failure (InvalidRequest) "member "NAME" must be ..." for a member of
/// another type, null included, "member "NAME" must not contain a NUL character" for such a text,
/// and std::bad_alloc.
class Request {
public:
    /// Parses @p aRequest as getCertificate() receives it. Throws Failure (InvalidRequest) "the
    /// request is not a JSON name/value list".
    explicit Request(const char* aRequest);

    /// Returns a text; nothing if there is no such member.
    std::optional<std::string> findText(const char* aName) const;
    /// Returns a text. Throws Failure (InvalidRequest) "member "NAME" is missing" and
    /// "member "NAME" is empty".
    std::string getText(const char* aName) const;
    /// Returns a text that is not empty; nothing if there is no such member.
    std::optional<std::string> findNonEmptyText(const char* aName) const;
    /// Returns an integer from @p aMinimum to @p aMaximum; nothing if there is no such member.
    std::optional<std::int32_t> findInteger(const char* aName, std::int32_t aMinimum,
                                            std::int32_t aMaximum) const;
    /// Returns true or false; false if there is no such member.
    bool getFlag(const char* aName) const;
    /// Returns the elements of an array of texts; none if there is no such member.
    std::vector<std::string> findTexts(const char* aName) const;
    /// Returns a secret, and overwrites its text in this request; nothing if there is no such
    /// member. The program that passed the request still has its own copies.
    std::optional<Secret> takeSecret(const char* aName);

private:
    const vexil::JsonValue* find(const char* aName) const;

    std::unique_ptr<vexil::JsonValue> mDocument;
    const vexil::JsonValue* mList; // borrowed from mDocument
};

} // namespace plugins
