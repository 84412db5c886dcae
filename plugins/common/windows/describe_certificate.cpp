#include "describe_certificate.h"

#include "name_text.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using nlohmann::json;

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

json alternativeNames(const CERT_INFO& aInfo) {
    auto texts = json::array();
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
// For these the system may not tell the size.
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
void addPublicKey(Response& aResponse, CERT_PUBLIC_KEY_INFO aKey) {
    const std::string_view identifier(aKey.Algorithm.pszObjId);
    const auto* const kind = findKind(keyKinds, identifier);
    aResponse.add("publicKeyAlgorithm", kind ? kind->name : identifier);
    const auto* const size = identifier == szOID_ECC_PUBLIC_KEY ? findCurve(aKey.Algorithm) : kind;
    auto bits = size ? static_cast<DWORD>(size->bits) : 0;
    if (bits == 0) bits = CertGetPublicKeyLength(certificateEncoding, &aKey);
    aResponse.add("publicKeyBits", bits == 0 ? json(nullptr) : json(bits));
}

std::string base64Text(Bytes aBytes) {
    DWORD length = 0;
    std::string text;
    const auto convert = [&](char* aDest) {
        if (!CryptBinaryToStringA(aBytes.data(), static_cast<DWORD>(aBytes.size()),
                                  CRYPT_STRING_BASE64 | CRYPT_STRING_NOCRLF, aDest, &length)) {
            throw Failure(ErrorCode::InternalError, "crypt32: " + errorText(GetLastError()));
        }
    };
    convert(nullptr);
    text.resize(length);
    convert(text.data());
    text.resize(std::strlen(text.c_str())); // the length may count the terminating null
    return text;
}

std::string pemText(const CERT_CONTEXT& aCertificate) {
    constexpr std::size_t lineLength = 64;
    const auto digits = base64Text({aCertificate.pbCertEncoded, aCertificate.cbCertEncoded});
    std::string text = "-----BEGIN CERTIFICATE-----\n";
    for (std::size_t i = 0; i < digits.size(); i += lineLength) {
        text += digits.substr(i, lineLength) + '\n';
    }
    return text + "-----END CERTIFICATE-----\n";
}

} // namespace

Response describeCertificate(const CERT_CONTEXT& aCertificate) {
    const CERT_INFO& info = *aCertificate.pCertInfo;
    Response response;
    response.add("subject", nameText(bytesOf(info.Subject)));
    response.add("issuer", nameText(bytesOf(info.Issuer)));
    response.add("serialNumber", serialNumberText(info.SerialNumber));
    response.add("notBefore", timeText(info.NotBefore));
    response.add("notAfter", timeText(info.NotAfter));
    response.add("sha256Fingerprint", fingerprintText(aCertificate));
    response.add("subjectAlternativeNames", alternativeNames(info));
    addPublicKey(response, info.SubjectPublicKeyInfo);
    response.add("pem", pemText(aCertificate));
    return response;
}

} // namespace plugins
