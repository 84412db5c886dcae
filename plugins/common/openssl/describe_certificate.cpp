#include "describe_certificate.h"

#include "openssl_handles.h"

#include <openssl/evp.h>
#include <openssl/objects.h>

#include <arpa/inet.h>

#include <array>
#include <ctime>

namespace plugins {

namespace {

[[noreturn]] void failPart(const char* aPart) {
    throw Failure(ErrorCode::InvalidCertificate, std::string("the certificate's ") + aPart +
                                                     " cannot be decoded: " + takeReason());
}

void freeBytes(unsigned char* aBytes) {
    OPENSSL_free(aBytes);
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
    std::vector<std::string> texts;
    for (int i = 0; i < sk_GENERAL_NAME_num(names.get()); ++i) {
        texts.push_back(alternativeNameText(sk_GENERAL_NAME_value(names.get(), i)));
    }
    return texts;
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
    ERR_clear_error();
    ASN1_OBJECT* algorithm = nullptr;
    require(X509_PUBKEY_get0_param(&algorithm, nullptr, nullptr, nullptr,
                                   X509_get_X509_PUBKEY(&aCertificate)) == 1);
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

void describeAttributes(Certificate& aDescription, X509& aCertificate) {
    int length = 0;
    if (const auto* alias = X509_alias_get0(&aCertificate, &length)) {
        aDescription.label.emplace(alias, alias + length);
    }
    if (const auto* id = X509_keyid_get0(&aCertificate, &length)) {
        aDescription.id = toHex({id, static_cast<std::size_t>(length)});
    }
}

} // namespace

std::vector<unsigned char> toDer(const X509& aCertificate) {
    unsigned char* bytes = nullptr;
    const auto length = i2d_X509(&aCertificate, &bytes);
    require(length > 0);
    const std::unique_ptr<unsigned char, FreeWith<freeBytes>> owner(bytes);
    return {bytes, bytes + length};
}

Certificate describeCertificate(Bytes aDer) {
    return confirmed([&] { return describeOnce(aDer); });
}

Certificate describeCertificate(const X509& aCertificate) {
    auto description = describeCertificate(toDer(aCertificate));
    // These functions only read, but take a pointer to an object that is not const.
    describeAttributes(description, const_cast<X509&>(aCertificate));
    return description;
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
