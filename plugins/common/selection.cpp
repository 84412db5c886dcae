// SPDX-License-Identifier: MIT
#include "selection.h"

#include "failure.h"
#include "utf8_text.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace plugins {

namespace {

[[noreturn]] void failDigits(const char* aName) {
    throw Failure(ErrorCode::InvalidRequest,
                  std::string("member \"") + aName + "\" must be hexadecimal digits");
}

char toUpperDigit(char aCharacter, const char* aName) {
    if (aCharacter >= 'a' && aCharacter <= 'f') return static_cast<char>(aCharacter - 'a' + 'A');
    const bool isDigit =
        (aCharacter >= '0' && aCharacter <= '9') || (aCharacter >= 'A' && aCharacter <= 'F');
    if (!isDigit) failDigits(aName);
    return aCharacter;
}

// Returns the upper-case digits of a member, an even number of them, without colons.
std::optional<std::string> findDigits(const Request& aRequest, const char* aName) {
    auto text = aRequest.findNonEmptyText(aName);
    if (!text) return std::nullopt;
    std::erase(*text, ':');
    for (auto& character : *text) character = toUpperDigit(character, aName);
    if (text->empty() || text->size() % 2 != 0) failDigits(aName);
    return text;
}

std::optional<std::string> findFingerprint(const Request& aRequest) {
    auto digits = findDigits(aRequest, "sha256Fingerprint");
    if (!digits) return std::nullopt;
    for (auto i = digits->size() - 2; i > 0; i -= 2) digits->insert(i, 1, ':');
    return digits;
}

std::optional<std::string> findSerialNumber(const Request& aRequest) {
    auto text = aRequest.findNonEmptyText("serialNumber");
    if (!text) return std::nullopt;
    for (auto& character : *text) {
        if (&character != text->data() || character != '-') {
            character = toUpperDigit(character, "serialNumber");
        }
    }
    return text;
}

// Whether the criterion is absent or met; a value that the certificate lacks meets none.
template <typename Value>
bool isMet(const std::optional<std::string>& aCriterion, const Value& aValue) {
    return !aCriterion || *aCriterion == aValue;
}

bool isMet(const std::optional<std::string>& aCriterion, const std::optional<std::string>& aValue) {
    return !aCriterion || (aValue && *aCriterion == *aValue);
}

[[noreturn]] void failToFind(const Selectors& aSelectors, const std::string& aSourceName) {
    std::string criteria;
    const auto add = [&](const char* aWords, const std::optional<std::string>& aValue) {
        if (!aValue) return;
        criteria += criteria.empty() ? " has " : " and ";
        criteria += aWords + std::string(" \"") + *aValue + '"';
    };
    add("a subject with", aSelectors.subject);
    add("the label", aSelectors.label);
    add("the id", aSelectors.id);
    add("the serial number", aSelectors.serialNumber);
    add("the fingerprint", aSelectors.sha256Fingerprint);
    if (aSelectors.index) add("the index", std::to_string(*aSelectors.index));
    throw Failure(ErrorCode::NotFound, "no certificate in " + aSourceName + criteria);
}

Members describeMatch(const Selectors& aSelectors, const CertificateSource& aSource,
                      const Certificate& aCertificate) {
    Members members;
    addCertificate(members, aCertificate);
    if (aCertificate.label) members.addText("label", *aCertificate.label);
    if (aCertificate.id) members.addText("id", *aCertificate.id);
    if (aSelectors.chain) addChain(members, findIssuers(aCertificate, aSource.certificates));
    return members;
}

void addCount(Members& aMembers, const char* aName, std::size_t aCount) {
    aMembers.addInteger(aName, static_cast<std::int32_t>(aCount));
}

using Matches = std::vector<const Certificate*>;

Members answerList(const Selectors& aSelectors, const CertificateSource& aSource,
                   const Matches& aMatches) {
    std::vector<Members> objects;
    for (const auto* certificate : aMatches) {
        objects.push_back(describeMatch(aSelectors, aSource, *certificate));
    }
    Members members;
    members.addObjects("certificates", std::move(objects));
    return members;
}

Members answerOne(const Selectors& aSelectors, const CertificateSource& aSource,
                  const Matches& aMatches) {
    const auto index = static_cast<std::size_t>(aSelectors.index.value_or(0));
    if (index >= aMatches.size()) failToFind(aSelectors, aSource.name);
    auto members = describeMatch(aSelectors, aSource, *aMatches[index]);
    if (aMatches.size() > 1) addCount(members, "matches", aMatches.size());
    return members;
}

// Null if there is no issuer among the candidates, or none but the certificate itself.
const Certificate* findIssuer(const Certificate& aCertificate,
                              const std::vector<Certificate>& aCandidates) {
    if (aCertificate.subject == aCertificate.issuer) return nullptr;
    const auto found =
        std::find_if(aCandidates.begin(), aCandidates.end(), [&](const Certificate& aCandidate) {
            return aCandidate.token == aCertificate.token &&
                   aCandidate.subject == aCertificate.issuer &&
                   isIssuedBy(aCertificate.der, aCandidate.der);
        });
    return found == aCandidates.end() ? nullptr : &*found;
}

} // namespace

