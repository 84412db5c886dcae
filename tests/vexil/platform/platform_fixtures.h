// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <string>
#include <vector>

// The parts of the platform tests that depend on the system.

/// Makes the encoding of a row of CODE_PAGES the active one; false if it is not available.
bool useCodePage(const std::string& aName);

/// The name of the folder in which the tests create their files.
extern const std::filesystem::path folderName;

/// A name that cannot be loaded, and the error number.
struct FailingModule {
    std::string name;
    long error;
};

/// Creates the files in the working directory.
std::vector<FailingModule> makeFailingModules();

/// A file to create as a copy of a library, its name for the loader, and the recorded path.
struct ModuleName {
    std::filesystem::path file;
    std::string name;
    std::u16string fullName;
};
std::vector<ModuleName> getModuleNames();
