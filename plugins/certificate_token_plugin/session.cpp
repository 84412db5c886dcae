// SPDX-License-Identifier: MIT
#include "session.h"

#include "return_values.h"

#include "plugins/common/certificate_text.h"
#include "plugins/common/failure.h"
#include "plugins/common/library_memory.h"

#include <array>
#include <string>

namespace plugins {

namespace {

// Far more than any token holds; larger numbers are faults of the module.
constexpr std::size_t maximumObjects = 100000;
constexpr CK_ULONG maximumAttributeSize = 1024 * 1024;

void checkPinState(const Token& aToken, CK_FLAGS aFlags, bool aAllowsFinalTry) {
    if ((aFlags & CKF_USER_PIN_LOCKED) != 0) {
        throw Failure(ErrorCode::PasswordLocked, aToken.name + ": the PIN is locked");
    }
    if ((aFlags & CKF_USER_PIN_FINAL_TRY) != 0 && !aAllowsFinalTry) {
        throw Failure(ErrorCode::PasswordLocked,
                      aToken.name + ": another wrong PIN would lock the PIN; \"allowFinalTry\" "
                                    "permits to try");
    }
}

[[noreturn]] void failPin(const Token& aToken) {
    const auto flags = readFlags(aToken);
    std::string warning;
    if ((flags & CKF_USER_PIN_LOCKED) != 0) {
        warning = "; the PIN is locked now";
    } else if ((flags & CKF_USER_PIN_FINAL_TRY) != 0) {
        warning = "; another wrong PIN would lock the PIN";
    } else if ((flags & CKF_USER_PIN_COUNT_LOW) != 0) {
        warning = "; wrong PINs have been entered since the last login";
    }
    throw Failure(ErrorCode::WrongPassword, aToken.name + ": wrong PIN" + warning);
}

std::string toString(const std::vector<unsigned char>& aBytes) {
    return {aBytes.begin(), aBytes.end()};
}

bool hasContent(const std::optional<std::vector<unsigned char>>& aValue) {
    return aValue && !aValue->empty();
}

} // namespace

Session::Session(const Token& aToken) : mToken(aToken), mModule(*aToken.module) {
    require(mModule.C_OpenSession(mToken.slot, CKF_SERIAL_SESSION, nullptr, nullptr, &mHandle),
            "C_OpenSession");
}

Session::~Session() {
    if (mIsLoggedIn) mModule.C_Logout(mHandle);
    mModule.C_CloseSession(mHandle);
}

void Session::logIn(const Secret& aPin, bool aAllowsFinalTry) {
    checkPinState(mToken, readFlags(mToken), aAllowsFinalTry);
    Secret copy(aPin.getText()); // functions of modules take a pointer to non-const bytes
    const auto result =
        mModule.C_Login(mHandle, CKU_USER, reinterpret_cast<CK_UTF8CHAR*>(copy.getText()),
                        static_cast<CK_ULONG>(copy.getSize()));
    switch (result) {
    case CKR_USER_ALREADY_LOGGED_IN:
        return;
    case CKR_PIN_INCORRECT:
    case CKR_PIN_INVALID:
    case CKR_PIN_LEN_RANGE:
        failPin(mToken);
    case CKR_PIN_LOCKED:
        throw Failure(ErrorCode::PasswordLocked, mToken.name + ": the PIN is locked");
    default:
        require(result, "C_Login");
    }
    mIsLoggedIn = true;
}

void Session::readCertificates(CertificateSource& aSource) const {
    for (const auto object : findCertificates()) {
        try {
            aSource.certificates.push_back(readCertificate(object));
        } catch (const Failure& failure) {
            if (failure.getCode() != ErrorCode::InvalidCertificate) throw;
            requireMemory(); // the certificate may be intact
            ++aSource.skipped;
        }
    }
}

std::vector<CK_OBJECT_HANDLE> Session::findCertificates() const {
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_CERTIFICATE_TYPE type = CKC_X_509;
    std::array<CK_ATTRIBUTE, 2> criteria = {{{CKA_CLASS, &objectClass, sizeof objectClass},
                                             {CKA_CERTIFICATE_TYPE, &type, sizeof type}}};
    require(mModule.C_FindObjectsInit(mHandle, criteria.data(), criteria.size()),
            "C_FindObjectsInit");
    std::vector<CK_OBJECT_HANDLE> objects;
    std::array<CK_OBJECT_HANDLE, 64> found = {};
    CK_ULONG count = 0;
    do {
        require(mModule.C_FindObjects(mHandle, found.data(), found.size(), &count),
                "C_FindObjects");
        if (count > found.size() || objects.size() > maximumObjects)
            failInvalid("number of objects");
        objects.insert(objects.end(), found.begin(), found.begin() + count);
    } while (count > 0);
    require(mModule.C_FindObjectsFinal(mHandle), "C_FindObjectsFinal");
    return objects;
}

Certificate Session::readCertificate(CK_OBJECT_HANDLE aObject) const {
    const auto der = readAttribute(aObject, CKA_VALUE);
    if (!der) throw Failure(ErrorCode::InvalidCertificate, "the object has no value");
    auto certificate = describeCertificate(*der);
    const auto label = readAttribute(aObject, CKA_LABEL);
    if (hasContent(label)) certificate.label = toString(*label);
    const auto id = readAttribute(aObject, CKA_ID);
    if (hasContent(id)) certificate.id = toHex(*id);
    return certificate;
}

// Nothing if the object does not have the attribute, or does not reveal it.
Session::Value Session::readAttribute(CK_OBJECT_HANDLE aObject, CK_ATTRIBUTE_TYPE aType) const {
    CK_ATTRIBUTE attribute = {aType, nullptr, 0};
    const auto measured = mModule.C_GetAttributeValue(mHandle, aObject, &attribute, 1);
    if (measured == CKR_ATTRIBUTE_TYPE_INVALID || measured == CKR_ATTRIBUTE_SENSITIVE ||
        attribute.ulValueLen == CK_UNAVAILABLE_INFORMATION) {
        return std::nullopt;
    }
    require(measured, "C_GetAttributeValue");
    if (attribute.ulValueLen > maximumAttributeSize) failInvalid("size of an attribute");
    std::vector<unsigned char> value(attribute.ulValueLen);
    if (value.empty()) return value;
    attribute.pValue = value.data();
    require(mModule.C_GetAttributeValue(mHandle, aObject, &attribute, 1), "C_GetAttributeValue");
    if (attribute.ulValueLen > value.size()) failInvalid("size of an attribute");
    value.resize(attribute.ulValueLen);
    return value;
}

void Session::require(CK_RV aResult, const char* aFunction) const {
    requireSuccess(aResult, mToken.name, aFunction);
}

void Session::failInvalid(const char* aSubject) const {
    throw Failure(ErrorCode::BackEndFailed,
                  mToken.name + ": the PKCS#11 module reports an invalid " + aSubject);
}

} // namespace plugins
