#include "tests/platform/test_platform.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <sys/stat.h>
#include <unistd.h>

using namespace vexil::platform;
namespace fs = std::filesystem;

TEST(ActiveCodePage, IsThatOfTheEnvironment) {
    const std::string clef = "\xF0\x9D\x84\x9E"; // U+1D11E
    const std::tuple<const char*, std::string, std::u16string> rows[] = {
        {"C", "az\x7F", u"az\x7F"},
        {"C", "a\x80", u""}, // refused
        {"C.UTF-8", "\xC3\xA9\xE2\x82\xAC" + clef, u"\u00E9\u20AC\U0001D11E"},
        {"C.UTF-8", std::string(511, 'x') + clef, std::u16string(511, u'x') + u"\U0001D11E"},
        {"C.UTF-8", "a\xE2\x82", u""},
        {"C.UTF-8", "a\xFFz", u""},
        {"C.UTF-8", "\xED\xA0\x80", u""},
        {"no such locale", "a", u"a"}, // as "C"
        {"no such locale", "\xC3\xA9", u""},
    };
    for (const auto& [locale, bytes, expected] : rows) {
        setenv("LC_ALL", locale, 1);
        const int length = int(bytes.size()), count = int(expected.size());
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, nullptr, 0), count) << bytes;
        std::vector<std::uint16_t> units(expected.size() + 1);
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, units.data(), count), count) << bytes;
        EXPECT_EQ(std::u16string(units.begin(), units.end() - 1), expected);
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, units.data(), count / 2), 0) << bytes;
    }
    unsetenv("LC_ALL");
}

class PosixModules : public testing::Test {
protected:
    PosixModules() {
        fs::create_directory(folder);
        fs::current_path(folder);
    }
    ~PosixModules() override {
        fs::current_path("/");
        fs::remove_all(folder);
    }
    const std::string folder = testing::TempDir() + "modules" + std::to_string(getpid());
    long error = 0;
};

TEST_F(PosixModules, FailWithTheNumbersOfTheWindowsLoader) {
    std::ofstream("text.so") << "no library";
    std::ofstream("empty: out.so");
    fs::create_directory("folder.so");
    mkfifo("pipe.so", 0600);
    fs::copy(SYMBOL_LIBRARY, "processor.so");
    std::fstream("processor.so", std::ios::in | std::ios::out).seekp(18).put('\x77');
    const std::pair<long, std::vector<const char*>> rows[] = {
        {126, {"", "no_such.so", "./no_such.so", "./text.so/x", NEEDS_LIBRARY}},
        {127, {NEEDS_SYMBOL}},
        {193, {"./text.so", "./empty: out.so", "./folder.so", "./pipe.so", "./processor.so"}}};
    for (const auto& [number, names] : rows) {
        for (const auto* const name : names) {
            EXPECT_EQ(openModule(name, error), nullptr) << name;
            EXPECT_EQ(error, number) << name;
        }
    }
}

TEST_F(PosixModules, TellTheirAbsoluteNameInUtf16) {
    const auto here = fs::current_path();
    const std::pair<std::string, std::u16string> rows[] = {
        {"./\xC3\xA9\xFF\xE2\x82", here.u16string() + u"/./\u00E9\uFFFD\uFFFD\uFFFD"},
        {"./ascii", here.u16string() + u"/./ascii"},
        {here.string() + "/absolute", here.u16string() + u"/absolute"}};
    for (const auto& [file, name] : rows) {
        fs::copy(SYMBOL_LIBRARY, file);
        void* const module = openModule(file.c_str(), error);
        ASSERT_NE(module, nullptr) << file << error;
        for (const auto room : {name.size() + 1, name.size(), name.size() - 2}) {
            std::vector<std::uint16_t> units(name.size() + 1, 0xEEEE);
            const auto length = getModuleFileName(module, units.data(), std::uint32_t(room), error);
            EXPECT_EQ(std::u16string(units.data(), units.data() + length), name.substr(0, room));
            EXPECT_EQ(units[length], room > length ? 0 : 0xEEEE) << file;
        }
        closeModule(module);
    }
}
