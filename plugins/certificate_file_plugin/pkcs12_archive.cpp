// SPDX-License-Identifier: MIT
#include "pkcs12_archive.h"

#include <openssl/asn1t.h>

#include <algorithm>
#include <cstdint>
#include <string>

namespace plugins {

namespace {

constexpr std::uint64_t maximumRounds = 1'000'000;

void freeSafes(STACK_OF(PKCS7) * aSafes) {
    sk_PKCS7_pop_free(aSafes, PKCS7_free);
}

void freeBags(STACK_OF(PKCS12_SAFEBAG) * aBags) {
    sk_PKCS12_SAFEBAG_pop_free(aBags, PKCS12_SAFEBAG_free);
}

using SafesHandle = std::unique_ptr<STACK_OF(PKCS7), FreeWith<freeSafes>>;
using BagsHandle = std::unique_ptr<STACK_OF(PKCS12_SAFEBAG), FreeWith<freeBags>>;
using PbeHandle = std::unique_ptr<PBEPARAM, FreeWith<PBEPARAM_free>>;
using Pbes2Handle = std::unique_ptr<PBE2PARAM, FreeWith<PBE2PARAM_free>>;
using Pbkdf2Handle = std::unique_ptr<PBKDF2PARAM, FreeWith<PBKDF2PARAM_free>>;
using ScryptHandle = std::unique_ptr<SCRYPT_PARAMS, FreeWith<SCRYPT_PARAMS_free>>;

// The number, or more than is permitted if it is negative or too large.
std::uint64_t roundsIn(const ASN1_INTEGER* aNumber) {
    std::uint64_t number = 0;
    const bool isNumber = aNumber != nullptr && ASN1_INTEGER_get_uint64(&number, aNumber) == 1;
    return isNumber ? std::min(number, maximumRounds + 1) : maximumRounds + 1;
}

template <typename Handle>
Handle parametersOf(const X509_ALGOR& aAlgorithm, const ASN1_ITEM* aType) {
    using Parameters = typename Handle::pointer;
    return Handle(static_cast<Parameters>(ASN1_TYPE_unpack_sequence(aType, aAlgorithm.parameter)));
}

int kindOf(const X509_ALGOR& aAlgorithm) {
    return OBJ_obj2nid(aAlgorithm.algorithm);
}

std::uint64_t roundsOfKeyFunction(const X509_ALGOR& aAlgorithm) {
    if (kindOf(aAlgorithm) == NID_id_pbkdf2) {
        const auto parameters = parametersOf<Pbkdf2Handle>(aAlgorithm, ASN1_ITEM_rptr(PBKDF2PARAM));
        return parameters ? roundsIn(parameters->iter) : 0;
    }
    const auto parameters = parametersOf<ScryptHandle>(aAlgorithm, ASN1_ITEM_rptr(SCRYPT_PARAMS));
    if (!parameters) return 0;
    // At most (10^6 + 1)^3, which fits 64 bits.
    return roundsIn(parameters->costParameter) * roundsIn(parameters->blockSize) *
           roundsIn(parameters->parallelizationParameter);
}

// The rounds of an encryption by password; 0 for parameters that OpenSSL will refuse.
std::uint64_t roundsOf(const X509_ALGOR& aAlgorithm) {
    if (kindOf(aAlgorithm) == NID_pbes2) {
        const auto parameters = parametersOf<Pbes2Handle>(aAlgorithm, ASN1_ITEM_rptr(PBE2PARAM));
        return parameters ? roundsOfKeyFunction(*parameters->keyfunc) : 0;
    }
    const auto parameters = parametersOf<PbeHandle>(aAlgorithm, ASN1_ITEM_rptr(PBEPARAM));
    return parameters ? roundsIn(parameters->iter) : 0;
}

// Adds up the rounds of all key derivations that opening an archive takes.
class RoundsCounter {
public:
    explicit RoundsCounter(const Secret& aPassword) : mPassword(aPassword) {}

    void countMac(PKCS12& aArchive) {
        const ASN1_INTEGER* rounds = nullptr;
        PKCS12_get0_mac(nullptr, nullptr, nullptr, &rounds, &aArchive);
        if (rounds != nullptr) add(roundsIn(rounds)); // absent: 1
    }

