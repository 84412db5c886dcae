// SPDX-License-Identifier: MIT
#include "certificate.h"

#include <set>
#include <utility>

namespace plugins {

void addCertificate(Members& aMembers, const Certificate& aCertificate) {
    aMembers.addText("subject", aCertificate.subject);
    aMembers.addText("issuer", aCertificate.issuer);
    aMembers.addText("serialNumber", aCertificate.serialNumber);
    aMembers.addText("notBefore", aCertificate.notBefore);
    aMembers.addText("notAfter", aCertificate.notAfter);
    aMembers.addText("sha256Fingerprint", aCertificate.sha256Fingerprint);
    aMembers.addTexts("subjectAlternativeNames", aCertificate.subjectAlternativeNames);
    aMembers.addText("publicKeyAlgorithm", aCertificate.publicKeyAlgorithm);
    if (aCertificate.publicKeyBits) {
        aMembers.addInteger("publicKeyBits", *aCertificate.publicKeyBits);
    } else {
        aMembers.addNull("publicKeyBits");
    }
    aMembers.addText("pem", pemText(aCertificate.der));
}

void addChain(Members& aMembers, const std::vector<Certificate>& aIssuers) {
    std::vector<Members> chain;
    for (const auto& issuer : aIssuers) {
        auto& link = chain.emplace_back();
        link.addText("subject", issuer.subject);
        link.addText("issuer", issuer.issuer);
        link.addText("sha256Fingerprint", issuer.sha256Fingerprint);
        link.addText("pem", pemText(issuer.der));
    }
    aMembers.addObjects("chain", std::move(chain));
}

void removeRepetitions(std::vector<Certificate>& aCertificates) {
    std::set<std::string> known;
    std::erase_if(aCertificates, [&](const Certificate& aCertificate) {
        return !known.insert(aCertificate.sha256Fingerprint).second;
    });
}

} // namespace plugins
