// SPDX-License-Identifier: MIT
#include "certificate_file.h"

#include "certificate_forms.h"

#include "plugins/common/failure.h"
#include "plugins/common/openssl/openssl_handles.h"
#include "plugins/common/source_file.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

namespace plugins {

namespace {

namespace fs = std::filesystem;

// Far more than any certificate with its chain, and little enough to be read into memory.
constexpr std::size_t maximumFileSize = 1024 * 1024;
static_assert(maximumFileSize <= std::numeric_limits<int>::max(), "OpenSSL counts bytes in int");

// Describes one certificate; throws Failure (InvalidCertificate).
Certificate describe(const StoredCertificate& aStored) {
    if (!aStored.damage.empty()) {
        throw Failure(ErrorCode::InvalidCertificate,
                      "its PEM certificate is damaged: " + aStored.damage);
    }
    auto certificate = describeCertificate(aStored.der);
    certificate.label = aStored.label;
    certificate.id = aStored.id;
    return certificate;
}

void readInto(CertificateSource& aSource, const std::string& aFileName, const Secret& aPassword) {
    const auto bytes = readSourceFile(aFileName, maximumFileSize);
    const auto stored = confirmed([&] { return decodeCertificates(bytes, aPassword); });
    for (const auto& certificate : stored) {
        try {
            aSource.certificates.push_back(describe(certificate));
        } catch (const Failure&) {
            if (&certificate == stored.data()) throw;
            ++aSource.skipped;
        }
    }
}

[[noreturn]] void failWithSystemError(const std::string& aFolder, const std::error_code& aError) {
    if (aError == std::errc::not_enough_memory) throw std::bad_alloc();
    throw Failure(ErrorCode::NotReadable, aFolder + ": " + aError.message());
}

std::vector<std::string> sortedFiles(const std::string& aFolder) {
    std::error_code error;
    std::vector<std::string> names;
    fs::directory_iterator entry(aFolder, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
        std::error_code ignored; // an entry that cannot be examined is reported when it is read
        if (!fs::is_directory(entry->path(), ignored)) names.push_back(entry->path().string());
    }
    if (error) failWithSystemError(aFolder, error);
    std::ranges::sort(names);
    return names;
}

} // namespace

CertificateSource readCertificateFile(const std::string& aFileName, const Secret& aPassword) {
    CertificateSource source;
    source.name = aFileName;
    try {
        readInto(source, aFileName, aPassword);
    } catch (const Failure& failure) {
        throw Failure(failure.getCode(), aFileName + ": " + failure.what());
    }
    return source;
}

CertificateSource readCertificateFolder(const std::string& aFolder, const Secret& aPassword) {
    CertificateSource source;
    source.name = aFolder;
    for (const auto& name : sortedFiles(aFolder)) {
        try {
            readInto(source, name, aPassword);
        } catch (const Failure& failure) {
            if (failure.getCode() == ErrorCode::InternalError) throw;
            ++source.skipped;
        }
    }
    removeRepetitions(source.certificates);
    return source;
}

bool isFolder(const std::string& aName) {
    std::error_code ignored; // reported when the file is read
    return fs::is_directory(aName, ignored);
}

} // namespace plugins
