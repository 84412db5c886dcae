// SPDX-License-Identifier: MIT
#include "certificate_store.h"

#include "plugins/common/windows/describe_certificate.h"

namespace plugins {

namespace {

StoreHandle openStore(const std::string& aName, StoreLocation aLocation) {
    const DWORD location = aLocation == StoreLocation::LocalMachine
                               ? CERT_SYSTEM_STORE_LOCAL_MACHINE
                               : CERT_SYSTEM_STORE_CURRENT_USER;
    const DWORD flags = location | CERT_STORE_OPEN_EXISTING_FLAG | CERT_STORE_READONLY_FLAG;
    StoreHandle store(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, toUtf16(aName).c_str()));
    if (store) return store;
    const auto error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) {
        throw Failure(ErrorCode::NotFound, "there is no certificate store \"" + aName + '"');
    }
    throw Failure(ErrorCode::NotReadable,
                  "certificate store \"" + aName + "\": " + errorText(error));
}

void addCertificate(CertificateSource& aSource, const CERT_CONTEXT& aCertificate) {
    try {
        aSource.certificates.push_back(describeCertificate(aCertificate));
    } catch (const Failure& failure) {
        if (failure.getCode() != ErrorCode::InvalidCertificate) throw;
        ++aSource.skipped;
    }
}

} // namespace

CertificateSource readStore(const std::string& aName, StoreLocation aLocation) {
    const auto store = openStore(aName, aLocation);
    CertificateSource source;
    source.name = "store \"" + aName + '"';
    CertificateHandle certificate;
    // Each call frees the certificate of the previous one.
    while (certificate.reset(CertEnumCertificatesInStore(store.get(), certificate.release())),
           certificate) {
        addCertificate(source, *certificate);
    }
    removeRepetitions(source.certificates); // a user's store includes the machine's
    return source;
}

} // namespace plugins
