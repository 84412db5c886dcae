// SPDX-License-Identifier: MIT
#include "tests/table.h"
#include "vexil/platform/platform.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace vexil::platform;
namespace fs = std::filesystem;

struct ModuleCloser {
    using pointer = ModuleHandle;
    void operator()(ModuleHandle aModule) const { closeModule(aModule); }
};
using ModuleHolder = std::unique_ptr<void, ModuleCloser>;

class OwnSymbols : public TableTest {};

TEST_P(OwnSymbols, AreFound) {
    const Columns& row = GetParam().columns;
    const bool isExported = row[1] == "exported";
    for (const char* const library : {SYMBOL_KINDS, SYMBOL_KINDS_SYSV}) {
        long error = 0;
        const ModuleHolder module(openModule(library, error));
        ASSERT_TRUE(module) << library << ": error " << error;
        error = 0;
        EXPECT_EQ(findSymbol(module.get(), row[0].c_str(), error) != nullptr, isExported);
        EXPECT_EQ(error, isExported ? 0 : errorSymbolNotFound);
    }
}

INSTANTIATE_TABLE(OwnSymbols, "library_symbols.txt", 2);

TEST(ModulePath, IsThatBeforeTheConstructorsRan) {
    const auto before = fs::current_path();
    fs::copy(CHANGES_DIRECTORY, "relative.so", fs::copy_options::overwrite_existing);
    long error = 0;
    const ModuleHolder module(openModule("./relative.so", error));
    const auto changed = fs::current_path();
    fs::current_path(before);
    EXPECT_EQ(changed, "/");
    ASSERT_TRUE(module);
    std::u16string path(1000, u' ');
    path.resize(getModuleFileName(module.get(), reinterpret_cast<std::uint16_t*>(path.data()), 1000,
                                  error));
    EXPECT_EQ(path, before.u16string() + u"/./relative.so");
    fs::remove("relative.so");
}

TEST(LibrarySearch, RefusesAPipe) {
    // The loader reads the variable when the process starts.
    const auto folder = fs::current_path() / "searched";
    fs::create_directory(folder);
    mkfifo((folder / "pipe_in_path.so").c_str(), 0600);
    const auto command =
        "LD_LIBRARY_PATH='" + folder.string() + "' timeout 20 '" +
        fs::read_symlink("/proc/self/exe").string() +
        "' --gtest_also_run_disabled_tests --gtest_filter=*LoadsThePipe >/dev/null";
    EXPECT_EQ(std::system(command.c_str()), 0);
    fs::remove_all(folder);
}

TEST(LibrarySearch, DISABLED_LoadsThePipe) {
    long error = 0;
    EXPECT_EQ(openModule("pipe_in_path.so", error), nullptr);
    EXPECT_EQ(error, errorNotALibrary);
}

TEST(FileDescriptors, AreExhausted) {
    rlimit before;
    getrlimit(RLIMIT_NOFILE, &before);
    const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(next);
    const rlimit limit{static_cast<rlim_t>(next), before.rlim_max};
    setrlimit(RLIMIT_NOFILE, &limit);
    long error = 0;
    const auto* const module = openModule(SYMBOL_LIBRARY, error);
    setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(error, errorTooManyOpenFiles);
}
