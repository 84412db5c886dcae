// SPDX-License-Identifier: MIT
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <p11-kit/pkcs11.h>

struct p11_kit_uri;

namespace plugins {

/// A PKCS#11 URI (RFC 7512) that selects modules, tokens and certificates. p11-kit parses it, which
/// is missing on Windows.
class TokenUri {
public:
    /// Parses @p aText. Throws Failure (InvalidRequest) if it is malformed, has an attribute of
    /// which the plugin knows nothing, refers to an object other than a certificate, or has a PIN,
    /// which belongs into a separate member; and std::bad_alloc. On Windows always throws Failure.
    explicit TokenUri(const std::string& aText);

    std::optional<std::string> getModulePath() const;
    std::optional<std::string> getModuleName() const;
    /// The label of the certificate.
    std::optional<std::string> getLabel() const;
    /// The id of the certificate: upper-case hexadecimal digits.
    std::optional<std::string> getId() const;

    /// Returns whether the URI has an attribute of a token.
    bool namesToken() const;
    bool matches(const CK_TOKEN_INFO& aToken) const;

private:
    struct FreeUri {
        void operator()(p11_kit_uri* aUri) const;
    };

    const CK_ATTRIBUTE* find(CK_ATTRIBUTE_TYPE aType) const;

    std::unique_ptr<p11_kit_uri, FreeUri> mUri;
};

} // namespace plugins
