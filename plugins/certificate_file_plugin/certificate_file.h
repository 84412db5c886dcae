#pragma once

#include "plugins/common/openssl/openssl_handles.h"

#include <string>

namespace plugins {

/// Reads the certificate in the file @p aFileName: the first one of a PEM file, the one of a DER
/// file, or of a PKCS#12 file that opens with @p aPassword the one that belongs to its private key
/// (its first one if it has no key). A password for any other file is not looked at, unless its PEM
/// text is encrypted.
///
/// Throws Failure: NotFound; NotReadable for anything but a regular file of at most 1 MiB;
/// WrongPassword; InvalidCertificate. The texts do not name the file.
CertificateHandle readCertificate(const std::string& aFileName, const std::string& aPassword);

} // namespace plugins
