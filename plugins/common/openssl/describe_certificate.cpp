#include "describe_certificate.h"

#include "plugins/common/certificate_text.h"

#include <openssl/evp.h>
#include <openssl/objects.h>
#include <openssl/pem.h>

#include <arpa/inet.h>

#include <array>
#include <ctime>

using nlohmann::json;

namespace plugins {

namespace {

[[noreturn]] void failPart(const char* aPart) {
    throw Failure(ErrorCode::InvalidCertificate, std::string("the certificate's ") + aPart +
                                                     " cannot be decoded: " + takeReason());
}

Bytes bytesOf(const ASN1_STRING* aString) {
    return {ASN1_STRING_get0_data(aString), static_cast<std::size_t>(ASN1_STRING_length(aString))};
}

std::string textOf(const ASN1_STRING* aString) {
    const auto bytes = bytesOf(aString);
    return {bytes.begin(), bytes.end()};
}

std::string nameText(const X509_NAME* aName) {
    // RFC 2253 escapes everything above U+007F; the caller gets it as UTF-8 instead.
    constexpr unsigned long flags =
        XN_FLAG_RFC2253 & ~static_cast<unsigned long>(ASN1_STRFLGS_ESC_MSB);
    const auto buffer = makeBuffer();
    if (X509_NAME_print_ex(buffer.get(), aName, 0, flags) < 0) failPart("name");
    return takeText(buffer.get());
}

std::string identifierText(const ASN1_OBJECT* aIdentifier) {
    std::array<char, 256> text; // cut if longer, which no registered identifier comes near
    constexpr int alwaysInNumbers = 1;
    const auto length = OBJ_obj2txt(text.data(), text.size(), aIdentifier, alwaysInNumbers);
    if (length < 0) failPart("object identifier");
    return text.data();
}

std::string serialNumberText(const ASN1_INTEGER* aNumber) {
    return plugins::serialNumberText(ASN1_STRING_type(aNumber) == V_ASN1_NEG_INTEGER,
                                     bytesOf(aNumber));
}

std::string timeText(const ASN1_TIME* aTime) {
    std::tm time = {};
    if (ASN1_TIME_to_tm(aTime, &time) != 1) failPart("time of validity");
    return plugins::timeText({time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour,
                              time.tm_min, time.tm_sec});
}

std::string fingerprintText(const X509& aCertificate) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest;
    unsigned int length = 0;
    require(X509_digest(&aCertificate, EVP_sha256(), digest.data(), &length) == 1);
    return plugins::fingerprintText(Bytes(digest).first(length));
}

std::string addressText(const ASN1_OCTET_STRING* aAddress) {
    const auto bytes = bytesOf(aAddress);
    if (bytes.size() != 4 && bytes.size() != 16) return toHex(bytes); // neither IPv4 nor IPv6
    std::array<char, INET6_ADDRSTRLEN> text;
    inet_ntop(bytes.size() == 4 ? AF_INET : AF_INET6, bytes.data(), text.data(), text.size());
    return text.data();
}

std::string otherNameText(const OTHERNAME* aName) {
    auto text = identifierText(aName->type_id);
    if (aName->value->type == V_ASN1_UTF8STRING)
        text += ':' + textOf(aName->value->value.utf8string);
    return text;
}

std::string alternativeNameText(const GENERAL_NAME* aName) {
    switch (aName->type) {
    case GEN_DNS:
        return "DNS:" + textOf(aName->d.dNSName);
    case GEN_EMAIL:
        return "email:" + textOf(aName->d.rfc822Name);
    case GEN_URI:
        return "URI:" + textOf(aName->d.uniformResourceIdentifier);
    case GEN_IPADD:
        return "IP:" + addressText(aName->d.iPAddress);
    case GEN_DIRNAME:
        return "DirName:" + nameText(aName->d.directoryName);
    case GEN_RID:
        return "RID:" + identifierText(aName->d.registeredID);
    case GEN_OTHERNAME:
        return "otherName:" + otherNameText(aName->d.otherName);
    case GEN_X400:
        return "X400Name";
    default:
        return "EdiPartyName";
    }
}

json alternativeNames(const X509& aCertificate) {
    constexpr int absent = -1;
    int state = 0;
    const NamesHandle names(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(&aCertificate, NID_subject_alt_name, &state, nullptr)));
    if (!names && state != absent) failPart("subject alternative name");
    auto texts = json::array();
    for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
        texts.push_back(alternativeNameText(sk_GENERAL_NAME_value(names.get(), i)));
    }
    return texts;
}

// A key of a kind that OpenSSL does not know is shown by its identifier, without a size.
void addPublicKey(Response& aResponse, const X509& aCertificate) {
    if (const auto* key = X509_get0_pubkey(&aCertificate)) {
        aResponse.add("publicKeyAlgorithm", EVP_PKEY_get0_type_name(key));
        aResponse.add("publicKeyBits", EVP_PKEY_get_bits(key));
        return;
    }
    ERR_clear_error();
    ASN1_OBJECT* algorithm = nullptr;
    require(X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr,
                                   X509_get_X509_PUBKEY(&aCertificate)) == 1);
    aResponse.add("publicKeyAlgorithm", identifierText(algorithm));
    aResponse.add("publicKeyBits", nullptr);
}

std::string pemText(X509& aCertificate) {
    const auto buffer = makeBuffer();
    require(PEM_write_bio_X509(buffer.get(), &aCertificate) == 1);
    return takeText(buffer.get());
}

} // namespace

Response describeCertificate(X509& aCertificate) {
    Response response;
    response.add("subject", nameText(X509_get_subject_name(&aCertificate)));
    response.add("issuer", nameText(X509_get_issuer_name(&aCertificate)));
    response.add("serialNumber", serialNumberText(X509_get0_serialNumber(&aCertificate)));
    response.add("notBefore", timeText(X509_get0_notBefore(&aCertificate)));
    response.add("notAfter", timeText(X509_get0_notAfter(&aCertificate)));
    response.add("sha256Fingerprint", fingerprintText(aCertificate));
    response.add("subjectAlternativeNames", alternativeNames(aCertificate));
    addPublicKey(response, aCertificate);
    response.add("pem", pemText(aCertificate));
    return response;
}

} // namespace plugins
