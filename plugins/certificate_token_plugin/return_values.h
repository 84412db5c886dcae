// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <p11-kit/pkcs11.h>

namespace plugins {

/// Returns the name of the result of a function of a module, such as "CKR_DEVICE_ERROR", or its
/// hexadecimal number if it has none here.
std::string returnValueName(CK_RV aValue);

/// Throws unless @p aValue is CKR_OK: std::bad_alloc for CKR_HOST_MEMORY, else Failure
/// (BackEndFailed) "SUBJECT: FUNCTION failed with CKR_..." with the name of the token or module and
/// that of the function.
void requireSuccess(CK_RV aValue, const std::string& aSubject, const char* aFunction);

} // namespace plugins
