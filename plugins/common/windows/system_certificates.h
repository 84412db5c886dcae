// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/certificate_text.h"
#include "plugins/common/failure.h"
#include "system_text.h"

#include <memory>
#include <string>
#include <type_traits>

#include <wincrypt.h>

// Owners of the objects of the system's cryptographic library, and its texts as UTF-8.
namespace plugins {

inline constexpr DWORD certificateEncoding = X509_ASN_ENCODING | PKCS_7_ASN_ENCODING;

struct StoreCloser {
    void operator()(void* aStore) const { CertCloseStore(aStore, 0); }
};
using StoreHandle = std::unique_ptr<void, StoreCloser>;

struct CertificateCloser {
    void operator()(const CERT_CONTEXT* aCertificate) const {
        CertFreeCertificateContext(aCertificate);
    }
};
using CertificateHandle = std::unique_ptr<const CERT_CONTEXT, CertificateCloser>;

struct LocalCloser {
    void operator()(void* aBlock) const { LocalFree(aBlock); }
};
template <typename Structure>
using LocalHandle = std::unique_ptr<Structure, LocalCloser>;

/// Of CRYPT_DATA_BLOB and all the structures of its shape.
template <typename Blob>
Bytes bytesOf(const Blob& aBlob) {
    return {aBlob.pbData, aBlob.cbData};
}

/// Returns the text of a decoded string.
std::string textOf(const CERT_RDN_VALUE_BLOB& aString);

/// Throws Failure (InvalidCertificate) with the system's last error, the reason for which @p aPart
/// of a certificate cannot be decoded.
[[noreturn]] void failPart(const char* aPart);

/// Decodes @p aDer as the system's structure of type @p aType; failPart(@p aPart) if it is not one.
template <typename Structure>
LocalHandle<Structure> decode(LPCSTR aType, Bytes aDer, const char* aPart) {
    void* structure = nullptr;
    DWORD size = 0;
    if (!CryptDecodeObjectEx(certificateEncoding, aType, aDer.data(),
                             static_cast<DWORD>(aDer.size()), CRYPT_DECODE_ALLOC_FLAG, nullptr,
                             &structure, &size)) {
        failPart(aPart);
    }
    return LocalHandle<Structure>(static_cast<Structure*>(structure));
}

} // namespace plugins
