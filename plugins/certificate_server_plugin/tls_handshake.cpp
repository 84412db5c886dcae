// SPDX-License-Identifier: MIT
#include "tls_handshake.h"

#include "plugins/common/failure.h"
#include "plugins/common/library_memory.h"
#include "plugins/common/openssl/certificate_der.h"
#include "plugins/common/openssl/openssl_handles.h"
#include "vexil/assert.h"

#include <openssl/ssl.h>
#include <openssl/tls1.h>

#include <limits>

namespace plugins {

namespace {

using ContextHandle = std::unique_ptr<SSL_CTX, FreeWith<SSL_CTX_free>>;
using TlsHandle = std::unique_ptr<SSL, FreeWith<SSL_free>>;

int acceptAny(X509_STORE_CTX*, void*) {
    return 1;
}

// Called when the server has asked for a certificate. In a full handshake without RSA key exchange
// its signature has been verified by then.
int offerNoCertificate(SSL* aTls, X509**, EVP_PKEY**) {
    *static_cast<bool*>(SSL_get_app_data(aTls)) = true;
    return 0;
}

// The alerts with which servers refuse a client without a certificate.
bool asksForCertificate(int aAlert) {
    switch (aAlert) {
    case SSL_AD_HANDSHAKE_FAILURE:
    case SSL_AD_BAD_CERTIFICATE:
    case SSL_AD_CERTIFICATE_UNKNOWN:
    case SSL_AD_ACCESS_DENIED:
    case SSL_AD_CERTIFICATE_REQUIRED:
        return true;
    default:
        return false;
    }
}

ContextHandle makeContext() {
    ContextHandle context(SSL_CTX_new(TLS_client_method()));
    require(context != nullptr);
    return context;
}

void acceptWeakParameters(SSL_CTX& aContext) {
    SSL_CTX_set_security_level(&aContext, 0);
    require(SSL_CTX_set_min_proto_version(&aContext, TLS1_VERSION) == 1);
    SSL_CTX_set_options(&aContext, SSL_OP_LEGACY_SERVER_CONNECT);
}

// Each name preceded by its length.
std::vector<unsigned char> alpnBytes(const std::vector<std::string>& aNames) {
    std::vector<unsigned char> bytes;
    for (const auto& name : aNames) {
        VEXIL_ASSERT(!name.empty() && name.size() <= std::numeric_limits<unsigned char>::max());
        bytes.push_back(static_cast<unsigned char>(name.size()));
        bytes.insert(bytes.end(), name.begin(), name.end());
    }
    return bytes;
}

class Handshake {
public:
    Handshake(Connection& aConnection, const TlsOffer& aOffer)
        : mConnection(aConnection), mContext(makeContext()),
          mSecurityLevel(SSL_CTX_get_security_level(mContext.get())) {
        SSL_CTX_set_cert_verify_callback(mContext.get(), acceptAny, nullptr);
        SSL_CTX_set_client_cert_cb(mContext.get(), offerNoCertificate);
        acceptWeakParameters(*mContext);
        mTls.reset(SSL_new(mContext.get()));
        require(mTls != nullptr);
        SSL_set_app_data(mTls.get(), &mIsCertificateRequested);
        // Memory streams: OpenSSL's own for sockets raises SIGPIPE and has no time limit.
        auto input = makeBuffer();
        auto output = makeBuffer();
        SSL_set_bio(mTls.get(), input.release(), output.release());
        offer(aOffer);
    }

