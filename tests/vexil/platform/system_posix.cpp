#include "tests/vexil/platform/system.h"

#include <cstdlib>
#include <fstream>

#include <sys/stat.h>

namespace fs = std::filesystem;

bool useCodePage(const std::string& aName) {
    return setenv("LC_ALL", aName.c_str(), 1) == 0;
}

const fs::path folderName = "modules";

std::vector<std::pair<std::string, long>> makeFailingModules() {
    std::ofstream("text.so") << "no library";
    std::ofstream("empty: out.so");
    fs::create_directory("folder.so");
    mkfifo("pipe.so", 0600);
    fs::copy(SYMBOL_LIBRARY, "processor.so");
    std::fstream("processor.so", std::ios::in | std::ios::out).seekp(18).put('\x77');
    return {{"", 126},
            {"no_such.so", 126},
            {"./no_such.so", 126},
            {"./text.so/x", 126},
            {NEEDS_LIBRARY, 126},
            {NEEDS_SYMBOL, 127},
            {"./text.so", 193},
            {"./empty: out.so", 193},
            {"./folder.so", 193},
            {"./pipe.so", 193},
            {"./processor.so", 193}};
}

std::vector<ModuleName> getModuleNames() {
    const auto here = fs::current_path();
    const auto absolute = here / "absolute";
    const auto* const broken = "./\xC3\xA9\xFF\xE2\x82";
    return {{broken, broken, here.u16string() + u"/./\u00E9\uFFFD\uFFFD\uFFFD"},
            {"ascii", "./ascii", here.u16string() + u"/./ascii"},
            {absolute, absolute, absolute.u16string()}};
}
