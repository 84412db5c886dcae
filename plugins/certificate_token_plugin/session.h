// SPDX-License-Identifier: MIT
#pragma once

#include "token.h"

#include "plugins/common/secret.h"
#include "plugins/common/selection.h"

#include <optional>
#include <vector>

namespace plugins {

/// A read-only session with a token. Logs out, if it has logged in, and closes on destruction.
class Session {
public:
    /// Opens a session with @p aToken, which must outlive it. Throws Failure (BackEndFailed).
    explicit Session(const Token& aToken);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// Logs in. Tries the PIN once, and not at all if the token reports that it is locked or,
    /// unless
    /// @p aAllowsFinalTry, that another wrong PIN would lock it. Throws Failure: WrongPassword,
    /// with the token's warning; PasswordLocked; BackEndFailed.
    void logIn(const Secret& aPin, bool aAllowsFinalTry);

    /// Adds the visible X.509 certificates with their labels and ids to @p aSource, and counts
    /// those that cannot be decoded. Throws Failure (BackEndFailed), also if the module returns
    /// lengths or counts that cannot be true.
    void readCertificates(CertificateSource& aSource) const;

private:
    using Value = std::optional<std::vector<unsigned char>>;

    std::vector<CK_OBJECT_HANDLE> findCertificates() const;
    Certificate readCertificate(CK_OBJECT_HANDLE aObject) const;
    Value readAttribute(CK_OBJECT_HANDLE aObject, CK_ATTRIBUTE_TYPE aType) const;
    void require(CK_RV aResult, const char* aFunction) const;
    [[noreturn]] void failInvalid(const char* aSubject) const;

    const Token& mToken;
    CK_FUNCTION_LIST& mModule;
    CK_SESSION_HANDLE mHandle = 0;
    bool mIsLoggedIn = false;
};

} // namespace plugins
