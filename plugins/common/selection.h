// SPDX-License-Identifier: MIT
#pragma once

#include "certificate.h"
#include "members.h"
#include "request.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace plugins {

/// The members of a request that select certificates of a source, and the form of the answer. A
/// certificate matches if it meets all criteria that the request has.
struct Selectors {
    std::optional<std::string> subject; ///< part of the values of the subject's name; case ignored
    std::optional<std::string> label;   ///< the label, exactly
    std::optional<std::string> id;      ///< the id: upper-case hexadecimal digits
    std::optional<std::string> serialNumber;      ///< the serial number as in an answer
    std::optional<std::string> sha256Fingerprint; ///< the fingerprint as in an answer
    std::optional<std::int32_t> index; ///< the position among the matching certificates, from 0
    bool list = false;                 ///< answer with all matching certificates
    bool chain = false;                ///< add the issuers found in the same source
};

/// Reads "subject", "label", "id", "serialNumber", "sha256Fingerprint", "index", "list" and
/// "chain". Digits may be of either case, and those of the id and the fingerprint may be separated
/// by colons. Throws Failure (InvalidRequest) for a member that is invalid or empty, and for
/// "index" with "list".
Selectors readSelectors(const Request& aRequest);

/// Returns whether the request has a criterion, "index" or "list". Without, an answer from a source
/// with many certificates would be an arbitrary one.
bool isSelective(const Selectors& aSelectors);

/// Returns whether the certificate meets all criteria other than "index".
bool matches(const Selectors& aSelectors, const Certificate& aCertificate);

/// The certificates of one source, in its order.
struct CertificateSource {
    std::string name; ///< for messages: "a.pem", "store \"MY\""
    std::vector<Certificate> certificates;
    std::size_t skipped = 0; ///< certificates or files that could not be decoded
};

/// Returns the members of the first matching certificate, or of the one at "index", then
/// "matches", the number of matching certificates, if there are several; with "list", only
/// "certificates", an array of objects with the members of each match. With "chain", each
/// certificate has a member "chain". Adds "skipped" if it is not 0. Throws Failure (NotFound) if no
/// certificate matches.
Members answerSelection(const Selectors& aSelectors, const CertificateSource& aSource);

/// Returns the issuer of the certificate, its issuer and so on, as far as they are among
/// @p aCandidates and on the same token. A self-signed certificate has none.
std::vector<Certificate> findIssuers(const Certificate& aCertificate,
                                     const std::vector<Certificate>& aCandidates);

} // namespace plugins
