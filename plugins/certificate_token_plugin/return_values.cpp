// SPDX-License-Identifier: MIT
#include "return_values.h"

#include "plugins/common/failure.h"

#include <cstdio>
#include <new>
#include <utility>

namespace plugins {

namespace {

using NamedValue = std::pair<CK_RV, const char*>;

#define NAMED(NAME) NamedValue(NAME, #NAME)

// The values that functions for tokens, sessions, logins and objects return.
constexpr NamedValue namedValues[] = {
    NAMED(CKR_CANCEL),
    NAMED(CKR_SLOT_ID_INVALID),
    NAMED(CKR_GENERAL_ERROR),
    NAMED(CKR_FUNCTION_FAILED),
    NAMED(CKR_ARGUMENTS_BAD),
    NAMED(CKR_NEED_TO_CREATE_THREADS),
    NAMED(CKR_CANT_LOCK),
    NAMED(CKR_ATTRIBUTE_SENSITIVE),
    NAMED(CKR_ATTRIBUTE_TYPE_INVALID),
    NAMED(CKR_ATTRIBUTE_VALUE_INVALID),
    NAMED(CKR_DEVICE_ERROR),
    NAMED(CKR_DEVICE_MEMORY),
    NAMED(CKR_DEVICE_REMOVED),
    NAMED(CKR_FUNCTION_CANCELED),
    NAMED(CKR_FUNCTION_NOT_SUPPORTED),
    NAMED(CKR_OBJECT_HANDLE_INVALID),
    NAMED(CKR_OPERATION_ACTIVE),
    NAMED(CKR_OPERATION_NOT_INITIALIZED),
    NAMED(CKR_PIN_EXPIRED),
    NAMED(CKR_SESSION_CLOSED),
    NAMED(CKR_SESSION_COUNT),
    NAMED(CKR_SESSION_HANDLE_INVALID),
    NAMED(CKR_SESSION_PARALLEL_NOT_SUPPORTED),
    NAMED(CKR_TEMPLATE_INCONSISTENT),
    NAMED(CKR_TOKEN_NOT_PRESENT),
    NAMED(CKR_TOKEN_NOT_RECOGNIZED),
    NAMED(CKR_USER_ANOTHER_ALREADY_LOGGED_IN),
    NAMED(CKR_USER_NOT_LOGGED_IN),
    NAMED(CKR_USER_PIN_NOT_INITIALIZED),
    NAMED(CKR_USER_TOO_MANY_TYPES),
    NAMED(CKR_BUFFER_TOO_SMALL),
    NAMED(CKR_CRYPTOKI_NOT_INITIALIZED),
    NAMED(CKR_CRYPTOKI_ALREADY_INITIALIZED),
    NAMED(CKR_FIPS_SELF_TEST_FAILED),
    NAMED(CKR_LIBRARY_LOAD_FAILED),
    NAMED(CKR_FUNCTION_REJECTED),
};

#undef NAMED

} // namespace

std::string returnValueName(CK_RV aValue) {
    for (const auto& [value, name] : namedValues) {
        if (value == aValue) return name;
    }
    char text[2 + 2 * sizeof aValue + 1];
    std::snprintf(text, sizeof text, "0x%08lX", aValue);
    return text;
}

void requireSuccess(CK_RV aValue, const std::string& aSubject, const char* aFunction) {
    if (aValue == CKR_OK) return;
    if (aValue == CKR_HOST_MEMORY) throw std::bad_alloc();
    throw Failure(ErrorCode::BackEndFailed,
                  aSubject + ": " + aFunction + " failed with " + returnValueName(aValue));
}

} // namespace plugins
