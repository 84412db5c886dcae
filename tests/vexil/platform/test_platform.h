#pragma once

#include "vexil/platform/platform.h"

#include <functional>

#include <gtest/gtest.h>

/// The part of the platform layer that a test can replace, function by function.
struct TestPlatform {
    std::function<void*(const char*, long&)> openModule;
    std::function<std::uint32_t(void*, std::uint16_t*, std::uint32_t, long&)> getModuleFileName;
    std::function<void(void*)> closeModule;
    std::function<std::int32_t(const char*, std::int32_t, std::uint16_t*, std::int32_t)>
        activeCodePageToUtf16;
    std::function<int(char*, std::size_t, const char*, std::va_list)> formatBoundedArguments;

    static TestPlatform& inUse();
    static TestPlatform real();
};

/// A test that changes the platform in use; the real one is back after it.
class OnTestPlatform : public testing::Test {
protected:
    void TearDown() override { TestPlatform::inUse() = TestPlatform::real(); }
};
