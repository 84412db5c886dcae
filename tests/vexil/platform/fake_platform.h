// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/platform/platform.h"

#include <functional>

#include <gtest/gtest.h>

/// Replacements of platform functions that are defined together. A test program that links the
/// definitions in fake_library.cpp, fake_code_page.cpp or fake_formatting.cpp gets none of the
/// platform's file of that name.
struct FakeLibrary {
    std::function<void*(const char*, long&)> openModule;
    std::function<std::uint32_t(void*, std::uint16_t*, std::uint32_t, long&)> getModuleFileName;
    std::function<void(void*)> closeModule;
};

using FakeCodePage =
    std::function<std::int32_t(const char*, std::int32_t, std::uint16_t*, std::int32_t)>;

using FakeFormatting = std::function<int(char*, std::size_t, const char*, std::va_list)>;

extern FakeLibrary fakeLibrary;
extern FakeCodePage fakeCodePage;
extern FakeFormatting fakeFormatting;
