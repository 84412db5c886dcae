#include "tests/platform/test_platform.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace vexil::platform;
namespace fs = std::filesystem;

struct CodePageRow {
    const char* name;
    const char* locale;
    std::string bytes;
    std::u16string units; // none: refused
};
class ActiveCodePage : public testing::TestWithParam<CodePageRow> {
protected:
    void TearDown() override { unsetenv("LC_ALL"); }
};
TEST_P(ActiveCodePage, ConvertsStrictly) {
    const auto& [name, locale, bytes, units] = GetParam();
    setenv("LC_ALL", locale, 1);
    const auto convert = [&](std::uint16_t* aDest, std::size_t aUnits) {
        return activeCodePageToUtf16(bytes.data(), static_cast<int>(bytes.size()), aDest,
                                     static_cast<int>(aUnits));
    };
    const auto length = static_cast<int>(units.size());
    EXPECT_EQ(convert(nullptr, 0), length);
    std::vector<std::uint16_t> written(units.size() + 1, 0xEEEE);
    EXPECT_EQ(convert(written.data(), units.size()), length);
    EXPECT_EQ(std::u16string(written.begin(), written.end() - 1), units);
    EXPECT_EQ(written.back(), 0xEEEE);
    if (length > 0) {
        EXPECT_EQ(convert(written.data(), units.size() - 1), 0);
    }
}
INSTANTIATE_TEST_SUITE_P(
    Locales, ActiveCodePage,
    testing::Values(CodePageRow{"Ascii", "C", "az\x7F", u"az\x7F"},
                    CodePageRow{"NotAscii", "C", "a\x80", u""},
                    CodePageRow{"MissingLocale", "xx_XX.UTF-8", "a", u"a"},
                    CodePageRow{"MissingLocaleIsC", "xx_XX.UTF-8", "\xC3\xA9", u""},
                    CodePageRow{"Utf8", "C.UTF-8", "\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E",
                                u"\u00E9\u20AC\U0001D11E"},
                    CodePageRow{"Long", "C.UTF-8", std::string(511, 'x') + "\xF0\x9D\x84\x9E",
                                std::u16string(511, u'x') + u"\U0001D11E"},
                    CodePageRow{"Truncated", "C.UTF-8", "a\xE2\x82", u""},
                    CodePageRow{"Invalid", "C.UTF-8", "a\xFFz", u""},
                    CodePageRow{"Surrogate", "C.UTF-8", "\xED\xA0\x80", u""}),
    [](const auto& aRow) { return std::string(aRow.param.name); });

class PosixModules : public testing::Test {
protected:
    PosixModules() {
        std::string pattern = testing::TempDir() + "modulesXXXXXX";
        mFolder = mkdtemp(pattern.data());
        fs::current_path(mFolder);
    }
    ~PosixModules() override {
        fs::current_path("/");
        fs::remove_all(mFolder);
    }

private:
    fs::path mFolder;
};

TEST_F(PosixModules, FailWithTheNumbersOfTheWindowsLoader) {
    std::ofstream("text.so") << "no library";
    std::ofstream("empty: out.so");
    fs::create_directory("folder.so");
    mkfifo("pipe.so", 0600);
    fs::copy(SYMBOL_LIBRARY, "other_processor.so");
    std::fstream("other_processor.so", std::ios::in | std::ios::out).seekp(18).put('\x77');
    const std::pair<const char*, long> rows[] = {
        {"", 126},
        {"no_such_library.so", 126},
        {"./no_such_library.so", 126},
        {"text.so/x", 126},
        {"./text.so", 193},
        {"./empty: out.so", 193},
        {"./folder.so", 193},
        {"./pipe.so", 193},
        {"./other_processor.so", 193},
        {NEEDS_LIBRARY, 126},
        {NEEDS_SYMBOL, 127},
    };
    for (const auto& [name, number] : rows) {
        long error = 0;
        EXPECT_EQ(openModule(name, error), nullptr) << name;
        EXPECT_EQ(error, number) << name;
    }
}

TEST_F(PosixModules, TellTheirAbsoluteNameInUtf16) {
    fs::copy(SYMBOL_LIBRARY, "\xC3\xA9\xFF\xE2\x82");
    long error = 0;
    void* const module = openModule("./\xC3\xA9\xFF\xE2\x82", error);
    ASSERT_NE(module, nullptr) << error;
    const auto path = (fs::current_path() / ".").u16string() + u"/\u00E9\uFFFD\uFFFD\uFFFD";
    for (const auto size : {path.size() + 1, path.size(), path.size() - 2, std::size_t{1}}) {
        std::vector<std::uint16_t> units(path.size() + 1, 0xEEEE);
        const auto length = getModuleFileName(module, units.data(), std::uint32_t(size), error);
        EXPECT_EQ(length, std::min(size, path.size()));
        EXPECT_EQ(std::u16string(units.begin(), units.begin() + length), path.substr(0, length));
        EXPECT_EQ(units[length], size > length ? 0 : 0xEEEE) << size;
    }
    closeModule(module);
}

TEST(BrokenPipeGuard, LeavesTheSignalAsItWas) {
    struct {
        bool blocked, pending;
    } const rows[] = {{false, false}, {true, false}, {true, true}};
    for (const auto& [blocked, pending] : rows) {
        const auto attempt = [&, blocked = blocked, pending = pending] {
            sigset_t signals;
            sigemptyset(&signals);
            sigaddset(&signals, SIGPIPE);
            if (blocked) sigprocmask(SIG_BLOCK, &signals, nullptr);
            if (pending) raise(SIGPIPE);
            int ends[2];
            const bool ready = pipe(ends) == 0 && close(ends[0]) == 0;
            bool refused = false;
            {
                const BrokenPipeGuard guard;
                refused = write(ends[1], "x", 1) == -1 && errno == EPIPE;
            }
            sigpending(&signals);
            const bool samePending = sigismember(&signals, SIGPIPE) == pending;
            sigprocmask(SIG_BLOCK, nullptr, &signals);
            const bool sameMask = sigismember(&signals, SIGPIPE) == blocked;
            _exit(ready && refused && samePending && sameMask ? 0 : 1);
        };
        EXPECT_EXIT(attempt(), testing::ExitedWithCode(0), "") << blocked << pending;
    }
}

TEST(ReserveStandardStreams, KeepsClosedOnesUnusable) {
    const auto attempt = [] {
        for (const int descriptor : {0, 1, 2}) close(descriptor);
        reserveStandardStreams();
        char byte = 0;
        const bool refused =
            read(0, &byte, 1) == -1 && write(1, &byte, 1) == -1 && write(2, &byte, 1) == -1;
        _exit(refused && dup(0) > 2 ? 0 : 1);
    };
    EXPECT_EXIT(attempt(), testing::ExitedWithCode(0), "");
}
