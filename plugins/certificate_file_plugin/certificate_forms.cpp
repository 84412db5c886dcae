// SPDX-License-Identifier: MIT
#include "certificate_forms.h"

#include "pkcs12_archive.h"

#include "plugins/common/certificate_text.h"
#include "plugins/common/failure.h"
#include "plugins/common/openssl/certificate_der.h"
#include "plugins/common/openssl/openssl_handles.h"

#include <openssl/pem.h>
#include <openssl/pkcs7.h>

#include <string_view>

namespace plugins {

namespace {

using TextHandle = std::unique_ptr<char, FreeWith<freeMemory>>;
using Pkcs7Handle = std::unique_ptr<PKCS7, FreeWith<PKCS7_free>>;
using StoredCertificates = std::vector<StoredCertificate>;

void add(StoredCertificates& aStored, X509& aCertificate) {
    auto& stored = aStored.emplace_back();
    stored.der = toDer(aCertificate);
    int length = 0;
    if (const auto* alias = X509_alias_get0(&aCertificate, &length)) {
        stored.label.emplace(alias, alias + length);
    }
    if (const auto* id = X509_keyid_get0(&aCertificate, &length)) {
        stored.id = toHex({id, static_cast<std::size_t>(length)});
    }
}

void addAll(StoredCertificates& aStored, const STACK_OF(X509) * aCertificates) {
    for (int i = 0; i < sk_X509_num(aCertificates); ++i) {
        add(aStored, *sk_X509_value(aCertificates, i));
    }
}

const STACK_OF(X509) * certificatesOf(const PKCS7& aStructure) {
    switch (OBJ_obj2nid(aStructure.type)) {
    case NID_pkcs7_signed:
        return aStructure.d.sign != nullptr ? aStructure.d.sign->cert : nullptr;
    case NID_pkcs7_signedAndEnveloped:
        return aStructure.d.signed_and_enveloped != nullptr
                   ? aStructure.d.signed_and_enveloped->cert
                   : nullptr;
    default:
        return nullptr;
    }
}

// Decodes all bytes with one of OpenSSL's d2i functions; null if they are malformed.
template <typename Handle, typename Decode>
Handle parseDer(Bytes aBytes, Decode aDecode) {
    const auto* position = aBytes.data();
    Handle object(aDecode(nullptr, &position, static_cast<long>(aBytes.size())));
    if (position != aBytes.data() + aBytes.size()) object.reset();
    return object;
}

// A block of PEM text between a line "-----BEGIN NAME-----" and its "-----END NAME-----".
struct PemBlock {
    TextHandle name;
    TextHandle header;
    MemoryHandle bytes;
    long size = 0;
};

// Reads the next block; false if it is damaged.
bool readBlock(BIO& aText, PemBlock& aBlock) {
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* bytes = nullptr;
    const bool isRead = PEM_read_bio(&aText, &name, &header, &bytes, &aBlock.size) == 1;
    aBlock.name.reset(name);
    aBlock.header.reset(header);
    aBlock.bytes.reset(bytes);
    return isRead;
}

// Decrypts the block if its header describes an encryption; false on failure.
bool decrypt(PemBlock& aBlock, const Secret& aPassword) {
    EVP_CIPHER_INFO cipher;
    if (PEM_get_EVP_CIPHER_INFO(aBlock.header.get(), &cipher) != 1) return false;
    // Without a password here, OpenSSL would ask for one at the terminal. It does not modify it.
    auto* const password = const_cast<char*>(aPassword.getText());
    return PEM_do_header(&cipher, aBlock.bytes.get(), &aBlock.size, nullptr, password) == 1;
}

bool isCertificate(std::string_view aName) {
    return aName == PEM_STRING_X509 || aName == PEM_STRING_X509_OLD ||
           aName == PEM_STRING_X509_TRUSTED;
}

bool isPkcs7(std::string_view aName) {
    return aName == PEM_STRING_PKCS7 || aName == PEM_STRING_PKCS7_SIGNED;
}

// Adds the certificates of a block, or an entry with the reason why it has none.
void addBlock(StoredCertificates& aStored, PemBlock& aBlock, const Secret& aPassword) {
    const std::string_view name(aBlock.name.get());
    if (!isCertificate(name) && !isPkcs7(name)) return;
    const bool isDecrypted = decrypt(aBlock, aPassword);
    const Bytes bytes(aBlock.bytes.get(), static_cast<std::size_t>(aBlock.size));
    if (isDecrypted && isPkcs7(name)) {
        const auto structure = parseDer<Pkcs7Handle>(bytes, d2i_PKCS7);
        if (structure) return addAll(aStored, certificatesOf(*structure));
    } else if (isDecrypted) {
        const auto decode = name == PEM_STRING_X509_TRUSTED ? d2i_X509_AUX : d2i_X509;
        const auto certificate = parseDer<CertificateHandle>(bytes, decode);
        if (certificate) return add(aStored, *certificate);
    }
    aStored.emplace_back().damage = takeReason();
}

bool isAtEnd() {
    return ERR_GET_LIB(ERR_peek_last_error()) == ERR_LIB_PEM &&
           ERR_GET_REASON(ERR_peek_last_error()) == PEM_R_NO_START_LINE;
}

StoredCertificates decodePem(const std::string& aText, const Secret& aPassword) {
    const BioHandle text(BIO_new_mem_buf(aText.data(), static_cast<int>(aText.size())));
    require(text != nullptr);
    StoredCertificates stored;
    while (const auto remaining = BIO_pending(text.get())) {
        ERR_clear_error();
        PemBlock block;
        if (readBlock(*text, block)) {
            addBlock(stored, block, aPassword);
        } else if (!isAtEnd()) {
            require(BIO_pending(text.get()) < remaining);
            stored.emplace_back().damage = takeReason();
        }
    }
    ERR_clear_error();
    return stored;
}

StoredCertificates decodeDer(Bytes aBytes, const Secret& aPassword) {
    StoredCertificates stored;
    if (const auto certificate = parseDer<CertificateHandle>(aBytes, d2i_X509)) {
        add(stored, *certificate);
    } else if (const auto structure = parseDer<Pkcs7Handle>(aBytes, d2i_PKCS7)) {
        addAll(stored, certificatesOf(*structure));
    } else if (const auto archive = parseDer<Pkcs12Handle>(aBytes, d2i_PKCS12)) {
        addAll(stored, openPkcs12(*archive, aPassword).get());
    }
    return stored;
}

} // namespace

std::vector<StoredCertificate> decodeCertificates(const std::string& aBytes,
                                                  const Secret& aPassword) {
    auto stored = decodePem(aBytes, aPassword);
    if (stored.empty()) {
        const auto* const start = reinterpret_cast<const unsigned char*>(aBytes.data());
        stored = decodeDer({start, aBytes.size()}, aPassword);
    }
    if (stored.empty()) {
        throw Failure(ErrorCode::InvalidCertificate,
                      "neither a certificate in PEM or DER form nor a PKCS#7 or PKCS#12 file");
    }
    return stored;
}

} // namespace plugins
