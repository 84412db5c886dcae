// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <p11-kit/pkcs11.h>

namespace plugins {

/// Calls C_Initialize and permits the module to use the system's threads.
CK_RV initializeModule(CK_FUNCTION_LIST& aModule);

/// Initialised PKCS#11 modules, finalised on destruction. They stay loaded, since some leave
/// threads or exit handlers that run their code.
class Modules {
public:
    /// Loads the module in the file @p aPath. Throws Failure: NotFound "no such module";
    /// NotReadable if it is not a regular file or cannot be loaded; BackEndFailed if it lacks
    /// functions or cannot be initialised. The message begins with the path.
    static Modules loadFile(const std::string& aPath);
    /// Loads the modules that are registered in the system, or only the one called @p aName; if
    /// only p11-kit can find that one, all are loaded and it alone is initialised. Without a name,
    /// those that cannot be loaded or initialised are left out. Throws Failure: NotFound if there
    /// is none; for the named one also as loadFile(); on Windows always InvalidRequest.
    static Modules loadRegistered(const std::optional<std::string>& aName);

    ~Modules();
    Modules(Modules&&) = default;
    Modules& operator=(Modules&&) = delete;

    const std::vector<CK_FUNCTION_LIST*>& get() const { return mModules; }

private:
    Modules() = default;

    std::vector<CK_FUNCTION_LIST*> mModules; // all are initialised
};

} // namespace plugins
