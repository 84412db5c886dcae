// SPDX-License-Identifier: MIT
#include "verification.h"

#include "host_lookup.h"

#include "plugins/common/failure.h"
#include "plugins/common/openssl/openssl_handles.h"
#include "plugins/common/source_file.h"

#include <openssl/pem.h>
#include <openssl/x509_vfy.h>

#include <filesystem>

namespace plugins {

namespace {

using StoreHandle = std::unique_ptr<X509_STORE, FreeWith<X509_STORE_free>>;
using VerificationHandle = std::unique_ptr<X509_STORE_CTX, FreeWith<X509_STORE_CTX_free>>;

// A system's bundle takes a quarter of a mebibyte.
constexpr std::size_t maximumTrustFileSize = 4 * 1024 * 1024;

void addTrustedCertificates(X509_STORE& aStore, const std::string& aText) {
    const BioHandle text(BIO_new_mem_buf(aText.data(), static_cast<int>(aText.size())));
    require(text != nullptr);
    bool isEmpty = true;
    // The form with trust settings, which the other forms are read as too.
    while (const CertificateHandle certificate{
        PEM_read_bio_X509_AUX(text.get(), nullptr, nullptr, nullptr)}) {
        require(X509_STORE_add_cert(&aStore, certificate.get()) == 1);
        isEmpty = false;
    }
    const bool isAtEnd = ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
    if (!isAtEnd) throw Failure(ErrorCode::InvalidCertificate, "is damaged: " + takeReason());
    if (isEmpty) throw Failure(ErrorCode::InvalidCertificate, "holds no certificate in PEM form");
    ERR_clear_error();
}

void addTrustFile(X509_STORE& aStore, const std::string& aFileName) {
    try {
        addTrustedCertificates(aStore, readSourceFile(aFileName, maximumTrustFileSize));
    } catch (const Failure& failure) {
        throw Failure(failure.getCode(), aFileName + ": " + failure.what());
    }
}

// OpenSSL reads the files of a folder when it looks for an issuer.
void addTrustFolder(X509_STORE& aStore, const std::string& aFolder) {
    std::error_code ignored;
    if (!std::filesystem::is_directory(aFolder, ignored)) {
        throw Failure(ErrorCode::NotFound, aFolder + ": no such folder");
    }
    require(X509_STORE_load_path(&aStore, aFolder.c_str()) == 1);
}

StoreHandle makeStore(const TrustSettings& aSettings) {
    StoreHandle store(X509_STORE_new());
    require(store != nullptr);
    if (aSettings.file) addTrustFile(*store, *aSettings.file);
    if (aSettings.folder) addTrustFolder(*store, *aSettings.folder);
    if (!aSettings.file && !aSettings.folder) {
        require(X509_STORE_set_default_paths(store.get()) == 1);
        ERR_clear_error(); // a missing file of the system is no failure
    }
    return store;
}

CertificateHandle parse(const std::vector<unsigned char>& aDer) {
    const auto* position = aDer.data();
    CertificateHandle certificate(d2i_X509(nullptr, &position, static_cast<long>(aDer.size())));
    require(certificate != nullptr); // it has been parsed before
    return certificate;
}

CertificatesHandle parseAll(const CertificateChain& aChain) {
    CertificatesHandle certificates(sk_X509_new_null());
    require(certificates != nullptr);
    for (const auto& der : aChain) {
        auto certificate = parse(der);
        require(sk_X509_push(certificates.get(), certificate.get()) > 0);
        (void)certificate.release(); // owned by the stack
    }
    return certificates;
}

std::optional<std::string> verify(X509_STORE_CTX& aVerification) {
    const int result = X509_verify_cert(&aVerification);
    ERR_clear_error();
    if (result == 1) return std::nullopt;
    const int error = X509_STORE_CTX_get_error(&aVerification);
    if (error == X509_V_ERR_OUT_OF_MEM) throw std::bad_alloc();
    return X509_verify_cert_error_string(error);
}

} // namespace

std::optional<std::string> findDistrust(const CertificateChain& aChain,
                                        const TrustSettings& aSettings, int aSecurityLevel) {
    return confirmed([&] {
        const auto store = makeStore(aSettings);
        const auto certificates = parseAll(aChain);
        const VerificationHandle verification(X509_STORE_CTX_new());
        require(verification != nullptr);
        require(X509_STORE_CTX_init(verification.get(), store.get(),
                                    sk_X509_value(certificates.get(), 0), certificates.get()) == 1);
        require(X509_STORE_CTX_set_default(verification.get(), "ssl_server") == 1);
        X509_VERIFY_PARAM_set_auth_level(X509_STORE_CTX_get0_param(verification.get()),
                                         aSecurityLevel);
        return verify(*verification);
    });
}

bool namesHost(const std::vector<unsigned char>& aCertificate, const std::string& aHost) {
    return confirmed([&] {
        const auto certificate = parse(aCertificate);
        constexpr unsigned int flags =
            X509_CHECK_FLAG_NEVER_CHECK_SUBJECT | X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS;
        const int result =
            isAddress(aHost)
                ? X509_check_ip_asc(certificate.get(), aHost.c_str(), flags)
                : X509_check_host(certificate.get(), aHost.data(), aHost.size(), flags, nullptr);
        ERR_clear_error();
        return result == 1;
    });
}

} // namespace plugins
