// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/certificate.h"
#include "system_certificates.h"

namespace plugins {

/// Describes @p aCertificate, with its friendly name as label and its key identifier as id, if it
/// has them. Throws as describeCertificate(Bytes) does.
Certificate describeCertificate(const CERT_CONTEXT& aCertificate);

} // namespace plugins
