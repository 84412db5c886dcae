// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include <p11-kit/pkcs11.h>

namespace plugins {

/// Returns the path of the module that a request calls @p aName (UTF-8). On POSIX a plain name is
/// that of a file in the folder of the system's modules, and the path is absolute. On Windows it is
/// the name itself.
std::string toModulePath(const std::string& aName);

/// Loads the library @p aPath, which stays loaded, as does the plugin; returns its
/// C_GetFunctionList. Never opens a special file, which could wait for ever. Throws Failure:
/// NotFound "no such module"; NotReadable "is not a regular file", "is not a PKCS#11 module" or
/// with the system's message; each after the path. Throws std::bad_alloc.
CK_C_GetFunctionList loadModuleLibrary(const std::string& aPath);

} // namespace plugins
