// SPDX-License-Identifier: MIT

// Lists the certificates of a file with arbitrary content through certificate_file_plugin, with the
// password "x". Each certificate must have all members in their documented forms, a fingerprint
// equal to that of the PEM text, and the same members when that PEM text is the file.
#include "fuzz/require.h"
#include "tests/vexil/json/json_helpers.h"
#include <certbridge/plugin.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace vexil;

namespace {

/// A file in memory, which the plugin opens by its name.
class MemoryFile {
public:
    MemoryFile() : mDescriptor(memfd_create("certificate", 0)) {
        require(mDescriptor >= 0, "there is a file in memory");
    }
    ~MemoryFile() { close(mDescriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string getName() const { return "/proc/self/fd/" + std::to_string(mDescriptor); }

    void replaceContent(std::string_view aContent) const {
        const bool isWritten = ftruncate(mDescriptor, 0) == 0 &&
                               pwrite(mDescriptor, aContent.data(), aContent.size(), 0) ==
                                   static_cast<ssize_t>(aContent.size());
        require(isWritten, "the file is written");
    }

private:
    int mDescriptor;
};

const MemoryFile& sharedFile() {
    static const MemoryFile file;
    return file;
}

std::string requestText() {
    return R"({"request":[{"name":"file","value":")" + sharedFile().getName() +
           R"("},{"name":"password","value":"x"},{"name":"list","value":true},)"
           R"({"name":"chain","value":true}]})";
}

const JsonValue& memberOf(const JsonValue& aObject, const char* aName) {
    const auto* const value = aObject.findFirst(aName);
    require(value != nullptr, aName);
    return *value;
}

const std::string& textOf(const JsonValue& aObject, const char* aName) {
    const auto& value = memberOf(aObject, aName);
    require(value.getType() == JsonType::String, aName);
    return value.getString();
}

/// The value of a name in a list of objects with "name" and "value".
const JsonValue& namedValue(const JsonValue& aList, std::string_view aName) {
    std::uint32_t i = 0;
    while (i < aList.getSize() && textOf(*aList.getValueAt(i), "name") != aName) ++i;
    require(i < aList.getSize(), "a list has the name");
    return memberOf(*aList.getValueAt(i), "value");
}

bool isUpperHex(char aCharacter) {
    return (aCharacter >= '0' && aCharacter <= '9') || (aCharacter >= 'A' && aCharacter <= 'F');
}

bool isDigits(std::string_view aText) {
    return !aText.empty() && aText.size() % 2 == 0 && std::ranges::all_of(aText, isUpperHex);
}

bool isSerialNumber(std::string_view aText) {
    return isDigits(aText.substr(aText.starts_with('-') ? 1 : 0));
}

/// Whether each 0 of the pattern is a digit in the text, and other characters are the same.
bool isTime(std::string_view aText) {
    constexpr std::string_view pattern = "0000-00-00T00:00:00Z";
    return std::ranges::equal(aText, pattern, [](char aCharacter, char aExpected) {
        return aExpected == '0' ? std::isdigit(static_cast<unsigned char>(aCharacter)) != 0
                                : aCharacter == aExpected;
    });
}

bool isAlternativeName(std::string_view aText) {
    constexpr std::array<std::string_view, 7> kinds = {
        "DNS:", "IP:", "email:", "URI:", "DirName:", "RID:", "otherName:"};
    return aText == "X400Name" || aText == "EdiPartyName" ||
           std::ranges::any_of(kinds, [&](auto aKind) { return aText.starts_with(aKind); });
}

/// The fingerprint of the certificate in a PEM text, computed without the plugin.
std::string fingerprintOf(const std::string& aPem) {
    BIO* const text = BIO_new_mem_buf(aPem.data(), static_cast<int>(aPem.size()));
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* der = nullptr;
    long size = 0;
    require(PEM_read_bio(text, &name, &header, &der, &size) == 1, "the PEM text is readable");
    std::array<unsigned char, 32> digest;
    EVP_Digest(der, static_cast<std::size_t>(size), digest.data(), nullptr, EVP_sha256(), nullptr);
    OPENSSL_free(name);
    OPENSSL_free(header);
    OPENSSL_free(der);
    BIO_free(text);
    std::string fingerprint;
    for (const auto byte : digest) {
        std::array<char, 4> digits;
        std::snprintf(digits.data(), digits.size(), ":%02X", byte);
        fingerprint += digits.data();
    }
    return fingerprint.substr(1);
}

