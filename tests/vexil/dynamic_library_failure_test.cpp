// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/fake_platform.h"
#include "vexil/dynamic_library.h"

#include <algorithm>

using namespace vexil;

class DynamicLibraryFailures : public testing::Test {
protected:
    void SetUp() override {
        fakeLibrary.openModule = [this](const char*, long&) { return &++loaded; };
        fakeLibrary.closeModule = [this](void*) { --loaded; };
        fakeLibrary.getModuleFileName = [](auto, std::uint16_t* aDest, std::uint32_t aSize, auto&) {
            std::fill_n(aDest, aSize, std::uint16_t{'a'});
            return aSize;
        };
    }
    int loaded = 0;
};

TEST_F(DynamicLibraryFailures, UnloadsAModuleWithoutAName) {
    fakeLibrary.getModuleFileName = [](auto, auto, auto, long& aError) { return aError = 5, 0U; };
    DynamicLibrary library;
    EXPECT_FALSE(library.load("x"));
    EXPECT_STREQ(library.getErrorText(), "GetModuleFileName failed, error 5");
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(library.getSymbol("x"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "not loaded");
}

TEST_F(DynamicLibraryFailures, TruncatesALongPath) {
    DynamicLibrary library;
    EXPECT_TRUE(library.load("x"));
    EXPECT_EQ(library.getPath().getLength(), 260u);
    EXPECT_EQ(loaded, 1);
}

TEST_F(DynamicLibraryFailures, UnloadsBeforeItReleasesPathAndText) {
    std::string textWhenUnloaded;
    std::uint32_t lengthWhenUnloaded = 0;
    {
        DynamicLibrary library;
        EXPECT_TRUE(library.load("x"));
        EXPECT_EQ(library.getSymbol("x"), nullptr);
        const char* const text = library.getErrorText();
        const auto& path = library.getPath();
        fakeLibrary.closeModule = [&](void*) {
            textWhenUnloaded = text;
            lengthWhenUnloaded = path.getLength();
        };
    }
    EXPECT_EQ(textWhenUnloaded, "GetProcAddress failed, error 127");
    EXPECT_EQ(lengthWhenUnloaded, 260u);
}
