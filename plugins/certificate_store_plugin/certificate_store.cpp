#include "certificate_store.h"

namespace plugins {

namespace {

StoreHandle openStore(const std::string& aName) {
    constexpr DWORD flags =
        CERT_SYSTEM_STORE_CURRENT_USER | CERT_STORE_OPEN_EXISTING_FLAG | CERT_STORE_READONLY_FLAG;
    StoreHandle store(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, flags, toUtf16(aName).c_str()));
    if (store) return store;
    const auto error = GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) {
        throw Failure(ErrorCode::NotFound, "there is no certificate store \"" + aName + '"');
    }
    throw Failure(ErrorCode::NotReadable,
                  "certificate store \"" + aName + "\": " + errorText(error));
}

} // namespace

FoundCertificate findCertificate(const std::string& aStore, const std::string& aSubjectPart) {
    const auto store = openStore(aStore);
    const auto subject = toUtf16(aSubjectPart);
    FoundCertificate found{nullptr, 0};
    const CERT_CONTEXT* next = nullptr; // each search frees what the one before has found
    while ((next = CertFindCertificateInStore(store.get(), certificateEncoding, 0,
                                              CERT_FIND_SUBJECT_STR_W, subject.c_str(), next))) {
        if (found.matches++ == 0) found.certificate.reset(CertDuplicateCertificateContext(next));
    }
    if (found.matches == 0) {
        throw Failure(ErrorCode::NotFound, "no certificate in store \"" + aStore +
                                               "\" has a subject with \"" + aSubjectPart + '"');
    }
    return found;
}

} // namespace plugins
