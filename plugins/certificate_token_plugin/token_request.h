// SPDX-License-Identifier: MIT
#pragma once

#include "token_uri.h"

#include "plugins/common/request.h"
#include "plugins/common/secret.h"
#include "plugins/common/selection.h"

#include <chrono>
#include <optional>
#include <string>

namespace plugins {

/// The members of a request to the plugin; docs/plugins.md documents them.
struct TokenRequest {
    std::optional<std::string> modulePath; ///< of toModulePath()
    std::optional<std::string> tokenLabel;
    std::optional<TokenUri> uri;
    Selectors selectors; ///< with the label and the id of the URI
    std::optional<Secret> pin;
    bool allowFinalTry = false;
    std::chrono::seconds timeout{};

    /// Returns whether the request selects one module.
    bool namesModule() const { return modulePath || (uri && uri->getModuleName()); }
    /// Returns whether the request selects one token.
    bool namesToken() const { return tokenLabel || (uri && uri->namesToken()); }
};

/// Reads a request. Throws Failure (InvalidRequest) for a member that is missing or invalid, or
/// that contradicts the URI; what findSecret() throws.
TokenRequest readTokenRequest(Request& aRequest);

} // namespace plugins
