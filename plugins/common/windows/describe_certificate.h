#pragma once

#include "system_certificates.h"

namespace plugins {

/// Describes @p aCertificate with the same elements in the same order and form as the certificate
/// file plugin does; docs/plugins.md describes them.
///
/// Throws Failure (InvalidCertificate) if a part of it cannot be decoded.
Response describeCertificate(const CERT_CONTEXT& aCertificate);

} // namespace plugins
