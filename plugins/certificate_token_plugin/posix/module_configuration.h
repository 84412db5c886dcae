// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace plugins {

/// Returns the path of the module that the system's configuration of p11-kit registers in the file
/// @p aName.module, or else of one whose library is called so: @p aName or lib@p aName with a
/// suffix. Returns nothing if there is none, or if its configuration has settings that only p11-kit
/// can follow. A user's own configuration is not read. Throws std::bad_alloc.
std::optional<std::string> findConfiguredModule(const std::string& aName);

} // namespace plugins
