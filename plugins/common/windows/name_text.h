// SPDX-License-Identifier: MIT
#pragma once

#include "system_certificates.h"

namespace plugins {

/// Returns the distinguished name with the DER form @p aName in the form of RFC 2253, in UTF-8.
/// Throws Failure (InvalidCertificate) if it cannot be decoded.
std::string nameText(Bytes aName);

} // namespace plugins
