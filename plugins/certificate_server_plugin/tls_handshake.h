// SPDX-License-Identifier: MIT
#pragma once

#include "connection.h"

#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// The values that a client offers in a handshake.
struct TlsOffer {
    std::optional<std::string> serverName; ///< at most 255 bytes
    std::vector<std::string> alpn;         ///< names of 1 to 255 bytes
};

/// The properties of a server that a handshake has shown.
struct TlsServer {
    /// The certificates in DER form, at least one: the server's, then the others in the order in
    /// which it sent them. The server has proved that it has the private key of the first.
    std::vector<std::vector<unsigned char>> certificates;
    std::string protocol;                    ///< TLSv1.3 and so on
    std::string cipher;                      ///< OpenSSL's name of the cipher suite
    std::optional<std::string> alpnProtocol; ///< the chosen one of the ALPN names
    bool isOcspStapled = false;              ///< the server sent an OCSP response
    int securityLevel = 0;                   ///< the one that OpenSSL is configured to require
};

/// Performs a handshake. Trusted or not, every certificate is accepted, and old versions and weak
/// parameters too, since no data follows. If the server asks for a certificate, it gets none; a
/// server that then refuses the handshake has already shown its certificate.
///
/// Throws Failure: NoTls; TlsAlert with the name of the alert; TimedOut; InvalidCertificate if the
/// server shows none; and std::bad_alloc.
TlsServer performHandshake(Connection& aConnection, const TlsOffer& aOffer);

} // namespace plugins
