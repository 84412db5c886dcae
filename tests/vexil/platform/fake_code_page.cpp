// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/fake_platform.h"

FakeCodePage fakeCodePage;

namespace vexil::platform {

std::int32_t activeCodePageToUtf16(const char* aBytes, std::int32_t aLen, std::uint16_t* aDest,
                                   std::int32_t aUnits) {
    return fakeCodePage(aBytes, aLen, aDest, aUnits);
}

} // namespace vexil::platform
