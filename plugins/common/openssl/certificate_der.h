// SPDX-License-Identifier: MIT
#pragma once

#include <openssl/x509.h>

#include <vector>

namespace plugins {

/// Returns the DER form of @p aCertificate. Throws std::bad_alloc.
std::vector<unsigned char> toDer(const X509& aCertificate);

} // namespace plugins
