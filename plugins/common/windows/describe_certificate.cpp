// SPDX-License-Identifier: MIT
#include "describe_certificate.h"

#include "name_text.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace plugins {

namespace {

// The system keeps numbers in two's complement, the least significant byte first.
std::string serialNumberText(const CRYPT_INTEGER_BLOB& aNumber) {
    const auto blob = bytesOf(aNumber);
    std::vector<unsigned char> bytes(blob.rbegin(), blob.rend());
    const bool isNegative = !bytes.empty() && bytes.front() >= 0x80;
    if (isNegative) {
        for (auto& byte : bytes) byte = static_cast<unsigned char>(~byte);
        for (auto byte = bytes.rbegin(); byte != bytes.rend() && ++*byte == 0; ++byte) {
        }
    }
    if (bytes.size() > 1 && bytes.front() == 0) bytes.erase(bytes.begin()); // only held the sign
    return plugins::serialNumberText(isNegative, bytes);
}

std::string timeText(const FILETIME& aTime) {
    SYSTEMTIME time = {};
    if (!FileTimeToSystemTime(&aTime, &time)) failPart("time of validity");
    return plugins::timeText(
        {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond});
}

std::string fingerprintText(const CERT_CONTEXT& aCertificate) {
    std::array<unsigned char, 32> digest;
    DWORD length = digest.size();
    if (!CryptHashCertificate(0, CALG_SHA_256, 0, aCertificate.pbCertEncoded,
                              aCertificate.cbCertEncoded, digest.data(), &length)) {
        throw Failure(ErrorCode::InternalError, "crypt32: " + errorText(GetLastError()));
    }
    return plugins::fingerprintText(Bytes(digest).first(length));
}

std::string addressText(Bytes aAddress) {
    if (aAddress.size() != 4 && aAddress.size() != 16) return toHex(aAddress);
    std::array<char, INET6_ADDRSTRLEN> text = {};
    inet_ntop(aAddress.size() == 4 ? AF_INET : AF_INET6, aAddress.data(), text.data(), text.size());
    return text.data();
}

std::string otherNameText(const CERT_OTHER_NAME& aName) {
    std::string text = aName.pszObjId;
    constexpr unsigned char utf8StringTag = 12;
    const auto der = bytesOf(aName.Value);
    if (der.empty() || der.front() != utf8StringTag) return text;
    const auto value =
        decode<CERT_NAME_VALUE>(X509_UNICODE_ANY_STRING, der, "subject alternative name");
    return text + ':' + textOf(value->Value);
}

std::string alternativeNameText(const CERT_ALT_NAME_ENTRY& aName) {
    switch (aName.dwAltNameChoice) {
    case CERT_ALT_NAME_DNS_NAME:
        return "DNS:" + toUtf8(aName.pwszDNSName);
    case CERT_ALT_NAME_RFC822_NAME:
        return "email:" + toUtf8(aName.pwszRfc822Name);
    case CERT_ALT_NAME_URL:
        return "URI:" + toUtf8(aName.pwszURL);
    case CERT_ALT_NAME_IP_ADDRESS:
        return "IP:" + addressText(bytesOf(aName.IPAddress));
    case CERT_ALT_NAME_DIRECTORY_NAME:
        return "DirName:" + nameText(bytesOf(aName.DirectoryName));
    case CERT_ALT_NAME_REGISTERED_ID:
        return std::string("RID:") + aName.pszRegisteredID;
    case CERT_ALT_NAME_OTHER_NAME:
        return "otherName:" + otherNameText(*aName.pOtherName);
    case CERT_ALT_NAME_X400_ADDRESS:
        return "X400Name";
    default:
        return "EdiPartyName";
    }
}

std::vector<std::string> alternativeNames(const CERT_INFO& aInfo) {
    std::vector<std::string> texts;
    const auto* const extension =
        CertFindExtension(szOID_SUBJECT_ALT_NAME2, aInfo.cExtension, aInfo.rgExtension);
    if (!extension) return texts;
    const auto names = decode<CERT_ALT_NAME_INFO>(X509_ALTERNATE_NAME, bytesOf(extension->Value),
                                                  "subject alternative name");
    for (const auto& name : std::span(names->rgAltEntry, names->cAltEntry)) {
        texts.push_back(alternativeNameText(name));
    }
    return texts;
}

struct KeyKind {
    std::string_view identifier;
    std::string_view name;
    int bits; // 0: differs from key to key
};
constexpr std::array keyKinds = {
    KeyKind{szOID_RSA_RSA, "RSA", 0},       KeyKind{"1.2.840.113549.1.1.10", "RSA-PSS", 0},
    KeyKind{szOID_X957_DSA, "DSA", 0},      KeyKind{szOID_ECC_PUBLIC_KEY, "EC", 0},
    KeyKind{"1.3.101.112", "ED25519", 256}, KeyKind{"1.3.101.113", "ED448", 456},
};
// The system may not report the size of these.
constexpr std::array curves = {
    KeyKind{szOID_ECC_CURVE_P256, "P-256", 256},
    KeyKind{szOID_ECC_CURVE_P384, "P-384", 384},
    KeyKind{szOID_ECC_CURVE_P521, "P-521", 521},
};

template <typename Kinds>
const KeyKind* findKind(const Kinds& aKinds, std::string_view aIdentifier) {
    const auto found = std::find_if(aKinds.begin(), aKinds.end(), [&](const KeyKind& aKind) {
        return aKind.identifier == aIdentifier;
    });
    return found == aKinds.end() ? nullptr : &*found;
}

const KeyKind* findCurve(const CRYPT_ALGORITHM_IDENTIFIER& aAlgorithm) {
    constexpr unsigned char identifierTag = 6;
    const auto der = bytesOf(aAlgorithm.Parameters);
    if (der.empty() || der.front() != identifierTag) return nullptr;
    const auto curve = decode<LPSTR>(X509_OBJECT_IDENTIFIER, der, "public key");
    return findKind(curves, *curve);
}

// A key of a kind that is not known here is shown by its identifier.
void describePublicKey(Certificate& aDescription, CERT_PUBLIC_KEY_INFO aKey) {
    const std::string_view identifier(aKey.Algorithm.pszObjId);
    const auto* const kind = findKind(keyKinds, identifier);
    aDescription.publicKeyAlgorithm = kind ? kind->name : identifier;
    const auto* const size = identifier == szOID_ECC_PUBLIC_KEY ? findCurve(aKey.Algorithm) : kind;
    auto bits = size ? size->bits : 0;
    if (bits == 0) bits = static_cast<int>(CertGetPublicKeyLength(certificateEncoding, &aKey));
    if (bits != 0) aDescription.publicKeyBits = bits;
}

// Empty if the certificate does not have the property.
std::vector<unsigned char> propertyOf(const CERT_CONTEXT& aCertificate, DWORD aProperty) {
    DWORD size = 0;
    if (!CertGetCertificateContextProperty(&aCertificate, aProperty, nullptr, &size)) return {};
    std::vector<unsigned char> bytes(size);
    if (!CertGetCertificateContextProperty(&aCertificate, aProperty, bytes.data(), &size))
        return {};
    bytes.resize(size);
    return bytes;
}

void describeAttributes(Certificate& aDescription, const CERT_CONTEXT& aCertificate) {
    const auto name = propertyOf(aCertificate, CERT_FRIENDLY_NAME_PROP_ID);
    std::wstring label(name.size() / sizeof(wchar_t), L'\0');
    if (!label.empty()) std::memcpy(label.data(), name.data(), label.size() * sizeof(wchar_t));
    while (label.ends_with(L'\0')) label.pop_back();
    if (!label.empty()) aDescription.label = toUtf8(label);
    const auto id = propertyOf(aCertificate, CERT_KEY_IDENTIFIER_PROP_ID);
    if (!id.empty()) aDescription.id = toHex(id);
}

CertificateHandle parseCertificate(Bytes aDer) {
    return CertificateHandle(CertCreateCertificateContext(certificateEncoding, aDer.data(),
                                                          static_cast<DWORD>(aDer.size())));
}

// Without attributes: the system computes a key identifier for every certificate.
Certificate describeContent(const CERT_CONTEXT& aCertificate) {
    const CERT_INFO& info = *aCertificate.pCertInfo;
    Certificate description;
    description.der.assign(aCertificate.pbCertEncoded,
                           aCertificate.pbCertEncoded + aCertificate.cbCertEncoded);
    description.subject = nameText(bytesOf(info.Subject));
    description.issuer = nameText(bytesOf(info.Issuer));
    description.serialNumber = serialNumberText(info.SerialNumber);
    description.notBefore = timeText(info.NotBefore);
    description.notAfter = timeText(info.NotAfter);
    description.sha256Fingerprint = fingerprintText(aCertificate);
    description.subjectAlternativeNames = alternativeNames(info);
    describePublicKey(description, info.SubjectPublicKeyInfo);
    return description;
}

} // namespace

