#include "tests/vexil/platform/system.h"

#include <fstream>

#include <windows.h>

namespace fs = std::filesystem;

bool useCodePage(const std::string& aName) {
    return aName == std::to_string(GetACP());
}

// In no code page both of these.
const fs::path folderName = L"\u4F8B\u00E9";

// A library for 64-bit processors, as far as its header says.
static void writeForeignLibrary(const char* aName) {
    fs::copy(SYMBOL_LIBRARY, aName);
    std::fstream file(aName, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(0x3C); // where the address of the header is
    const int header = file.get() + 256 * file.get();
    file.seekp(header + 4).write("\x64\x86", 2);  // the processor
    file.seekp(header + 24).write("\x0B\x02", 2); // the header's own form
}

std::vector<std::pair<std::string, long>> makeFailingModules() {
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
