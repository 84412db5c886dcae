// SPDX-License-Identifier: MIT
#include "module_configuration.h"

#include "plugins/certificate_token_plugin/module_library.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <string_view>
#include <system_error>

namespace plugins {

namespace {

namespace fs = std::filesystem;

using Settings = std::map<std::string, std::string, std::less<>>;

std::string_view trimmed(std::string_view aText) {
    const auto first = aText.find_first_not_of(" \t");
    if (first == aText.npos) return {};
    return aText.substr(first, aText.find_last_not_of(" \t") + 1 - first);
}

// Lines of the form "name: value"; comments begin with '#'. See pkcs11.conf(5).
Settings readSettings(const fs::path& aPath) {
    Settings settings;
    std::ifstream file(aPath);
    for (std::string line; std::getline(file, line);) {
        const auto colon = line.find(':');
        if (colon == line.npos || trimmed(line).front() == '#') continue;
        const std::string_view text = line;
        settings.emplace(trimmed(text.substr(0, colon)), trimmed(text.substr(colon + 1)));
    }
    return settings;
}

std::string valueOf(const Settings& aSettings, std::string_view aName) {
    const auto found = aSettings.find(aName);
    return found == aSettings.end() ? std::string() : found->second;
}

// A module for certain programs only, one in another process, and one with arguments.
bool needsP11Kit(const Settings& aSettings) {
    const auto disabled = valueOf(aSettings, "disable-in");
    return !valueOf(aSettings, "enable-in").empty() || !valueOf(aSettings, "remote").empty() ||
           !valueOf(aSettings, "x-init-reserved").empty() ||
           !(disabled.empty() || disabled == "p11-kit-proxy");
}

bool isLibraryName(const std::string& aLibrary, const std::string& aName) {
    const auto stem = fs::path(aLibrary).stem().string();
    return stem == aName || stem == "lib" + aName;
}

} // namespace

std::optional<std::string> findConfiguredModule(const std::string& aName) {
    std::optional<std::string> found;
    for (const char* const folder : {SYSTEM_MODULE_CONFIGURATIONS, MODULE_CONFIGURATIONS}) {
        std::error_code error; // a folder that does not exist has no files
        for (const auto& entry : fs::directory_iterator(folder, error)) {
            if (entry.path().extension() != ".module") continue;
            const auto settings = readSettings(entry.path());
            const auto library = valueOf(settings, "module");
            const bool isNamed = entry.path().stem() == aName;
            if (!isNamed && (found || !isLibraryName(library, aName))) continue;
            if (library.empty() || needsP11Kit(settings)) return std::nullopt;
            found = toModulePath(library);
            if (isNamed) return found;
        }
    }
    return found;
}

} // namespace plugins