void checkPublicKey(const JsonValue& aCertificate) {
    require(!textOf(aCertificate, "publicKeyAlgorithm").empty(), "a key has an algorithm");
    const auto& bits = memberOf(aCertificate, "publicKeyBits");
    require(bits.getType() == JsonType::Null || bits.getInteger() >= 0, "a key has a size");
}

void checkAlternativeNames(const JsonValue& aCertificate) {
    const auto& names = memberOf(aCertificate, "subjectAlternativeNames");
    for (std::uint32_t i = 0; i < names.getSize(); ++i) {
        require(isAlternativeName(names.getValueAt(i)->getString()), "a name has a kind");
    }
}

/// The issuers in "chain", each with the fingerprint of its PEM text and the name of the issuer of
/// the certificate before it.
void checkChain(const JsonValue& aCertificate) {
    const auto& chain = memberOf(aCertificate, "chain");
    const auto* issued = &aCertificate;
    for (std::uint32_t i = 0; i < chain.getSize(); ++i) {
        const auto& issuer = *chain.getValueAt(i);
        require(textOf(issuer, "subject") == textOf(*issued, "issuer"), "names form a chain");
        require(textOf(issuer, "sha256Fingerprint") == fingerprintOf(textOf(issuer, "pem")),
                "the fingerprint of an issuer is that of its PEM text");
        issued = &issuer;
    }
}

void checkForms(const JsonValue& aCertificate) {
    textOf(aCertificate, "subject");
    textOf(aCertificate, "issuer");
    require(isSerialNumber(textOf(aCertificate, "serialNumber")), "form of the serial number");
    require(isTime(textOf(aCertificate, "notBefore")), "form of notBefore");
    require(isTime(textOf(aCertificate, "notAfter")), "form of notAfter");
    const auto* const id = aCertificate.findFirst("id");
    require(id == nullptr || id->getString().empty() || isDigits(id->getString()),
            "form of the id");
    require(textOf(aCertificate, "sha256Fingerprint") == fingerprintOf(textOf(aCertificate, "pem")),
            "the fingerprint is that of the PEM text");
    checkAlternativeNames(aCertificate);
    checkPublicKey(aCertificate);
    checkChain(aCertificate);
}

/// The code is one that the content of a file can cause, and the message names the file.
void checkError(const JsonValue& aError) {
    constexpr int invalidCertificate = 4;
    constexpr int wrongPassword = 5;
    const auto code = namedValue(aError, "errorCode").getInteger();
    require(code == invalidCertificate || code == wrongPassword, "an error has one of two codes");
    const auto& message = namedValue(aError, "erroMessage").getString();
    require(message.starts_with(sharedFile().getName() + ": "), "a message names the file");
}

/// The answer about a file with this content; its "response" has the certificates.
JsonTree ask(std::string_view aContent) {
    sharedFile().replaceContent(aContent);
    const char* response = nullptr;
    const char* error = nullptr;
    static const std::string request = requestText();
    GetPlugin()->getCertificate(request.c_str(), &response, &error);
    require((response == nullptr) != (error == nullptr), "there is one reply");
    return parseText(response != nullptr ? response : error);
}

/// The PEM text describes the same certificate; a label, an id and issuers are not part of it.
void checkPem(const JsonValue& aCertificate) {
    const auto reply = ask(textOf(aCertificate, "pem"));
    const auto& certificates = namedValue(memberOf(*reply, "response"), "certificates");
    require(certificates.getSize() == 1, "the PEM text is one certificate");
    const auto& again = *certificates.getValueAt(0);
    for (std::uint32_t i = 0; i < again.getSize(); ++i) {
        const auto& name = again.getNameAt(i)->getString();
        if (name == "chain") continue;
        require(writeText(*again.getValueAt(i)) == writeText(memberOf(aCertificate, name.c_str())),
                "the PEM text has the same members");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    const auto reply = ask({reinterpret_cast<const char*>(aData), aSize});
    if (const auto* const error = reply->findFirst("error")) {
        checkError(*error);
        return 0;
    }
    const auto& certificates = namedValue(memberOf(*reply, "response"), "certificates");
    require(certificates.getSize() > 0, "a list is not empty");
    for (std::uint32_t i = 0; i < certificates.getSize(); ++i) {
        checkForms(*certificates.getValueAt(i));
    }
    checkPem(*certificates.getValueAt(0));
    return 0;
}
