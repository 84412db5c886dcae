// SPDX-License-Identifier: MIT
#pragma once

#include "server_request.h"

#include <optional>
#include <string>
#include <vector>

namespace plugins {

using CertificateChain = std::vector<std::vector<unsigned char>>;

/// Returns the reason why the first of the certificates, in DER form, is not trusted as that of a
/// TLS server now; nothing if it is trusted. The others are candidates for its issuers. The host is
/// not considered. @p aSecurityLevel is OpenSSL's level for the strength of keys and signatures.
/// Throws Failure: NotFound, NotReadable or InvalidCertificate for the file or the folder of
/// trusted certificates; and std::bad_alloc.
std::optional<std::string> findDistrust(const CertificateChain& aChain,
                                        const TrustSettings& aSettings, int aSecurityLevel);

/// Returns whether the alternative names of the certificate in DER form contain the host, as
/// RFC 9525 requires. The common name in the subject does not count. Throws std::bad_alloc.
bool namesHost(const std::vector<unsigned char>& aCertificate, const std::string& aHost);

} // namespace plugins
