// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/secret.h"

#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// A certificate as it is stored in a file.
struct StoredCertificate {
    std::vector<unsigned char> der;
    std::optional<std::string> label;
    std::optional<std::string> id; ///< upper-case hexadecimal digits
    std::string damage;            ///< the reason if there is no DER form; else empty

    bool operator==(const StoredCertificate&) const = default;
};

/// Extracts the certificates, at least one, from the content of a file; the DER forms are not
/// validated. Throws Failure: InvalidCertificate if there is none; WrongPassword.
std::vector<StoredCertificate> decodeCertificates(const std::string& aBytes,
                                                  const Secret& aPassword);

} // namespace plugins
