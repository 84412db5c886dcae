// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/platform_fixtures.h"
#include "tests/vexil/unicode_helpers.h"
#include "vexil/platform/platform.h"

using namespace vexil::platform;
namespace fs = std::filesystem;

class ActiveCodePage : public TableTest {};

TEST_P(ActiveCodePage, IsConvertedStrictly) {
    const Columns& row = GetParam().columns;
    if (!useCodePage(row[0])) GTEST_SKIP() << "no code page " << row[0];
    const auto* const bytes = row[1].data();
    const int length = int(row[1].size());
    std::vector<std::uint16_t> units(row[1].size() + 1, 0xEEEE);
    const int count = activeCodePageToUtf16(bytes, length, nullptr, 0);
    EXPECT_EQ(activeCodePageToUtf16(bytes, length, units.data(), length), count);
    EXPECT_EQ(shown(units.data(), std::size_t(count)), row[2]);
    EXPECT_EQ(activeCodePageToUtf16(bytes, length, units.data(), count / 2), 0);
    EXPECT_EQ(units.back(), 0xEEEE);
}

INSTANTIATE_TABLE(ActiveCodePage, CODE_PAGES, 3);

class Modules : public testing::Test {
protected:
    Modules() {
        fs::create_directories(folder);
        fs::current_path(folder);
    }
    ~Modules() override {
        fs::current_path(before);
        fs::remove_all(folder.parent_path());
    }
    const fs::path before = fs::current_path();
    const fs::path folder =
        before / testing::UnitTest::GetInstance()->current_test_info()->name() / folderName;
    long error = 0;
};

TEST_F(Modules, FailWithTheNumbersOfTheWindowsLoader) {
    for (const auto& [name, number] : makeFailingModules()) {
        EXPECT_EQ(openModule(name.c_str(), error), nullptr) << name;
        EXPECT_EQ(error, number) << name;
    }
}

TEST_F(Modules, ReturnTheirPathInUtf16) {
    for (const auto& [file, name, fullName] : getModuleNames()) {
        fs::copy(SYMBOL_LIBRARY, file);
        void* const module = openModule(name.c_str(), error);
        ASSERT_NE(module, nullptr) << file << error;
        const auto size = fullName.size();
        for (const auto capacity : {size + 1, size, size - 2}) {
            std::u16string units(size + 2, u'\xEEEE');
            auto* const dest = reinterpret_cast<std::uint16_t*>(units.data());
            const auto length = getModuleFileName(module, dest, std::uint32_t(capacity), error);
            EXPECT_EQ(length, std::min(capacity, size)) << file;
            EXPECT_EQ(units.substr(0, capacity - 1), fullName.substr(0, capacity - 1)) << file;
            EXPECT_EQ(units.substr(length, 2), capacity > size ? u"\0\xEEEE"s : u"\xEEEE\xEEEE")
                << file;
        }
        closeModule(module);
    }
}
