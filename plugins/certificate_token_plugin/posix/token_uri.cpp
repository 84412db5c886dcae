// SPDX-License-Identifier: MIT
#include "plugins/certificate_token_plugin/token_uri.h"

#include "free_memory.h"

#include "plugins/common/certificate_text.h"
#include "plugins/common/failure.h"

#include <cstring>
#include <new>

#include <p11-kit/uri.h>

namespace plugins {

namespace {

// p11-kit's parser does not check each allocation; it copies the parts of the text.
constexpr std::size_t memoryOfParser = 65536;

[[noreturn]] void failUri(const char* aReason) {
    throw Failure(ErrorCode::InvalidRequest, std::string("member \"uri\" ") + aReason);
}

std::optional<std::string> toText(const char* aText) {
    return aText != nullptr ? std::optional<std::string>(aText) : std::nullopt;
}

} // namespace

void TokenUri::FreeUri::operator()(p11_kit_uri* aUri) const {
    p11_kit_uri_free(aUri);
}

TokenUri::TokenUri(const std::string& aText) {
    requireFreeMemory(memoryOfParser + 4 * aText.size());
    mUri.reset(p11_kit_uri_new());
    if (mUri == nullptr) throw std::bad_alloc();
    const int result =
        p11_kit_uri_parse(aText.c_str(), P11_KIT_URI_FOR_OBJECT_ON_TOKEN, mUri.get());
    if (result == P11_KIT_URI_NO_MEMORY) throw std::bad_alloc();
    if (result != P11_KIT_URI_OK) failUri("must be a PKCS#11 URI");
    if (p11_kit_uri_get_pin_value(mUri.get()) != nullptr ||
        p11_kit_uri_get_pin_source(mUri.get()) != nullptr) {
        failUri("must not contain a PIN: use member \"pin\" or \"pinFile\"");
    }
    if (p11_kit_uri_any_unrecognized(mUri.get()) != 0) failUri("has an unknown attribute");
    const auto* type = find(CKA_CLASS);
    const CK_OBJECT_CLASS certificate = CKO_CERTIFICATE;
    if (type != nullptr && (type->ulValueLen != sizeof certificate ||
                            std::memcmp(type->pValue, &certificate, sizeof certificate) != 0)) {
        failUri("must refer to a certificate");
    }
}

std::optional<std::string> TokenUri::getModulePath() const {
    return toText(p11_kit_uri_get_module_path(mUri.get()));
}

std::optional<std::string> TokenUri::getModuleName() const {
    return toText(p11_kit_uri_get_module_name(mUri.get()));
}

std::optional<std::string> TokenUri::getLabel() const {
    const auto* label = find(CKA_LABEL);
    if (label == nullptr) return std::nullopt;
    return std::string(static_cast<const char*>(label->pValue), label->ulValueLen);
}

std::optional<std::string> TokenUri::getId() const {
    const auto* id = find(CKA_ID);
    if (id == nullptr) return std::nullopt;
    return toHex(Bytes(static_cast<const unsigned char*>(id->pValue), id->ulValueLen));
}

bool TokenUri::namesToken() const {
    // Matches only if the URI has no attribute of a token.
    const CK_TOKEN_INFO nothing = {};
    return !matches(nothing);
}

bool TokenUri::matches(const CK_TOKEN_INFO& aToken) const {
    auto token = aToken; // the library does not modify it
    return p11_kit_uri_match_token_info(mUri.get(), &token) == 1;
}

const CK_ATTRIBUTE* TokenUri::find(CK_ATTRIBUTE_TYPE aType) const {
    return p11_kit_uri_get_attribute(mUri.get(), aType);
}

} // namespace plugins
