// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/platform_fixtures.h"

#include <fstream>

#include <windows.h>

namespace fs = std::filesystem;

bool useCodePage(const std::string& aName) {
    return aName == std::to_string(GetACP());
}

// No code page contains both characters.
const fs::path folderName = L"\u4F8B\u00E9";

// Writes a library whose headers name the processor of the other word size.
static void writeForeignLibrary(const char* aName) {
    fs::copy(SYMBOL_LIBRARY, aName);
    std::fstream file(aName, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(0x3C); // the offset of the PE header
    const int header = file.get() + 256 * file.get();
    const bool is64Bit = sizeof(void*) == 8;
    file.seekp(header + 4).write(is64Bit ? "\x4C\x01" : "\x64\x86", 2);  // the processor
    file.seekp(header + 24).write(is64Bit ? "\x0B\x01" : "\x0B\x02", 2); // PE32 or PE32+
}

std::vector<FailingModule> makeFailingModules() {
    std::ofstream("text.dll") << "no library";
    writeForeignLibrary("foreign.dll");
    return {{"", 126},
            {"no_such.dll", 126},
            {".\\no_such.dll", 126},
            {".\\text.dll", 193},
            {".\\foreign.dll", 193}};
}

std::vector<ModuleName> getModuleNames() {
    const auto file = fs::current_path() / L"\u00E9.dll";
    return {{file, GetACP() == 1252 ? ".\\\xE9.dll" : ".\\\u00E9.dll", file.u16string()}};
}
