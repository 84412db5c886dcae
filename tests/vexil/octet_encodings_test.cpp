// SPDX-License-Identifier: MIT
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
