// SPDX-License-Identifier: MIT
#pragma once

#include "plugins/common/selection.h"

#include <string>

namespace plugins {

enum class StoreLocation {
    CurrentUser,
    LocalMachine,
};

/// Reads all certificates of the store @p aName (UTF-8), each once: a user's store includes the
/// certificates of the machine's store of the same name. Those that cannot be decoded are counted
/// as skipped. Throws Failure: NotFound if there is no such store; NotReadable if it cannot be
/// opened.
CertificateSource readStore(const std::string& aName, StoreLocation aLocation);

} // namespace plugins