Selectors readSelectors(const Request& aRequest) {
    Selectors selectors;
    selectors.subject = aRequest.findNonEmptyText("subject");
    selectors.label = aRequest.findNonEmptyText("label");
    selectors.id = findDigits(aRequest, "id");
    selectors.serialNumber = findSerialNumber(aRequest);
    selectors.sha256Fingerprint = findFingerprint(aRequest);
    selectors.index = aRequest.findInteger("index", 0, std::numeric_limits<std::int32_t>::max());
    selectors.list = aRequest.getFlag("list");
    selectors.chain = aRequest.getFlag("chain");
    if (selectors.list && selectors.index) {
        throw Failure(ErrorCode::InvalidRequest,
                      "members \"list\" and \"index\" exclude each other");
    }
    return selectors;
}

bool isSelective(const Selectors& aSelectors) {
    return aSelectors.subject || aSelectors.label || aSelectors.id || aSelectors.serialNumber ||
           aSelectors.sha256Fingerprint || aSelectors.index || aSelectors.list;
}

bool matches(const Selectors& aSelectors, const Certificate& aCertificate) {
    return isMet(aSelectors.label, aCertificate.label) && isMet(aSelectors.id, aCertificate.id) &&
           isMet(aSelectors.serialNumber, aCertificate.serialNumber) &&
           isMet(aSelectors.sha256Fingerprint, aCertificate.sha256Fingerprint) &&
           (!aSelectors.subject ||
            containsIgnoringCase(nameValuesText(aCertificate.subject), *aSelectors.subject));
}

Members answerSelection(const Selectors& aSelectors, const CertificateSource& aSource) {
    Matches found;
    for (const auto& certificate : aSource.certificates) {
        if (matches(aSelectors, certificate)) found.push_back(&certificate);
    }
    if (found.empty()) failToFind(aSelectors, aSource.name);
    auto members = aSelectors.list ? answerList(aSelectors, aSource, found)
                                   : answerOne(aSelectors, aSource, found);
    if (aSource.skipped > 0) addCount(members, "skipped", aSource.skipped);
    return members;
}

std::vector<Certificate> findIssuers(const Certificate& aCertificate,
                                     const std::vector<Certificate>& aCandidates) {
    std::vector<Certificate> issuers;
    const auto* issuer = findIssuer(aCertificate, aCandidates);
    while (issuer != nullptr && std::ranges::find(issuers, *issuer) == issuers.end()) {
        issuers.push_back(*issuer);
        issuer = findIssuer(*issuer, aCandidates);
    }
    return issuers;
}

} // namespace plugins