    void countSafe(PKCS7& aSafe) {
        BagsHandle bags;
        if (PKCS7_type_is_data(&aSafe)) {
            bags.reset(PKCS12_unpack_p7data(&aSafe));
        } else if (PKCS7_type_is_encrypted(&aSafe) && aSafe.d.encrypted != nullptr) {
            add(roundsOf(*aSafe.d.encrypted->enc_data->algorithm));
            bags.reset(PKCS12_unpack_p7encdata(&aSafe, mPassword.getText(),
                                               static_cast<int>(mPassword.getSize())));
        }
        countBags(bags.get());
    }

private:
    void add(std::uint64_t aRounds) {
        mRounds += aRounds;
        if (mRounds <= maximumRounds) return;
        throw Failure(ErrorCode::InvalidCertificate, "this PKCS#12 file asks for more than " +
                                                         std::to_string(maximumRounds) +
                                                         " rounds of key derivation");
    }

    // NOLINTBEGIN(misc-no-recursion): OpenSSL decodes at most 30 levels of nested bags.
    void countBags(const STACK_OF(PKCS12_SAFEBAG) * aBags) {
        for (int i = 0; i < sk_PKCS12_SAFEBAG_num(aBags); ++i) {
            countBag(*sk_PKCS12_SAFEBAG_value(aBags, i));
        }
    }

    void countBag(const PKCS12_SAFEBAG& aBag) {
        switch (PKCS12_SAFEBAG_get_nid(&aBag)) {
        case NID_pkcs8ShroudedKeyBag: {
            const X509_ALGOR* algorithm = nullptr;
            X509_SIG_get0(PKCS12_SAFEBAG_get0_pkcs8(&aBag), &algorithm, nullptr);
            return add(roundsOf(*algorithm));
        }
        case NID_safeContentsBag:
            return countBags(PKCS12_SAFEBAG_get0_safes(&aBag));
        default:
            return;
        }
    }
    // NOLINTEND(misc-no-recursion)

    const Secret& mPassword;
    std::uint64_t mRounds = 0;
};

void checkMac(PKCS12& aArchive, const Secret& aPassword) {
    if (PKCS12_mac_present(&aArchive) == 0) return;
    // PKCS12_parse() tries an absent password too if the given one is empty.
    const auto verify = [&](const char* aText) {
        return PKCS12_verify_mac(&aArchive, aText, -1) == 1;
    };
    if (verify(aPassword.getText()) || (aPassword.getSize() == 0 && verify(nullptr))) return;
    if (ERR_peek_error() == 0) {
        throw Failure(ErrorCode::WrongPassword, "wrong password for this PKCS#12 file");
    }
    throw Failure(ErrorCode::InvalidCertificate,
                  "this PKCS#12 file cannot be opened: " + takeReason());
}

void checkRounds(PKCS12& aArchive, const Secret& aPassword) {
    RoundsCounter counter(aPassword);
    counter.countMac(aArchive);
    const SafesHandle safes(PKCS12_unpack_authsafes(&aArchive));
    for (int i = 0; i < sk_PKCS7_num(safes.get()); ++i) {
        counter.countSafe(*sk_PKCS7_value(safes.get(), i));
    }
    ERR_clear_error(); // a wrong password is reported when the archive is opened
}

[[noreturn]] void failToOpen(const PKCS12& aArchive) {
    if (PKCS12_mac_present(&aArchive) == 0) {
        // Some versions of OpenSSL then refuse every password, others try it: the failure does not
        // prove the password wrong.
        throw Failure(ErrorCode::InvalidCertificate,
                      "this PKCS#12 file has no MAC and cannot be opened with this password");
    }
    throw Failure(ErrorCode::InvalidCertificate,
                  "this PKCS#12 file cannot be opened: " + takeReason());
}

} // namespace

CertificatesHandle openPkcs12(PKCS12& aArchive, const Secret& aPassword) {
    checkRounds(aArchive, aPassword);
    checkMac(aArchive, aPassword);
    EVP_PKEY* key = nullptr;
    X509* first = nullptr;
    STACK_OF(X509)* others = nullptr;
    const bool isOpened = PKCS12_parse(&aArchive, aPassword.getText(), &key, &first, &others) == 1;
    const KeyHandle keyHandle(key);
    CertificateHandle certificate(first);
    CertificatesHandle certificates(others);
    if (!isOpened) failToOpen(aArchive);
    if (!certificates) certificates.reset(sk_X509_new_null());
    require(certificates != nullptr);
    if (certificate) {
        require(sk_X509_unshift(certificates.get(), certificate.get()) > 0);
        (void)certificate.release(); // owned by the stack
    }
    if (sk_X509_num(certificates.get()) == 0) {
        throw Failure(ErrorCode::InvalidCertificate, "this PKCS#12 file holds no certificate");
    }
    return certificates;
}

} // namespace plugins
