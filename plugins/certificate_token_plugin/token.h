// SPDX-License-Identifier: MIT
#pragma once

#include "token_request.h"

#include <string>
#include <vector>

#include <p11-kit/pkcs11.h>

namespace plugins {

/// A token that is present in a slot of a module.
struct Token {
    CK_FUNCTION_LIST* module = nullptr; // borrowed
    CK_SLOT_ID slot = 0;
    CK_FLAGS flags = 0; ///< CKF_... of CK_TOKEN_INFO
    std::string name;   ///< for messages: token "LABEL"

    /// Returns whether objects may be hidden until a PIN is given.
    bool hidesObjects() const {
        return (flags & CKF_LOGIN_REQUIRED) != 0 && (flags & CKF_USER_PIN_INITIALIZED) != 0;
    }
};

/// Returns the initialised tokens that meet the request, in the order of @p aModules and of their
/// slots. Tokens of a module that fails are left out if the request does not name a module. Throws
/// Failure (BackEndFailed).
std::vector<Token> findTokens(const std::vector<CK_FUNCTION_LIST*>& aModules,
                              const TokenRequest& aRequest);

/// Returns the current flags of the token. Throws Failure (BackEndFailed).
CK_FLAGS readFlags(const Token& aToken);

} // namespace plugins
