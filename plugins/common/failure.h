// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace plugins {

/// The values of "errorCode", which mean the same in every plugin. Message texts may improve; these
/// numbers do not change. docs/plugins.md repeats the list, and a test compares the two.
enum class ErrorCode : std::int32_t {
    InvalidRequest = 1,     ///< a member of the request is missing or invalid
    NotFound = 2,           ///< the file, store, module, token, host or certificate does not exist
    NotReadable = 3,        ///< the source exists, but cannot be read
    InvalidCertificate = 4, ///< the source holds no certificate, or a damaged one
    WrongPassword = 5,      ///< the password or PIN is wrong
    InternalError = 6,      ///< out of memory, or a failure inside a library
    Ambiguous = 7,          ///< several sources match where one is required
    PasswordRequired = 8,   ///< a password or PIN is required, and the request has none
    PasswordLocked = 9,     ///< the PIN is locked, or one more wrong PIN would lock it
    BackEndFailed = 10,     ///< the PKCS#11 module reported a failure
    ConnectionFailed = 11,  ///< the host refused the connection or cannot be reached
    TimedOut = 12,          ///< the time limit passed
    NoTls = 13,             ///< the server closed the connection or does not speak TLS
    TlsAlert = 14,          ///< the server ended the handshake with an alert
    StartTlsRefused = 15,   ///< the server refused to change to TLS
};

/// A failure to report to the caller: its number, and as what() the text of "erroMessage", which
/// names the member or the source and the reason. It never contains a secret.
class Failure : public std::runtime_error {
public:
    Failure(ErrorCode aCode, const std::string& aMessage)
        : std::runtime_error(aMessage), mCode(aCode) {}

    ErrorCode getCode() const { return mCode; }

private:
    ErrorCode mCode;
};

} // namespace plugins
