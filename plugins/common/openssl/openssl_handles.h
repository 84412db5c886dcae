// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/failure.h"

#include <openssl/bio.h>
#include <openssl/err.h>
#include <openssl/pkcs12.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>

namespace plugins {

template <auto Free>
struct FreeWith {
    template <typename Object>
    void operator()(Object* aObject) const {
        Free(aObject);
    }
};

inline void freeMemory(void* aBlock) {
    OPENSSL_free(aBlock);
}

inline void freeCertificates(STACK_OF(X509) * aCertificates) {
    sk_X509_pop_free(aCertificates, X509_free);
}

using BioHandle = std::unique_ptr<BIO, FreeWith<BIO_free>>;
using CertificateHandle = std::unique_ptr<X509, FreeWith<X509_free>>;
using CertificatesHandle = std::unique_ptr<STACK_OF(X509), FreeWith<freeCertificates>>;
using KeyHandle = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using MemoryHandle = std::unique_ptr<unsigned char, FreeWith<freeMemory>>;
using NamesHandle = std::unique_ptr<GENERAL_NAMES, FreeWith<GENERAL_NAMES_free>>;
using Pkcs12Handle = std::unique_ptr<PKCS12, FreeWith<PKCS12_free>>;

/// Returns OpenSSL's text for the first failure in its queue, which caused the others, and empties
/// the queue.
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

/// Throws std::bad_alloc unless @p aSucceeded. For calls that fail only if memory runs out.
inline void require(bool aSucceeded) {
    if (aSucceeded) return;
    ERR_clear_error();
    throw std::bad_alloc();
}

/// Returns a memory stream that can be written and read.
inline BioHandle makeBuffer() {
    BioHandle buffer(BIO_new(BIO_s_mem()));
    require(buffer != nullptr);
    return buffer;
}

/// Returns and removes the unread text of @p aBuffer.
inline std::string takeText(BIO* aBuffer) {
    std::string text(BIO_ctrl_pending(aBuffer), '\0');
    std::size_t length = 0;
    if (!text.empty()) require(BIO_read_ex(aBuffer, text.data(), text.size(), &length) == 1);
    text.resize(length);
    return text;
}

/// The result of a function, or the Failure that it threw.
template <typename Result>
struct Outcome {
    std::optional<Result> result;
    std::optional<std::pair<ErrorCode, std::string>> failure;

    bool operator==(const Outcome&) const = default;
};

template <typename Work>
auto attempt(const Work& aWork) {
    Outcome<decltype(aWork())> outcome;
    ERR_clear_error();
    try {
        outcome.result = aWork();
    } catch (const Failure& failure) {
        outcome.failure.emplace(failure.getCode(), failure.what());
    }
    return outcome;
}

/// Returns the result of @p aWork, or throws its Failure. OpenSSL does not report every failed
/// allocation as one: a key may then seem to be of an unknown kind, or a password to be wrong.
/// Therefore the work is done twice, and a difference is reported as std::bad_alloc.
template <typename Work>
auto confirmed(const Work& aWork) {
    auto outcome = attempt(aWork);
    if (!(attempt(aWork) == outcome)) throw std::bad_alloc();
    if (outcome.failure) throw Failure(outcome.failure->first, outcome.failure->second);
    return *std::move(outcome.result);
}

} // namespace plugins
