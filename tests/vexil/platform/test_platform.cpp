#include "tests/vexil/platform/test_platform.h"

TestPlatform& TestPlatform::inUse() {
    static auto platform = real();
    return platform;
}

namespace vexil::platform {

ModuleHandle openModule(const char* aFileName, long& aError) {
    return TestPlatform::inUse().openModule(aFileName, aError);
}

std::uint32_t getModuleFileName(ModuleHandle aModule, std::uint16_t* aDest, std::uint32_t aSize,
                                long& aError) {
    return TestPlatform::inUse().getModuleFileName(aModule, aDest, aSize, aError);
}

void closeModule(ModuleHandle aModule) {
    TestPlatform::inUse().closeModule(aModule);
}

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    return TestPlatform::inUse().activeCodePageToUtf16(aBytes, aLen, aDest, aUnits);
}

int formatBoundedArguments(char* aDest, std::size_t aSize, const char* aFormat,
                           std::va_list aArguments) {
    return TestPlatform::inUse().formatBoundedArguments(aDest, aSize, aFormat, aArguments);
}

} // namespace vexil::platform

// The real layer, with other names for what can be replaced.
#define openModule realOpenModule
#define getModuleFileName realGetModuleFileName
#define closeModule realCloseModule
#define activeCodePageToUtf16 realActiveCodePageToUtf16
#define formatBoundedArguments realFormatBoundedArguments
#include CERTBRIDGE_PLATFORM_SOURCE

TestPlatform TestPlatform::real() {
    using namespace vexil::platform;
    return {realOpenModule, realGetModuleFileName, realCloseModule, realActiveCodePageToUtf16,
            realFormatBoundedArguments};
}
