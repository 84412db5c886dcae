// SPDX-License-Identifier: MIT
#include "token.h"

#include "return_values.h"

#include "plugins/common/failure.h"

namespace plugins {

namespace {

// Far more than any computer has; a larger number is a fault of the module.
constexpr CK_ULONG maximumSlots = 1000;

[[noreturn]] void failSlots() {
    throw Failure(ErrorCode::BackEndFailed,
                  "the PKCS#11 module reports an invalid number of slots");
}

// A token may be inserted between the two calls.
std::vector<CK_SLOT_ID> slotsWithTokens(CK_FUNCTION_LIST& aModule) {
    for (int attempts = 0; attempts < 3; ++attempts) {
        CK_ULONG count = 0;
        const auto counted = aModule.C_GetSlotList(CK_TRUE, nullptr, &count);
        requireSuccess(counted, "PKCS#11 module", "C_GetSlotList");
        if (count > maximumSlots) failSlots();
        if (count == 0) return {};
        std::vector<CK_SLOT_ID> slots(count);
        const auto listed = aModule.C_GetSlotList(CK_TRUE, slots.data(), &count);
        if (listed == CKR_BUFFER_TOO_SMALL) continue;
        requireSuccess(listed, "PKCS#11 module", "C_GetSlotList");
        if (count > slots.size()) failSlots();
        slots.resize(count);
        return slots;
    }
    failSlots();
}

// A token may be removed, or be unknown to the module.
bool isAbsent(CK_RV aResult) {
    return aResult == CKR_TOKEN_NOT_PRESENT || aResult == CKR_TOKEN_NOT_RECOGNIZED ||
           aResult == CKR_DEVICE_REMOVED || aResult == CKR_SLOT_ID_INVALID;
}

// The label is padded with blanks.
std::string labelOf(const CK_TOKEN_INFO& aInfo) {
    const auto* begin = reinterpret_cast<const char*>(aInfo.label);
    std::string label(begin, sizeof aInfo.label);
    label.erase(label.find_last_not_of(' ') + 1);
    return label;
}

bool meets(const TokenRequest& aRequest, const CK_TOKEN_INFO& aInfo) {
    return (aInfo.flags & CKF_TOKEN_INITIALIZED) != 0 &&
           (!aRequest.tokenLabel || *aRequest.tokenLabel == labelOf(aInfo)) &&
           (!aRequest.uri || aRequest.uri->matches(aInfo));
}

void addTokens(std::vector<Token>& aTokens, CK_FUNCTION_LIST& aModule,
               const TokenRequest& aRequest) {
    for (const auto slot : slotsWithTokens(aModule)) {
        CK_TOKEN_INFO info = {};
        const auto result = aModule.C_GetTokenInfo(slot, &info);
        if (isAbsent(result)) continue;
        requireSuccess(result, "PKCS#11 module", "C_GetTokenInfo");
        if (!meets(aRequest, info)) continue;
        aTokens.push_back({&aModule, slot, info.flags, "token \"" + labelOf(info) + '"'});
    }
}

} // namespace

std::vector<Token> findTokens(const std::vector<CK_FUNCTION_LIST*>& aModules,
                              const TokenRequest& aRequest) {
    std::vector<Token> tokens;
    for (auto* module : aModules) {
        try {
            addTokens(tokens, *module, aRequest);
        } catch (const Failure&) {
            if (aRequest.namesModule()) throw;
        }
    }
    return tokens;
}

CK_FLAGS readFlags(const Token& aToken) {
    CK_TOKEN_INFO info = {};
    requireSuccess(aToken.module->C_GetTokenInfo(aToken.slot, &info), aToken.name,
                   "C_GetTokenInfo");
    return info.flags;
}

} // namespace plugins
