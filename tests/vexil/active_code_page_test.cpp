// SPDX-License-Identifier: MIT
#include "tests/vexil/platform/fake_platform.h"
#include "tests/vexil/unicode_helpers.h"

#include <algorithm>

TEST(ActiveCodePageText, IsConvertedInTwoPasses) {
    const auto failed =
        "EncodingError UnicodeString16::assignWindowsANSI(): MultiByteToWideChar() failed"s;
    const auto cut = "EncodingError UnicodeStringBase::lengthForUTF32(): missing trail surrogate"s;
    const std::pair<int, OctetRow> rows[] = {{0, {WindowsAnsi, "x", "old", failed}},
                                             {0, {WindowsAnsi, "xxxx", "old", failed}},
                                             {3, {WindowsAnsi, "xxxx", "A<1F600>"}},
                                             {2, {WindowsAnsi, "xxxx", "old", cut}},
                                             {1, {WindowsAnsi, "xxxx", "A"}}};
    int converted = 0;
    fakeCodePage = [&](auto, int aLen, auto aDest, int aUnits) {
        if (aDest == nullptr) return aLen - 1;
        EXPECT_EQ(aUnits, 4);
        std::ranges::copy(std::u16string(u"A\xD83D\xDE00"), aDest);
        return converted;
    };
    for (const auto& [result, row] : rows) {
        converted = result;
        expectRow(row);
    }
}

TEST(ActiveCodePageText, LeavesTheUnitsWhereItFails) {
    const std::uint16_t old[] = {'o', 'l', 'd', 0};
    UnicodeString16 string(old);
    for (const int count : {0, 3}) {
        fakeCodePage = [=](auto, auto, auto aDest, auto) { return aDest == nullptr ? count : 0; };
        EXPECT_EQ(failureOf([&] { string.assignWindowsANSI("xyz", 3); }),
                  "EncodingError UnicodeString16::assignWindowsANSI(): "
                  "MultiByteToWideChar() failed");
        EXPECT_EQ(contentOf(string), "old");
    }
    string.assignWindowsANSI("", 0);
    EXPECT_EQ(contentOf(string), "");
}