Certificate describeCertificate(const CERT_CONTEXT& aCertificate) {
    auto description = describeContent(aCertificate);
    describeAttributes(description, aCertificate);
    return description;
}

Certificate describeCertificate(Bytes aDer) {
    const auto certificate = parseCertificate(aDer);
    // The system accepts further bytes after the certificate.
    if (!certificate || certificate->cbCertEncoded != aDer.size()) {
        throw Failure(ErrorCode::InvalidCertificate,
                      "the certificate cannot be decoded: " + errorText(GetLastError()));
    }
    return describeContent(*certificate);
}

bool isIssuedBy(Bytes aCertificate, Bytes aIssuer) {
    const auto certificate = parseCertificate(aCertificate);
    const auto issuer = parseCertificate(aIssuer);
    if (!certificate || !issuer) return false;
    return CertCompareCertificateName(certificateEncoding, &certificate->pCertInfo->Issuer,
                                      &issuer->pCertInfo->Subject) &&
           CryptVerifyCertificateSignatureEx(
               0, certificateEncoding, CRYPT_VERIFY_CERT_SIGN_SUBJECT_CERT,
               const_cast<CERT_CONTEXT*>(certificate.get()), CRYPT_VERIFY_CERT_SIGN_ISSUER_CERT,
               const_cast<CERT_CONTEXT*>(issuer.get()), 0, nullptr);
}

} // namespace plugins
