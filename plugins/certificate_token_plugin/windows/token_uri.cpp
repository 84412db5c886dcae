// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/token_uri.h"

#include "plugins/common/failure.h"

namespace plugins {

void TokenUri::FreeUri::operator()(p11_kit_uri*) const {
}

TokenUri::TokenUri(const std::string&) {
    throw Failure(ErrorCode::InvalidRequest, "member \"uri\" is not supported on Windows");
}

// There is no object to call these functions with.

std::optional<std::string> TokenUri::getModulePath() const {
    return std::nullopt;
}

std::optional<std::string> TokenUri::getModuleName() const {
    return std::nullopt;
}

std::optional<std::string> TokenUri::getLabel() const {
    return std::nullopt;
}

std::optional<std::string> TokenUri::getId() const {
    return std::nullopt;
}

bool TokenUri::namesToken() const {
    return false;
}

bool TokenUri::matches(const CK_TOKEN_INFO&) const {
    return false;
}

} // namespace plugins
