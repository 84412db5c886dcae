// SPDX-License-Identifier: MIT
#include "openssl_handles.h"
#include "plugins/common/certificate.h"

#include <openssl/evp.h>
#include <openssl/objects.h>

#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <ctime>

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

std::vector<std::string> alternativeNames(const X509& aCertificate) {
    constexpr int absent = -1;
    int state = 0;
    const NamesHandle names(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(&aCertificate, NID_subject_alt_name, &state, nullptr)));
    if (!names && state != absent) failPart("subject alternative name");
    const int count = std::max(sk_GENERAL_NAME_num(names.get()), 0);
    std::vector<std::string> texts;
    texts.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        texts.push_back(alternativeNameText(sk_GENERAL_NAME_value(names.get(), i)));
    }
    return texts;
}

// Public keys in DER form that OpenSSL can read if it can read keys of their kind at all.
constexpr std::array<unsigned char, 30> rsaKey = { // modulus 65533, exponent 3
    0x30, 0x1C, 0x30, 0x0D, 0x06, 0x09, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01,
    0x05, 0x00, 0x03, 0x0B, 0x00, 0x30, 0x08, 0x02, 0x03, 0x00, 0xFF, 0xFD, 0x02, 0x01, 0x03};
constexpr std::array<unsigned char, 91> p256Key = { // the generator of the curve P-256
    0x30, 0x59, 0x30, 0x13, 0x06, 0x07, 0x2A, 0x86, 0x48, 0xCE, 0x3D, 0x02, 0x01, 0x06, 0x08, 0x2A,
    0x86, 0x48, 0xCE, 0x3D, 0x03, 0x01, 0x07, 0x03, 0x42, 0x00, 0x04, 0x6B, 0x17, 0xD1, 0xF2, 0xE1,
    0x2C, 0x42, 0x47, 0xF8, 0xBC, 0xE6, 0xE5, 0x63, 0xA4, 0x40, 0xF2, 0x77, 0x03, 0x7D, 0x81, 0x2D,
    0xEB, 0x33, 0xA0, 0xF4, 0xA1, 0x39, 0x45, 0xD8, 0x98, 0xC2, 0x96, 0x4F, 0xE3, 0x42, 0xE2, 0xFE,
    0x1A, 0x7F, 0x9B, 0x8E, 0xE7, 0xEB, 0x4A, 0x7C, 0x0F, 0x9E, 0x16, 0x2B, 0xCE, 0x33, 0x57, 0x6B,
    0x31, 0x5E, 0xCE, 0xCB, 0xB6, 0x40, 0x68, 0x37, 0xBF, 0x51, 0xF5};
constexpr std::array<unsigned char, 44> ed25519Key = { // 32 zero bytes
    0x30, 0x2A, 0x30, 0x05, 0x06, 0x03, 0x2B, 0x65, 0x70, 0x03, 0x21, 0x00};
constexpr std::array<unsigned char, 69> ed448Key = { // 57 zero bytes
    0x30, 0x43, 0x30, 0x05, 0x06, 0x03, 0x2B, 0x65, 0x71, 0x03, 0x3A, 0x00};

Bytes readableKeyLike(const ASN1_OBJECT* aAlgorithm) {
    switch (OBJ_obj2nid(aAlgorithm)) {
    case NID_rsaEncryption:
        return rsaKey;
    case NID_ED25519:
        return ed25519Key;
    case NID_ED448:
        return ed448Key;
    default:
        return p256Key;
    }
}

// OpenSSL loads its implementations on first use. If memory runs out then, it cannot read keys of
// some or all kinds for the rest of the process, and does not report the reason.
void checkImplementation(const ASN1_OBJECT* aAlgorithm) {
    const auto bytes = readableKeyLike(aAlgorithm);
    const auto* position = bytes.data();
    const KeyHandle key(d2i_PUBKEY(nullptr, &position, static_cast<long>(bytes.size())));
    require(key != nullptr);
}

// A key of a kind that OpenSSL does not know is shown by its identifier, without a size.
void describePublicKey(Certificate& aDescription, const X509& aCertificate) {
    if (const auto* key = X509_get0_pubkey(&aCertificate)) {
        const auto* const name = EVP_PKEY_get0_type_name(key);
        require(name != nullptr);
        aDescription.publicKeyAlgorithm = name;
        aDescription.publicKeyBits = EVP_PKEY_get_bits(key);
        return;
    }
    ASN1_OBJECT* algorithm = nullptr;
    require(X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr,
                                   X509_get_X509_PUBKEY(&aCertificate)) == 1);
    checkImplementation(algorithm);
    ERR_clear_error();
    aDescription.publicKeyAlgorithm = identifierText(algorithm);
}

// Null if the bytes are not exactly one certificate.
CertificateHandle parseCertificate(Bytes aDer) {
    const auto* position = aDer.data();
    CertificateHandle certificate(d2i_X509(nullptr, &position, static_cast<long>(aDer.size())));
    if (position != aDer.data() + aDer.size()) certificate.reset();
    return certificate;
}

Certificate describeOnce(Bytes aDer) {
    const auto certificate = parseCertificate(aDer);
    if (!certificate) {
        throw Failure(ErrorCode::InvalidCertificate,
                      "the certificate cannot be decoded: " + takeReason());
    }
    Certificate description;
    description.der.assign(aDer.begin(), aDer.end());
    description.subject = nameText(X509_get_subject_name(certificate.get()));
    description.issuer = nameText(X509_get_issuer_name(certificate.get()));
    description.serialNumber = serialNumberText(X509_get0_serialNumber(certificate.get()));
    description.notBefore = timeText(X509_get0_notBefore(certificate.get()));
    description.notAfter = timeText(X509_get0_notAfter(certificate.get()));
    description.sha256Fingerprint = fingerprintText(*certificate);
    description.subjectAlternativeNames = alternativeNames(*certificate);
    describePublicKey(description, *certificate);
    return description;
}

} // namespace

Certificate describeCertificate(Bytes aDer) {
    return confirmed([&] { return describeOnce(aDer); });
}

bool isIssuedBy(Bytes aCertificate, Bytes aIssuer) {
    return confirmed([&] {
        const auto certificate = parseCertificate(aCertificate);
        const auto issuer = parseCertificate(aIssuer);
        if (!certificate || !issuer) return false;
        auto* const key = X509_get0_pubkey(issuer.get());
        return key != nullptr &&
               X509_NAME_cmp(X509_get_issuer_name(certificate.get()),
                             X509_get_subject_name(issuer.get())) == 0 &&
               X509_verify(certificate.get(), key) == 1;
    });
}

} // namespace plugins
