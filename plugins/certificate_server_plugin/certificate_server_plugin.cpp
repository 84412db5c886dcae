// SPDX-License-Identifier: MIT

// Shows the certificate of a TLS server: "host" is its name or address, "port" its port, and
// "startTls" the protocol that it speaks before TLS.
#include "connection.h"
#include "server_request.h"
#include "tls_handshake.h"
#include "verification.h"

#include "plugins/common/certificate.h"
#include "plugins/common/library_memory.h"
#include "plugins/common/replying_plugin.h"

#include <iterator>

namespace {

using namespace plugins;

TlsServer contactServer(const ServerRequest& aRequest) {
    const Deadline deadline(aRequest.timeout);
    Connection connection(lookUpHost(aRequest.host, aRequest.port, deadline), deadline);
    if (aRequest.startTls != nullptr) {
        PlainDialogue dialogue(connection);
        aRequest.startTls(dialogue, aRequest.serverName.value_or(aRequest.host));
        dialogue.finish();
    }
    return performHandshake(connection, {aRequest.serverName, aRequest.alpn});
}

void addServer(Members& aMembers, const TlsServer& aServer) {
    std::vector<Certificate> others;
    for (auto der = std::next(aServer.certificates.begin()); der != aServer.certificates.end();
         ++der) {
        others.push_back(describeCertificate(*der));
    }
    addCertificate(aMembers, describeCertificate(aServer.certificates.front()));
    addChain(aMembers, others);
    aMembers.addText("protocol", aServer.protocol);
    aMembers.addText("cipher", aServer.cipher);
    if (aServer.alpnProtocol) aMembers.addText("alpnProtocol", *aServer.alpnProtocol);
    aMembers.addBoolean("ocspStapled", aServer.isOcspStapled);
}

void addVerdict(Members& aMembers, const TlsServer& aServer, const ServerRequest& aRequest) {
    const auto distrust = findDistrust(aServer.certificates, aRequest.trust, aServer.securityLevel);
    aMembers.addBoolean("verified", !distrust);
    if (distrust) aMembers.addText("verifyError", *distrust);
    aMembers.addBoolean("hostMatches", namesHost(aServer.certificates.front(),
                                                 aRequest.serverName.value_or(aRequest.host)));
}

// Adds the name of the server to the message of a Failure of contactServer().
TlsServer contactNamedServer(const ServerRequest& aRequest) {
    try {
        return contactServer(aRequest);
    } catch (const Failure& failure) {
        throw Failure(failure.getCode(), aRequest.host + ", port " + std::to_string(aRequest.port) +
                                             ": " + failure.what());
    }
}

class CertificateServerPlugin final : public ReplyingPlugin {
    Members answer(Request& aRequest) override {
        recordFailedAllocations();
        const auto request = readServerRequest(aRequest);
        const auto server = contactNamedServer(request);
        Members members;
        addServer(members, server);
        addVerdict(members, server, request);
        return members;
    }
};

} // namespace

extern "C" Plugin* GetPlugin() {
    static CertificateServerPlugin plugin;
    return &plugin;
}