    TlsServer perform() {
        while (!advance()) {
            const auto bytes = mConnection.receive();
            if (bytes.empty()) {
                throw Failure(ErrorCode::NoTls,
                              "the server closed the connection during the TLS handshake");
            }
            const auto size = static_cast<int>(bytes.size());
            require(BIO_write(SSL_get_rbio(mTls.get()), bytes.data(), size) == size);
        }
        requireMemory();
        closeSession();
        return describeServer();
    }

private:
    void offer(const TlsOffer& aOffer) {
        if (aOffer.serverName) {
            // SSL_set_tlsext_host_name(), which is a macro with a C cast; it copies the name.
            require(SSL_ctrl(mTls.get(), SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name,
                             const_cast<char*>(aOffer.serverName->c_str())) == 1);
        }
        const auto alpn = alpnBytes(aOffer.alpn);
        constexpr int succeeded = 0; // unlike the other functions
        require(SSL_set_alpn_protos(mTls.get(), alpn.data(), static_cast<unsigned>(alpn.size())) ==
                succeeded);
        require(SSL_set_tlsext_status_type(mTls.get(), TLSEXT_STATUSTYPE_ocsp) == 1);
    }

    // Returns whether the handshake is complete; if not, the server has the next turn.
    bool advance() {
        ERR_clear_error();
        const int result = SSL_connect(mTls.get());
        const int error = SSL_get_error(mTls.get(), result);
        mConnection.send(takeText(SSL_get_wbio(mTls.get())));
        if (result == 1) return true;
        if (error == SSL_ERROR_WANT_READ) return false;
        return endedByRefusal();
    }

    // Servers report a connection that ends without this notice as a failure.
    void closeSession() {
        SSL_shutdown(mTls.get());
        ERR_clear_error(); // after a refusal there is no session to close
        mConnection.send(takeText(SSL_get_wbio(mTls.get())));
    }

    // After a failure: returns true if all that can be known of the server is known.
    bool endedByRefusal() {
        requireMemory();
        const auto code = ERR_peek_error();
        const int alert = ERR_GET_REASON(code) - SSL_AD_REASON_OFFSET;
        const bool isAlert = ERR_GET_LIB(code) == ERR_LIB_SSL && alert >= 0 && alert <= 255;
        if (isAlert && asksForCertificate(alert) && mIsCertificateRequested && hasProvedItsKey()) {
            return true;
        }
        if (isAlert) {
            throw Failure(ErrorCode::TlsAlert, std::string("the server sent the TLS alert \"") +
                                                   SSL_alert_desc_string_long(alert) + '"');
        }
        throw Failure(ErrorCode::NoTls, "the TLS handshake failed: " + takeReason());
    }

    // With RSA key exchange only the end of the handshake proves it.
    bool hasProvedItsKey() const {
        const auto* const cipher = SSL_get_current_cipher(mTls.get());
        return cipher != nullptr && SSL_CIPHER_get_kx_nid(cipher) != NID_kx_rsa;
    }

    TlsServer describeServer() {
        TlsServer server;
        const auto* const chain = SSL_get_peer_cert_chain(mTls.get());
        for (int i = 0; i < sk_X509_num(chain); ++i) {
            server.certificates.push_back(toDer(*sk_X509_value(chain, i)));
        }
        if (server.certificates.empty()) {
            throw Failure(ErrorCode::InvalidCertificate, "the server showed no certificate");
        }
        server.protocol = SSL_get_version(mTls.get());
        server.cipher = SSL_CIPHER_get_name(SSL_get_current_cipher(mTls.get()));
        server.alpnProtocol = chosenAlpn();
        const unsigned char* response = nullptr;
        server.isOcspStapled = SSL_get_tlsext_status_ocsp_resp(mTls.get(), &response) > 0;
        server.securityLevel = mSecurityLevel;
        return server;
    }

    std::optional<std::string> chosenAlpn() const {
        const unsigned char* name = nullptr;
        unsigned int size = 0;
        SSL_get0_alpn_selected(mTls.get(), &name, &size);
        if (size == 0) return std::nullopt;
        return std::string(name, name + size);
    }

    Connection& mConnection;
    ContextHandle mContext;
    int mSecurityLevel;
    TlsHandle mTls;
    bool mIsCertificateRequested = false;
};

} // namespace

TlsServer performHandshake(Connection& aConnection, const TlsOffer& aOffer) {
    return Handshake(aConnection, aOffer).perform();
}

} // namespace plugins
