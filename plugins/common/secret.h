// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace plugins {

/// Overwrites @p aSize bytes at @p aData; the compiler does not remove the writes.
void wipe(char* aData, std::size_t aSize) noexcept;

/// A password or PIN. Its only copy is overwritten on destruction.
class Secret {
public:
    Secret() : Secret(std::string_view()) {}
    explicit Secret(std::string_view aText);
    ~Secret();
    Secret(Secret&& aOther) noexcept = default;
    Secret& operator=(Secret&& aOther) noexcept;

    /// The text, NUL-terminated and borrowed. It contains no NUL.
    const char* getText() const { return mBytes.data(); }
    /// The same for libraries that take a pointer to char and do not modify the text.
    char* getText() { return mBytes.data(); }
    /// Length in bytes, without the terminating NUL.
    std::size_t getSize() const { return mBytes.size() - 1; }

private:
    std::vector<char> mBytes; // moving a vector leaves no copy, unlike moving a short string
};

/// Reads the file @p aFileName, which holds one line, the secret, with or without a line end. Opens
/// and reads the file once. Throws Failure: NotFound; NotReadable for a file that is not a regular
/// file of at most 4096 bytes, that users other than its owner can access, whose owner is neither
/// the current user nor the administrator, or that holds no line, several lines or a NUL. On
/// Windows, where files have access control lists, neither owner nor permissions are checked.
Secret readSecretFile(const std::string& aFileName);

class Request;

/// Returns the secret in member @p aName, or in the file that member @p aFileName names; nothing if
/// the request has neither. Throws Failure: InvalidRequest if it has both or if one is invalid;
/// what readSecretFile() throws, the message preceded by the name of the file.
std::optional<Secret> findSecret(Request& aRequest, const char* aName, const char* aFileName);

} // namespace plugins
