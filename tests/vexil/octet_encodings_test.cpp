#include "tests/vexil/platform/test_platform.h"
#include "tests/vexil/unicode_helpers.h"

#include <algorithm>

class DecodedOctets : public TableTest {};

TEST_P(DecodedOctets, HaveTheExpectedContentOrFailure) {
    for (const OctetRow& row : octetRowsOf(GetParam().columns)) expectRow(row);
}

INSTANTIATE_TABLE(DecodedOctets, "octet_encodings.txt", 4);

TEST(OctetEncodings, AppendPdfDocEncoding) {
    UnicodeString32 string(Latin1, "old");
    string.assignPdfDocEncoding("\x80", 1);
    EXPECT_EQ(contentOf(string), "old<2022>");
}

TEST(OctetEncodings, StopAtLanguageEscapesCutShort) {
    // The missing bytes follow the end that is claimed.
    for (const auto& text : {"\xFE\xFF\0A\0\33en\0\33"s, "\xFE\xFF\0A\0\33enUS\0\33"s}) {
        for (std::size_t len = 6; len < text.size(); ++len) expectRow({7, text, ""}, len);
    }
}

class ActiveCodePageText : public OnTestPlatform {};

TEST_F(ActiveCodePageText, IsConvertedInTwoPasses) {
    const auto failed =
        "EncodingError UnicodeString16::assignWindowsANSI(): MultiByteToWideChar() failed"s;
    const auto cut = "EncodingError UnicodeStringBase::lengthForUTF32(): missing trail surrogate"s;
    const std::pair<int, OctetRow> rows[] = {{0, {WindowsAnsi, "x", "old", failed}},
                                             {0, {WindowsAnsi, "xxxx", "old", failed}},
                                             {3, {WindowsAnsi, "xxxx", "A<1F600>"}},
                                             {2, {WindowsAnsi, "xxxx", "old", cut}},
                                             {1, {WindowsAnsi, "xxxx", "A"}}};
    int converted = 0;
    TestPlatform::inUse().activeCodePageToUtf16 = [&](auto, int aLen, auto aDest, int aUnits) {
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

TEST_F(ActiveCodePageText, LeavesTheUnitsWhereItFails) {
    const std::uint16_t old[] = {'o', 'l', 'd', 0};
    UnicodeString16 string(old);
    for (const int count : {0, 3}) {
        TestPlatform::inUse().activeCodePageToUtf16 = [=](auto, auto, auto aDest, auto) {
            return aDest == nullptr ? count : 0;
        };
        EXPECT_EQ(failureOf([&] { string.assignWindowsANSI("xyz", 3); }),
                  "EncodingError UnicodeString16::assignWindowsANSI(): "
                  "MultiByteToWideChar() failed");
        EXPECT_EQ(contentOf(string), "old");
    }
    string.assignWindowsANSI("", 0);
    EXPECT_EQ(contentOf(string), "");
}

TEST(OctetEncodings, RefuseLengthsBeforeReading) {
    const auto tooLong = "Overflow UnicodeString32::alloc(): string too long"s;
    const auto tooLong16 = "Overflow UnicodeString16::assignWindowsANSI(): string too long"s;
    // Would be 3 if it were cut to 32 bits.
    constexpr std::size_t huge = SIZE_MAX / 2 + 4;
    const OctetRow rows[] = {{Latin1, "plain", "old", tooLong},
                             {Utf8, "plain", "old", tooLong},
                             {Windows1252, "plain", "", tooLong},
                             {PdfTextString, "plain", "", tooLong},
                             {WindowsAnsi, "plain", "old", tooLong16}};
    for (const auto& row : rows) {
        expectRow(row, row.encoding == WindowsAnsi ? 0x80000000 : 67108862);
        expectRow(row, huge);
    }
    const std::string longest(67108861, 'a');
    UnicodeString32::checkUtf8(longest.data(), longest.size());
}
