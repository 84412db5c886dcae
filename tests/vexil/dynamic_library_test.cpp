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

// Modules that only count how many are loaded, with a path as long as there is room.
class DynamicLibraryOnTestPlatform : public OnTestPlatform {
protected:
    DynamicLibraryOnTestPlatform() {
        TestPlatform::inUse().openModule = [this](const char*, long&) { return &++loaded; };
        TestPlatform::inUse().closeModule = [this](void*) { --loaded; };
        TestPlatform::inUse().getModuleFileName = [this](void*, std::uint16_t* aDest,
                                                         std::uint32_t aSize, long& aError) {
            aError = 5;
            std::fill_n(aDest, aSize, std::uint16_t{'a'});
            return failing ? 0 : aSize;
        };
    }

    int loaded = 0;
    bool failing = false;
};

TEST_F(DynamicLibraryOnTestPlatform, GivesBackAModuleWithoutAPath) {
    failing = true;
    DynamicLibrary library;
    EXPECT_FALSE(library.load("x"));
    EXPECT_STREQ(library.getErrorText(), "GetModuleFileName failed, error 5");
    EXPECT_EQ(loaded, 0);
    EXPECT_EQ(library.getSymbol("x"), nullptr);
    EXPECT_STREQ(library.getErrorText(), "not loaded");
}

TEST_F(DynamicLibraryOnTestPlatform, LosesNoModuleWhenMemoryRunsOut) {
    for (long count = 0;; ++count) {
        DynamicLibrary library;
        try {
            const FailingMemory memory(count);
            library.load("x");
        } catch (const std::bad_alloc&) {
            EXPECT_EQ(loaded, 0);
            EXPECT_EQ(library.getPath().getLength(), 0u);
            continue;
        }
        EXPECT_GT(count, 0);
        EXPECT_EQ(library.getPath().getLength(), 260u);
        EXPECT_EQ(loaded, 1);
        break;
    }
    EXPECT_EQ(loaded, 0);
}
