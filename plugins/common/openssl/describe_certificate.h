#pragma once

#include "openssl_handles.h"

namespace plugins {

/// Describes @p aCertificate: "subject", "issuer", "serialNumber", "notBefore", "notAfter",
/// "sha256Fingerprint", "subjectAlternativeNames", "publicKeyAlgorithm", "publicKeyBits" and
/// "pem", in this order; docs/plugins.md describes them.
///
/// Throws Failure (InvalidCertificate) if a part of it cannot be decoded.
Response describeCertificate(X509& aCertificate);

} // namespace plugins
