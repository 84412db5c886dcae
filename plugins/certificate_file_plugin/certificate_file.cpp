#include "certificate_file.h"

#include <openssl/pem.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <memory>
#include <system_error>

namespace plugins {

namespace {

namespace fs = std::filesystem;

// Far more than any certificate with its chain, and little enough to be read into memory.
constexpr std::size_t maximumFileSize = 1024 * 1024;
static_assert(maximumFileSize <= std::numeric_limits<int>::max(), "OpenSSL counts bytes in int");

// Opening a pipe would wait for its writer, and a device may never end.
void checkRegularFile(const std::string& aFileName) {
    std::error_code error;
    const auto type = fs::status(aFileName, error).type();
    if (type == fs::file_type::not_found) {
        throw Failure(ErrorCode::NotFound, "no such file");
    }
    if (error) throw Failure(ErrorCode::NotReadable, error.message());
    if (type == fs::file_type::directory) {
        throw Failure(ErrorCode::NotReadable, "is a directory");
    }
    if (type != fs::file_type::regular) {
        throw Failure(ErrorCode::NotReadable, "is not a regular file");
    }
}

std::string readFile(const std::string& aFileName) {
    checkRegularFile(aFileName);
    std::string bytes(maximumFileSize + 1, '\0');
    const std::unique_ptr<std::FILE, FreeWith<std::fclose>> file(
        std::fopen(aFileName.c_str(), "rb"));
    if (file) bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
    if (!file || std::ferror(file.get()) != 0) {
        throw Failure(ErrorCode::NotReadable, std::generic_category().message(errno));
    }
    if (bytes.size() > maximumFileSize) {
        throw Failure(ErrorCode::NotReadable,
                      "is larger than " + std::to_string(maximumFileSize) + " bytes");
    }
    return bytes;
}

// Returns null for a text without a certificate.
CertificateHandle parsePem(const std::string& aText, std::string aPassword) {
    const BioHandle buffer(BIO_new_mem_buf(aText.data(), static_cast<int>(aText.size())));
    require(buffer != nullptr);
    // Without a password of ours, OpenSSL would ask for one at the terminal.
    return CertificateHandle(PEM_read_bio_X509(buffer.get(), nullptr, nullptr, aPassword.data()));
}

// Decodes @p aBytes, all of them, with one of OpenSSL's d2i functions; null if they are malformed.
template <typename Handle, typename Decode>
Handle parseDer(const std::string& aBytes, Decode aDecode) {
    const auto* start = reinterpret_cast<const unsigned char*>(aBytes.data());
    const auto* position = start;
    Handle object(aDecode(nullptr, &position, static_cast<long>(aBytes.size())));
    if (position != start + aBytes.size()) object.reset();
    return object;
}

// Tells why PKCS12_parse() failed.
[[noreturn]] void failToOpen(const PKCS12* aArchive) {
    if (PKCS12_mac_present(aArchive) == 0) {
        // Some versions of OpenSSL refuse every password then, others try it: neither proves it
        // wrong.
        throw Failure(ErrorCode::InvalidCertificate,
                      "this PKCS#12 file has no MAC and cannot be opened with this password");
    }
    const auto error = ERR_peek_last_error();
    if (ERR_GET_LIB(error) == ERR_LIB_PKCS12 &&
        ERR_GET_REASON(error) == PKCS12_R_MAC_VERIFY_FAILURE) {
        throw Failure(ErrorCode::WrongPassword, "wrong password for this PKCS#12 file");
    }
    throw Failure(ErrorCode::InvalidCertificate,
                  "this PKCS#12 file cannot be opened: " + takeReason());
}

CertificateHandle openPkcs12(PKCS12* aArchive, const std::string& aPassword) {
    EVP_PKEY* key = nullptr;
    X509* certificate = nullptr;
    STACK_OF(X509)* others = nullptr;
    const bool opened = PKCS12_parse(aArchive, aPassword.c_str(), &key, &certificate, &others) == 1;
    const KeyHandle keyHandle(key);
    CertificateHandle result(certificate);
    const CertificatesHandle othersHandle(others);
    if (!opened) failToOpen(aArchive);
    if (!result) result.reset(sk_X509_shift(others));
    if (!result)
        throw Failure(ErrorCode::InvalidCertificate, "this PKCS#12 file holds no certificate");
    return result;
}

} // namespace

CertificateHandle readCertificate(const std::string& aFileName, const std::string& aPassword) {
    const auto bytes = readFile(aFileName);
    ERR_clear_error(); // what follows is to find the reasons of its own failures only
    if (auto certificate = parsePem(bytes, aPassword)) return certificate;
    if (bytes.find("-----BEGIN CERTIFICATE-----") != std::string::npos) {
        throw Failure(ErrorCode::InvalidCertificate,
                      "its PEM certificate is damaged: " + takeReason());
    }
    auto certificate = parseDer<CertificateHandle>(bytes, d2i_X509);
    const auto archive = certificate ? nullptr : parseDer<Pkcs12Handle>(bytes, d2i_PKCS12);
    ERR_clear_error(); // each form that it was not has left its complaints
    if (certificate) return certificate;
    if (archive) return openPkcs12(archive.get(), aPassword);
    throw Failure(ErrorCode::InvalidCertificate,
                  "neither a certificate in PEM or DER form nor a PKCS#12 file");
}

} // namespace plugins
