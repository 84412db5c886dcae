// SPDX-License-Identifier: MIT
#pragma once

#include "certificate_text.h"
#include "members.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// The description of a certificate, whatever library has decoded it. docs/plugins.md documents the
/// form of each text, which is the same in all plugins.
struct Certificate {
    std::vector<unsigned char> der;
    std::string subject;
    std::string issuer;
    std::string serialNumber;
    std::string notBefore;
    std::string notAfter;
    std::string sha256Fingerprint;
    std::vector<std::string> subjectAlternativeNames;
    std::string publicKeyAlgorithm;
    std::optional<std::int32_t> publicKeyBits; ///< nothing if the size is unknown

    /// Attributes that the source stores with the certificate, if it does.
    /// @{
    std::optional<std::string> label;
    std::optional<std::string> id; ///< upper-case hexadecimal digits
    std::size_t token = 0;         ///< position of its token among those searched
    /// @}

    bool operator==(const Certificate&) const = default;
};

/// Adds "subject", "issuer", "serialNumber", "notBefore", "notAfter", "sha256Fingerprint",
/// "subjectAlternativeNames", "publicKeyAlgorithm", "publicKeyBits" and "pem", in this order.
void addCertificate(Members& aMembers, const Certificate& aCertificate);

/// Adds "chain", an array of objects with "subject", "issuer", "sha256Fingerprint" and "pem".
void addChain(Members& aMembers, const std::vector<Certificate>& aIssuers);

/// Removes each certificate that is preceded by one with the same fingerprint.
void removeRepetitions(std::vector<Certificate>& aCertificates);

/// Decodes the DER form of a certificate, all of @p aDer, with the platform's library. Throws
/// Failure (InvalidCertificate) if it is malformed, and std::bad_alloc.
Certificate describeCertificate(Bytes aDer);

/// Returns whether @p aIssuer's name is the issuer's name in @p aCertificate (both in DER form) and
/// its key verifies the signature. Neither validity nor permitted use are checked. Throws
/// std::bad_alloc.
bool isIssuedBy(Bytes aCertificate, Bytes aIssuer);

} // namespace plugins
