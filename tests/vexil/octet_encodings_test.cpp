#include "tests/platform/test_platform.h"
#include "tests/vexil/unicode_helpers.h"

#include <algorithm>

static const auto missing = "EncodingError UnicodeStringBase::lengthForUTF32(): missing "s;

TEST(OctetEncodings, DecodeOrLeaveWhatIsPromised) {
    const auto unknown = "InvalidArgument UnicodeString32::assignOctets(): unknown encoding"s;
    const OctetRow rows[] = {
        {-1, "A", U"old", unknown},
        {8, "A", U"old", unknown},
        {Latin1, "A\0\x80\xE9\xFF"s, U"A\0\x80\xE9\xFF"s},
        {Utf8, "", U""},
        {Windows1252, "\0\x7F\x80\x81\x82\x8D\x8F\x90\x9D\x9F\xA0\xFF"s,
         U"\0\x7F\x20AC?\x201A????\x178\xA0\xFF"s},
        {Windows1252, "", U""},
        {WindowsAnsi, "", U""},
        // PDFDocEncoding: an escape is a character there, and half a byte order mark is text
        {PdfTextString, "\0\b\t\n\v\f\r\16\27\30\37\x7F\xAD"s, U"??\t\n?\f\r??\x2D8\x2DC??"},
        {5, " ~\x80\x93\x9E\x9F\xA0\xA1\xAC\xAE\xFF", U" ~\x2022\xFB01\x17E?\x20AC¡¬®ÿ"},
        {PdfTextStringWithLanguage, "\33en\33", U"\x2D9\145n\x2D9"},
        {7, "\xFE", U"þ"},
        {PdfTextString, "\xFE\xFE", U"þþ"},
        {PdfTextString, "\xEF\xBB\101", U"ï»A"},
        {PdfTextString, "\xFE\xFF", U""},
        {PdfTextString, "\xFE\xFF\0A\0"s, U"A"},
        {7, "\xFE\xFF\xD7\xFF\xD8\0\xDC\0\xDB\xFF\xDF\xFF\xE0\0"s, U"\xD7FF\x10000\x10FFFF\xE000"},
        {PdfTextString, "\xFE\xFF\xD8\0"s, U"", missing + "trail surrogate"},
        {PdfTextString, "\xFE\xFF\xD8\0\0A"s, U"", missing + "trail surrogate"},
        {PdfTextString, "\xFE\xFF\xDB\xFF\xDB\xFF", U"", missing + "trail surrogate"},
        {PdfTextString, "\xFE\xFF\xD8\0\xE0\0"s, U"", missing + "trail surrogate"},
        {PdfTextString, "\xFE\xFF\xDC\0\xD8\0"s, U"", missing + "lead surrogate"},
        {PdfTextString, "\xFE\xFF\xD8\0\xDC\0\xDF\xFF"s, U"", missing + "lead surrogate"},
        {PdfTextString, "\xFE\xFF\0\33en\0\33\0A"s, U"A"},
        {5, "\xFE\xFF\0B\0\33jaUS\0\33\0A"s, U"BA"},
        {PdfTextStringWithLanguage, "\xFE\xFF\0\33en\0\33\0A"s, U"\33en\33A"},
        {7, "\xFE\xFF\0\33azAZ\0\33\0A"s, U"\33azAZ\33A"},
        {PdfTextString, "\xEF\xBB\xBF", U""},
        {PdfTextString, "\xEF\xBB\xBF\xC3\xA9\x80", U"", invalidCode},
        {7, "\xEF\xBB\xBF\101\xC3", U"", truncated},
        {5, "\xEF\xBB\xBF\101\33en\33\102\33azAZ\33\103", U"ABC"},
        {PdfTextStringWithLanguage, "\xEF\xBB\xBF\101\33e1\33\102", U"A\33e1\33B"},
        {PdfTextString, "\xEF\xBB\xBF\xC3\33en\33\101", U"", invalidCode}};
    for (const OctetRow& row : rows) expectRow(row);

    UnicodeString32 string(Latin1, "old");
    string.assignPdfDocEncoding("\x80", 1);
    EXPECT_EQ(contentOf(string), U"old\x2022");
}

TEST(OctetEncodings, StopAtMalformedLanguageEscapes) {
    // Cut short, with what is missing right behind the end
    for (const auto& text : {"\xFE\xFF\0A\0\33en\0\33"s, "\xFE\xFF\0A\0\33enUS\0\33"s}) {
        for (std::size_t len = 6; len < text.size(); ++len) expectRow({7, text, U""}, len);
    }
    for (const auto& escape : {"\0\33e1\0\33"s, "\0\33@Z\0\33"s, "\0\33z{\0\33"s, "\0\33[`\0\33"s,
                               "\0\33enU1\0\33"s, "\0\33enUS\0A"s, "\0\33\0\33\0B"s}) {
        for (const int encoding : {2, 5, 6, 7}) expectRow({encoding, "\xFE\xFF\0A"s + escape, U""});
    }
    for (const auto& escape : {"\33"s, "\33en"s, "\33\33B"s, "\33e\33B"s, "\33enU\33B"s,
                               "\33enUSx\33B"s, "\33e1\33B"s, "\33e1\33\x80"s}) {
        for (const int encoding : {2, 5}) expectRow({encoding, "\xEF\xBB\xBF\101" + escape, U"A"});
    }
}

class ActiveCodePageText : public OnTestPlatform {};

TEST_F(ActiveCodePageText, IsConvertedInTwoPasses) {
    const auto failed =
        "EncodingError UnicodeString16::assignWindowsANSI(): MultiByteToWideChar() failed"s;
    const std::pair<int, OctetRow> rows[] = {
        {0, {WindowsAnsi, "x", U"old", failed}},
        {0, {WindowsAnsi, "xxxx", U"old", failed}},
        {3, {WindowsAnsi, "xxxx", U"A\x1F600"}},
        {2, {WindowsAnsi, "xxxx", U"old", missing + "trail surrogate"}},
        {1, {WindowsAnsi, "xxxx", U"A"}}};
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

TEST(OctetEncodings, RefuseLengthsBeforeReading) {
    // Would be 3 if it were cut to 32 bits.
    constexpr std::size_t huge = SIZE_MAX / 2 + 4;
    for (const std::size_t length : {std::size_t{67108862}, huge}) {
        expectRow({Latin1, "plain", U"old", tooLong}, length);
        expectRow({Utf8, "plain", U"old", tooLong}, length);
        expectRow({Windows1252, "plain", U"", tooLong}, length);
        expectRow({PdfTextString, "plain", U"", tooLong}, length);
    }
    for (const std::size_t length : {std::size_t{0x80000000}, huge}) {
        expectRow({WindowsAnsi, "plain", U"old",
                   "Overflow UnicodeString16::assignWindowsANSI(): string too long"},
                  length);
    }
    const std::string longest(67108861, 'a');
    UnicodeString32::checkUtf8(longest.data(), longest.size());
}
