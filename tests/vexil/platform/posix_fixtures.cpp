// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/platform_fixtures.h"

#include <cstdlib>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

namespace fs = std::filesystem;

bool useCodePage(const std::string& aName) {
    unsetenv("LC_CTYPE");
    unsetenv("LANG");
    return setenv("LC_ALL", aName.c_str(), 1) == 0;
}

const fs::path folderName = "modules";

static void copyWithProcessor(const char* aName, char aProcessor) {
    fs::copy(SYMBOL_LIBRARY, aName);
    std::fstream(aName, std::ios::in | std::ios::out).seekp(18).put(aProcessor);
}

// A copy of a library whose dependency is missing. The path of the dependency begins with its path.
static void copyWithLongerDependency(const char* aName) {
    fs::copy(NEEDS_LONGER_PATH, aName);
}

std::vector<FailingModule> makeFailingModules() {
    std::ofstream("text.so") << "no library";
    std::ofstream("empty: out.so");
    fs::create_directory("folder.so");
    mkfifo("pipe.so", 0600);
    copyWithProcessor("processor.so", '\x77');
    copyWithLongerDependency("longer");
    std::vector<FailingModule> modules{{"", 126},
                                       {NEEDS_THREAD_STORAGE, 8},
                                       {"no_such.so", 126},
                                       {"./no_such.so", 126},
                                       {"./text.so/x", 126},
                                       {"./longer", 126},
                                       {NEEDS_LIBRARY, 126},
                                       {NEEDS_SYMBOL, 127},
                                       {"./text.so", 193},
                                       {"./empty: out.so", 193},
                                       {"./folder.so", 193},
                                       {"./pipe.so", 193},
                                       {"/dev/tty", 193},
                                       {"/dev/ptmx", 193},
                                       {"./processor.so", 193}};
    if (geteuid() != 0) { // root may read everything
        fs::copy(SYMBOL_LIBRARY, "unreadable.so");
        chmod("unreadable.so", 0);
        fs::create_directory("closed");
        chmod("closed", 0);
        modules.push_back({"./unreadable.so", 5});
        modules.push_back({"./closed/library.so", 5});
    }
    return modules;
}

std::vector<ModuleName> getModuleNames() {
    const auto here = fs::current_path();
    const auto absolute = here / "absolute";
    const auto* const broken = "./\xC3\xA9\xFF\xE2\x82";
    // U+FFFF in four bytes, and the first character of each length in UTF-8.
    const auto* const tooLong = "./\xF0\x8F\xBF\xBF";
    const auto* const shortest = "./\xC2\x80\xE0\xA0\x80\xF0\x90\x80\x80";
    return {{broken, broken, here.u16string() + u"/./\u00E9\uFFFD\uFFFD\uFFFD"},
            {tooLong, tooLong, here.u16string() + u"/./\uFFFD\uFFFD\uFFFD\uFFFD"},
            {shortest, shortest, here.u16string() + u"/./\u0080\u0800\U00010000"},
            {"ascii", "./ascii", here.u16string() + u"/./ascii"},
            {absolute, absolute, absolute.u16string()}};
}
