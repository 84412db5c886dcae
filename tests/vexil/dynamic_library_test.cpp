#include "vexil/dynamic_library.h"

#include "tests/vexil/platform/test_platform.h"

using namespace vexil;

TEST(DynamicLibrary, FindsTheSymbolsOfWhatItLoaded) {
    DynamicLibrary library;
    EXPECT_EQ(library.getSymbol("answer"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "not loaded");
    EXPECT_FALSE(library.load("no_such_library"));
    EXPECT_STREQ(library.getErrorText(), "LoadLibrary failed, error 126");
    ASSERT_TRUE(library.load(SYMBOL_LIBRARY)) << library.getErrorText();
    EXPECT_STREQ(library.getErrorText(), "");
    EXPECT_EQ(library.getSymbol("question"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "GetProcAddress failed, error 127");
    EXPECT_FALSE(library.load(SYMBOL_LIBRARY));
    EXPECT_STREQ(library.getErrorText(), "already loaded");
    const auto answer = reinterpret_cast<int (*)()>(library.getSymbol("answer"));
    EXPECT_STREQ(library.getErrorText(), "");
    EXPECT_EQ(answer(), 42);
}

class DynamicLibraryOnTestPlatform : public OnTestPlatform {};

TEST_F(DynamicLibraryOnTestPlatform, GivesBackAModuleWithoutAName) {
    int loaded = 0;
    auto& platform = TestPlatform::inUse();
    platform.openModule = [&](const char*, long&) { return &++loaded; };
    platform.closeModule = [&](void*) { --loaded; };
    platform.getModuleFileName = [](auto, auto, auto, long& aError) { return aError = 5, 0U; };
    DynamicLibrary library;
    EXPECT_FALSE(library.load("x"));
    EXPECT_STREQ(library.getErrorText(), "GetModuleFileName failed, error 5");
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(library.getSymbol("x"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "not loaded");
    platform.getModuleFileName = [](auto, std::uint16_t* aDest, std::uint32_t aSize, auto&) {
        std::fill_n(aDest, aSize, std::uint16_t{'a'});
        return aSize;
    };
    EXPECT_TRUE(library.load("x"));
    EXPECT_EQ(library.getPath().getLength(), 260u);
    EXPECT_EQ(loaded, 1);
}
