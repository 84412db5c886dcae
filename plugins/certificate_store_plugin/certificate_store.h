#pragma once

#include "plugins/common/windows/system_certificates.h"

#include <cstddef>

namespace plugins {

struct FoundCertificate {
    CertificateHandle certificate; ///< the first of them, in the store's own order
    std::size_t matches;           ///< how many there are: 1 or more
};

/// Finds the certificates in the current user's store @p aStore (both texts are UTF-8) whose
/// subject holds @p aSubjectPart somewhere in the values of its name, in upper or lower case.
///
/// Throws Failure: NotFound if there is no such store or no such certificate; NotReadable if the
/// store cannot be opened.
FoundCertificate findCertificate(const std::string& aStore, const std::string& aSubjectPart);

} // namespace plugins
