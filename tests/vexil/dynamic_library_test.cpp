#include "vexil/dynamic_library.h"

#include "tests/failing_memory.h"
#include "tests/platform/test_platform.h"

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

// Modules of which only the number is kept, with a path as long as there is room.
class DynamicLibraryOnTestPlatform : public OnTestPlatform {
protected:
    DynamicLibraryOnTestPlatform() {
        auto& platform = TestPlatform::inUse();
        platform.openModule = [this](const char*, long&) { return &++loaded; };
        platform.closeModule = [this](void*) { --loaded; };
        platform.getModuleFileName = [this](void*, std::uint16_t* aDest, auto aSize, long& aError) {
            std::fill_n(aDest, aSize, std::uint16_t{'a'});
            aError = 5;
            return failing ? 0 : aSize;
        };
    }
    ~DynamicLibraryOnTestPlatform() override { EXPECT_EQ(loaded, 0); }
    int loaded = 0;
    bool failing = false;
};

TEST_F(DynamicLibraryOnTestPlatform, GivesBackAModuleThatItCouldNotTakeIn) {
    DynamicLibrary library;
    const auto loadWithoutMemory = [&] {
        const FailingMemory memory(0);
        library.load("x");
    };
    EXPECT_THROW(loadWithoutMemory(), std::bad_alloc);
    EXPECT_EQ(loaded, 0);
    failing = true;
    EXPECT_FALSE(library.load("x"));
    EXPECT_STREQ(library.getErrorText(), "GetModuleFileName failed, error 5");
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(library.getSymbol("x"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "not loaded");
    failing = false;
    EXPECT_TRUE(library.load("x"));
    EXPECT_EQ(library.getPath().getLength(), 260u);
}
