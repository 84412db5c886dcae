#pragma once

#include "plugins/common/plugin_reply.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <string>
#include <string_view>

namespace plugins {

template <auto Free>
struct FreeWith {
    template <typename Object>
    void operator()(Object* aObject) const {
        Free(aObject);
    }
};

inline void freeCertificates(STACK_OF(X509) * aCertificates) {
    sk_X509_pop_free(aCertificates, X509_free);
}

using BioHandle = std::unique_ptr<BIO, FreeWith<BIO_free>>;
using CertificateHandle = std::unique_ptr<X509, FreeWith<X509_free>>;
using CertificatesHandle = std::unique_ptr<STACK_OF(X509), FreeWith<freeCertificates>>;
using KeyHandle = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using NamesHandle = std::unique_ptr<GENERAL_NAMES, FreeWith<GENERAL_NAMES_free>>;
using Pkcs12Handle = std::unique_ptr<PKCS12, FreeWith<PKCS12_free>>;

/// Returns OpenSSL's words for the first failure it remembers, which caused the rest, and forgets
/// them all.
inline std::string takeReason() {
    const char* details = nullptr;
    int flags = 0;
    const auto error = ERR_peek_error_all(nullptr, nullptr, nullptr, &details, &flags);
    const auto* words = ERR_reason_error_string(error);
    std::string reason = words != nullptr ? words : "no reason given";
    if ((flags & ERR_TXT_STRING) != 0 && *details != '\0') reason += std::string(", ") + details;
    ERR_clear_error();
    return reason;
}

/// Throws Failure (InternalError) unless @p aSucceeded. For calls that fail for want of memory
/// only.
inline void require(bool aSucceeded) {
    if (!aSucceeded) throw Failure(ErrorCode::InternalError, "libcrypto: " + takeReason());
}

/// Returns a memory stream that can be written and read.
inline BioHandle makeBuffer() {
    BioHandle buffer(BIO_new(BIO_s_mem()));
    require(buffer != nullptr);
    return buffer;
}

/// Returns what has been written to @p aBuffer and not been read yet.
inline std::string takeText(BIO* aBuffer) {
    std::string text(BIO_ctrl_pending(aBuffer), '\0');
    std::size_t length = 0;
    if (!text.empty()) require(BIO_read_ex(aBuffer, text.data(), text.size(), &length) == 1);
    text.resize(length);
    return text;
}

} // namespace plugins
