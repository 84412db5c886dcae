// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/certificate.h"

#include <openssl/x509.h>

namespace plugins {

/// Describes @p aCertificate, with its alias as label and its key identifier as id, if it has them.
/// Throws as describeCertificate(Bytes) does.
Certificate describeCertificate(const X509& aCertificate);

/// Returns the DER form of @p aCertificate. Throws std::bad_alloc.
std::vector<unsigned char> toDer(const X509& aCertificate);

} // namespace plugins
