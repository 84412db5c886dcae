// SPDX-License-Identifier: MIT
#pragma once

#include "start_tls.h"

#include "plugins/common/request.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// The certificates that are trusted: those of the system if both members are absent.
struct TrustSettings {
    std::optional<std::string> file;   ///< certificates in PEM form
    std::optional<std::string> folder; ///< as prepared by openssl-rehash(1)
};

/// The members of a request, all valid.
struct ServerRequest {
    std::string host; ///< a name or an address
    std::int32_t port = 0;
    std::optional<std::string> serverName; ///< none if the host is an address
    StartTls startTls = nullptr;           ///< null: TLS from the first byte
    std::vector<std::string> alpn;         ///< names of 1 to 255 bytes
    std::chrono::seconds timeout;
    TrustSettings trust;
};

/// Reads the members "host", "port", "serverName", "startTls", "alpn", "timeout", "trustFile" and
/// "trustFolder". Throws Failure (InvalidRequest).
ServerRequest readServerRequest(const Request& aRequest);

} // namespace plugins
