// SPDX-License-Identifier: MIT

// put_certificate user|machine STORE FILE...: puts certificates in DER form into a store of the
// current user or the machine, which is created if necessary. put_certificate user|machine --remove
// STORE: removes the store with its certificates.
#include <windows.h>

#include <wincrypt.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    const DWORD location = std::strcmp(argv[1], "machine") == 0 ? CERT_SYSTEM_STORE_LOCAL_MACHINE
                                                                : CERT_SYSTEM_STORE_CURRENT_USER;
    const auto open = [&](const char* aName, DWORD aFlags) {
        return CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0, location | aFlags, aName);
    };
    if (std::strcmp(argv[2], "--remove") == 0) {
        SetLastError(0);
        open(argv[3], CERT_STORE_DELETE_FLAG); // returns no handle
        return GetLastError() == 0 ? 0 : 1;
    }
    const HCERTSTORE store = open(argv[2], 0);
    for (int i = 3; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        if (!CertAddEncodedCertificateToStore(
                store, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(bytes.data()),
                static_cast<DWORD>(bytes.size()), CERT_STORE_ADD_REPLACE_EXISTING, nullptr)) {
            return 1;
        }
    }
    return CertCloseStore(store, 0) ? 0 : 1;
}
