// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/secret.h"
#include "plugins/common/selection.h"

#include <string>

namespace plugins {

/// Reads all certificates in the file @p aFileName, in its order. The form is recognized by the
/// content: PEM, with any number of certificates and of PKCS#7 structures, encrypted or not; DER; a
/// PKCS#7 structure; or a PKCS#12 archive, whose first certificate is the one that belongs to its
/// private key. @p aPassword opens an archive and encrypted PEM text. A damaged certificate is an
/// error if it is the first; others are counted as skipped.
///
/// Throws Failure: NotFound; NotReadable for all but a regular file of at most 1 MiB;
/// WrongPassword; InvalidCertificate. The message begins with the name of the file.
CertificateSource readCertificateFile(const std::string& aFileName, const Secret& aPassword);

/// Reads the files in the folder @p aFolder in the order of their names, without those in its
/// subfolders. Files without a readable certificate are counted as skipped; a certificate found
/// twice is listed once. Throws Failure as readCertificateFile() does, for the folder itself.
CertificateSource readCertificateFolder(const std::string& aFolder, const Secret& aPassword);

/// Returns whether @p aName is the name of a folder.
bool isFolder(const std::string& aName);

} // namespace plugins
