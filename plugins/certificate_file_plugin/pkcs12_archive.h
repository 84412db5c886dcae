// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/openssl/openssl_handles.h"
#include "plugins/common/secret.h"

namespace plugins {

/// Returns the certificates of the archive, at least one: first the one that belongs to its private
/// key, if it has a key. Throws Failure: WrongPassword; InvalidCertificate if the archive has no
/// certificate, is damaged, or asks for more than 1,000,000 rounds of key derivation in total,
/// which would take minutes.
CertificatesHandle openPkcs12(PKCS12& aArchive, const Secret& aPassword);

} // namespace plugins
