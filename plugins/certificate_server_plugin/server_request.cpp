// SPDX-License-Identifier: MIT
#include "server_request.h"

#include "host_lookup.h"

#include "plugins/common/failure.h"

#include <algorithm>
#include <limits>
#include <string_view>

namespace plugins {

namespace {

constexpr std::int32_t defaultPort = 443;
constexpr std::int32_t defaultTimeout = 10;
constexpr std::int32_t maximumTimeout = 3600;
constexpr std::size_t maximumNameSize = 253; // RFC 1035, without the final dot

[[noreturn]] void failMember(const char* aName, const char* aProblem) {
    throw Failure(ErrorCode::InvalidRequest, std::string("member \"") + aName + "\" " + aProblem);
}

bool isHostNameCharacter(char aCharacter) {
    const auto isIn = [&](char aFirst, char aLast) {
        return aCharacter >= aFirst && aCharacter <= aLast;
    };
    return isIn('a', 'z') || isIn('A', 'Z') || isIn('0', '9') || aCharacter == '-' ||
           aCharacter == '_' || aCharacter == '.';
}

// Other characters would be sent to the server as they are, within commands.
bool isHostName(std::string_view aText) {
    return aText.size() <= maximumNameSize && std::ranges::all_of(aText, isHostNameCharacter);
}

// A final dot marks a complete name for the lookup. Certificates and TLS do not use it.
std::string withoutFinalDot(std::string aName) {
    if (aName.ends_with('.')) aName.pop_back();
    return aName;
}

std::optional<std::string> readServerName(const Request& aRequest, const std::string& aHost) {
    auto name = aRequest.findNonEmptyText("serverName");
    if (name && (!isHostName(*name) || isAddress(*name))) {
        failMember("serverName", "must be a host name");
    }
    if (isAddress(aHost)) return name;
    auto hostName = withoutFinalDot(aHost);
    if (hostName.empty() || !isHostName(hostName)) {
        failMember("host", "must be a host name or an address");
    }
    return name ? name : hostName;
}

std::vector<std::string> readAlpn(const Request& aRequest) {
    auto names = aRequest.findTexts("alpn");
    std::size_t size = 0; // of all names, each preceded by its length
    for (const auto& name : names) {
        if (name.empty() || name.size() > std::numeric_limits<unsigned char>::max()) {
            failMember("alpn", "must contain names of 1 to 255 bytes");
        }
        size += 1 + name.size();
    }
    // The lengths of the list and of the extension around it take two bytes each.
    if (size > std::numeric_limits<std::uint16_t>::max() - 2) failMember("alpn", "is too long");
    return names;
}

} // namespace

ServerRequest readServerRequest(const Request& aRequest) {
    ServerRequest request;
    request.host = aRequest.getText("host");
    request.port = aRequest.findInteger("port", 1, 65535).value_or(defaultPort);
    request.serverName = readServerName(aRequest, request.host);
    if (const auto protocol = aRequest.findText("startTls")) {
        request.startTls = findStartTls(*protocol);
    }
    request.alpn = readAlpn(aRequest);
    request.timeout = std::chrono::seconds(
        aRequest.findInteger("timeout", 1, maximumTimeout).value_or(defaultTimeout));
    request.trust.file = aRequest.findNonEmptyText("trustFile");
    request.trust.folder = aRequest.findNonEmptyText("trustFolder");
    return request;
}

} // namespace plugins
