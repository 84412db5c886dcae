// SPDX-License-Identifier: MIT
#include "token_request.h"

#include "module_library.h"

#include "plugins/common/failure.h"

namespace plugins {

namespace {

constexpr std::int32_t defaultSeconds = 60;
constexpr std::int32_t maximumSeconds = 3600;

// Combines a member with the same criterion in the URI.
void combine(std::optional<std::string>& aMember, const std::optional<std::string>& aUriValue,
             const char* aName) {
    if (aMember && aUriValue && *aMember != *aUriValue) {
        throw Failure(ErrorCode::InvalidRequest,
                      std::string("member \"") + aName + "\" contradicts member \"uri\"");
    }
    if (aUriValue) aMember = aUriValue;
}

} // namespace

TokenRequest readTokenRequest(Request& aRequest) {
    TokenRequest request;
    request.pin = findSecret(aRequest, "pin", "pinFile");
    if (const auto uri = aRequest.findNonEmptyText("uri")) request.uri.emplace(*uri);
    request.modulePath = aRequest.findNonEmptyText("module");
    request.tokenLabel = aRequest.findNonEmptyText("token");
    request.selectors = readSelectors(aRequest);
    if (request.uri) {
        combine(request.modulePath, request.uri->getModulePath(), "module");
        combine(request.selectors.label, request.uri->getLabel(), "label");
        combine(request.selectors.id, request.uri->getId(), "id");
    }
    if (request.modulePath) request.modulePath = toModulePath(*request.modulePath);
    request.allowFinalTry = aRequest.getFlag("allowFinalTry");
    request.timeout = std::chrono::seconds(
        aRequest.findInteger("timeout", 1, maximumSeconds).value_or(defaultSeconds));
    if (!request.uri && !request.modulePath && !request.tokenLabel &&
        !isSelective(request.selectors)) {
        throw Failure(ErrorCode::InvalidRequest, "the request selects nothing: use \"uri\", "
                                                 "\"module\", \"token\" or a criterion");
    }
    return request;
}

} // namespace plugins
