// SPDX-License-Identifier: MIT
#include "vexil/dynamic_library.h"

#include <gtest/gtest.h>

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
