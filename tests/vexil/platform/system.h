#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

// What the tests of the platform layer need of the system.

/// Makes the encoding that is called so in the rows of CODE_PAGES the active one, if it can.
bool useCodePage(const std::string& aName);

/// A name for the folder in which the tests make their files.
extern const std::filesystem::path folderName;

/// Names that cannot be loaded, and the error numbers. Makes the files in the working directory.
std::vector<std::pair<std::string, long>> makeFailingModules();

/// Files to be copies of a library, their names for the loader, and the names that they then have.
struct ModuleName {
    std::filesystem::path file;
    std::string name;
    std::u16string fullName;
};
std::vector<ModuleName> getModuleNames();
