#include "tests/platform/test_platform.h"

#include <filesystem>
#include <fstream>

#include <windows.h>

using namespace vexil::platform;
namespace fs = std::filesystem;

TEST(ActiveCodePage, IsThatOfTheSystem) {
    if (GetACP() != 1252) GTEST_SKIP() << "the rows are of code page 1252, not " << GetACP();
    const std::pair<std::string, std::u16string> rows[] = {{"az\x7F", u"az\x7F"},
                                                           {"\x80\xE9\xFF", u"\u20AC\u00E9\u00FF"},
                                                           {{"a\0b", 3}, {u"a\0b", 3}}};
    for (const auto& [bytes, expected] : rows) {
        const int length = int(bytes.size()), count = int(expected.size());
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, nullptr, 0), count) << bytes;
        std::vector<std::uint16_t> units(expected.size() + 1, 0xEEEE);
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, units.data(), count), count) << bytes;
        EXPECT_EQ(std::u16string(units.begin(), units.end() - 1), expected);
        EXPECT_EQ(units.back(), 0xEEEE) << bytes;
        EXPECT_EQ(activeCodePageToUtf16(bytes.data(), length, units.data(), count - 1), 0) << bytes;
    }
}

class WindowsModules : public testing::Test {
protected:
    WindowsModules() {
        fs::create_directory(folder);
        fs::current_path(folder);
    }
    ~WindowsModules() override {
        fs::current_path(before);
        fs::remove_all(folder);
    }
    const fs::path before = fs::current_path();
    // In no code page both of these.
    const fs::path folder = before / (L"\u4F8B\u00E9" + std::to_wstring(GetCurrentProcessId()));
    long error = 0;
};

// A library for 64-bit processors, as far as its header says.
static void writeForeignLibrary(const char* aName) {
    fs::copy(SYMBOL_LIBRARY, aName);
    std::fstream file(aName, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(0x3C); // where the address of the header is
    const int header = file.get() + 256 * file.get();
    file.seekp(header + 4).write("\x64\x86", 2);  // the processor
    file.seekp(header + 24).write("\x0B\x02", 2); // the header's own form
}

TEST_F(WindowsModules, FailWithTheNumbersOfTheLoader) {
    std::ofstream("text.dll") << "no library";
    writeForeignLibrary("foreign.dll");
    const std::pair<const char*, long> rows[] = {{"", 126},
                                                 {"no_such.dll", 126},
                                                 {".\\no_such.dll", 126},
                                                 {".\\text.dll", 193},
                                                 {".\\foreign.dll", 193}};
    for (const auto& [name, number] : rows) {
        EXPECT_EQ(openModule(name, error), nullptr) << name;
        EXPECT_EQ(error, number) << name;
    }
}

TEST_F(WindowsModules, TellTheirNameInUtf16) {
    if (GetACP() != 1252) GTEST_SKIP() << "the name is in code page 1252, not " << GetACP();
    fs::copy(SYMBOL_LIBRARY, L"\u00E9.dll");
    void* const module = openModule(".\\\xE9.dll", error);
    ASSERT_NE(module, nullptr) << error;
    std::u16string units(1000, u'x');
    auto* const dest = reinterpret_cast<std::uint16_t*>(units.data());
    const auto length = getModuleFileName(module, dest, 1000, error);
    EXPECT_EQ(fs::path(units.substr(0, length)), folder / L"\u00E9.dll");
    EXPECT_EQ(units[length], 0);
    EXPECT_EQ(getModuleFileName(module, dest, length - 1, error), length - 1);
    closeModule(module);
    EXPECT_EQ(getModuleFileName(this, dest, 1000, error), 0U); // no module
    EXPECT_EQ(error, 126);
}
