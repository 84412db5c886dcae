// SPDX-License-Identifier: MIT
#include "system_certificates.h"

namespace plugins {

std::string textOf(const CERT_RDN_VALUE_BLOB& aString) {
    std::wstring_view text(reinterpret_cast<const wchar_t*>(aString.pbData),
                           aString.cbData / sizeof(wchar_t));
    // Not every version of the system leaves the terminating zero out of the size.
    if (!text.empty() && text.back() == L'\0') text.remove_suffix(1);
    return toUtf8(text);
}

void failPart(const char* aPart) {
    const auto reason = errorText(GetLastError());
    throw Failure(ErrorCode::InvalidCertificate,
                  std::string("the certificate's ") + aPart + " cannot be decoded: " + reason);
}

} // namespace plugins
