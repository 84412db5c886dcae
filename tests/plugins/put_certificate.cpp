// SPDX-License-Identifier: MIT

// put_certificate STORE FILE...: puts certificates in DER form into a store of the current user,
// which is made if need be; put_certificate --remove STORE: removes it with all that is in it.
#include <windows.h>

#include <wincrypt.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    const auto open = [](const char* aName, DWORD aFlags) {
        return CertOpenStore(CERT_STORE_PROV_SYSTEM_A, 0, 0,
                             CERT_SYSTEM_STORE_CURRENT_USER | aFlags, aName);
    };
    if (argc == 3 && std::strcmp(argv[1], "--remove") == 0) {
        SetLastError(0);
        open(argv[2], CERT_STORE_DELETE_FLAG); // gives no handle
        return GetLastError() == 0 ? 0 : 1;
    }
    const HCERTSTORE store = open(argv[1], 0);
    for (int i = 2; i < argc; ++i) {
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
