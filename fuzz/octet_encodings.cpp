// SPDX-License-Identifier: MIT

// The first byte selects the encoding of the others; each decoder is compared with a second one.
#include "fuzz/require.h"
#include "vexil/exceptions.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <iconv.h>

using namespace vexil;

namespace {

/// The decoded text, or the failure.
struct Outcome {
    std::u32string content;
    std::string failure;

    bool operator==(const Outcome&) const = default;
};

template <class Decode>
Outcome outcomeOf(const Decode& aDecode) {
    UnicodeString32 string(Latin1, "old");
    Outcome outcome;
    try {
        aDecode(string);
    } catch (const Exception& error) {
        outcome.failure = error.what();
    }
    outcome.content.assign(string.getData(), string.getData() + string.getLength());
    return outcome;
}

Outcome decode(std::int32_t aEncoding, const std::string& aBytes) {
    return outcomeOf([&](UnicodeString32& aString) {
        aString.assignOctets(aEncoding, aBytes.data(), aBytes.size());
    });
}

/// The system's code page 1252, with '?' for undefined bytes.
char32_t convertWindows1252(char aByte) {
    static const iconv_t converter = iconv_open("UTF-32LE", "CP1252");
    char32_t code = 0;
    char* source = &aByte;
    char* dest = reinterpret_cast<char*>(&code);
    std::size_t sourceSize = 1;
    std::size_t destSize = sizeof code;
    return iconv(converter, &source, &sourceSize, &dest, &destSize) == 0 ? code : U'?';
}

void checkWindows1252(const Outcome& aOutcome, const std::string& aBytes) {
    std::u32string expected;
    for (const char byte : aBytes) expected += convertWindows1252(byte);
    require(aOutcome == Outcome{expected, ""}, "code page 1252 is the system's");
}

void checkLatin1(const Outcome& aOutcome, const std::string& aBytes) {
    const std::basic_string<unsigned char> bytes(aBytes.begin(), aBytes.end());
    require(aOutcome == Outcome{{bytes.begin(), bytes.end()}, ""}, "Latin-1 is the byte's value");
}

/// The environment's code page is UTF-8 here.
void checkWindowsAnsi(const Outcome& aOutcome, const std::string& aBytes) {
    const Outcome utf8 = decode(Utf8, aBytes);
    require(aOutcome.content == utf8.content, "the active code page is the system's");
    require(aOutcome.failure.empty() == utf8.failure.empty(), "and strict");
}

bool isLetter(char32_t aCode) {
    return (aCode >= U'A' && aCode <= U'Z') || (aCode >= U'a' && aCode <= U'z');
}

/// Without language escapes, up to the first that is malformed.
std::u32string withoutEscapes(std::u32string_view aText) {
    std::u32string result;
    for (std::size_t pos = 0; pos < aText.size(); ++pos) {
        if (aText[pos] != 0x1B) {
            result += aText[pos];
            continue;
        }
        std::size_t end = pos + 1;
        while (end < aText.size() && isLetter(aText[end])) ++end;
        const std::size_t letters = end - pos - 1;
        const bool isWhole = end < aText.size() && aText[end] == 0x1B;
        if (!isWhole || (letters != 2 && letters != 4)) break;
        pos = end;
    }
    return result;
}

/// Decodes text with or without a byte order mark and keeps its escapes.
Outcome decodeKeeping(const std::string& aBytes) {
    if (aBytes.starts_with("\xEF\xBB\xBF")) return decode(Utf8, aBytes.substr(3));
    if (!aBytes.starts_with("\xFE\xFF")) {
        return outcomeOf([&](UnicodeString32& aString) {
            aString.clear();
            aString.assignPdfDocEncoding(aBytes.data(), aBytes.size());
        });
    }
    std::vector<std::uint16_t> units;
    for (std::size_t i = 3; i < aBytes.size(); i += 2) {
        const auto byte = [&](std::size_t aPos) { return static_cast<std::uint8_t>(aBytes[aPos]); };
        units.push_back(static_cast<std::uint16_t>(byte(i - 1) << 8 | byte(i)));
    }
    return outcomeOf([&](UnicodeString32& aString) {
        aString.assignUtf16(units.data(), static_cast<std::uint32_t>(units.size()));
    });
}

void checkPdfTextString(const Outcome& aOutcome, const std::string& aBytes, bool aKeep) {
    const bool isMarked = aBytes.starts_with("\xFE\xFF") || aBytes.starts_with("\xEF\xBB\xBF");
    if (aBytes.find('\33') == std::string::npos || !isMarked) {
        Outcome plain = decodeKeeping(aBytes);
        if (!plain.failure.empty()) plain.content.clear();
        require(aOutcome == plain, "text without escapes is what its encoding says");
        return;
    }
    if (aKeep) return;
    require(aOutcome.content.find(U'\33') == std::u32string::npos, "no escape is left");
    const Outcome kept = decode(PdfTextStringWithLanguage, aBytes);
    if (!kept.failure.empty()) return;
    require(aOutcome == Outcome{withoutEscapes(kept.content), ""}, "escapes alone are left out");
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("LC_ALL", "C.UTF-8", 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    if (aSize == 0) return 0;
    const std::int32_t encoding = *aData - '0';
    const std::string bytes(aData + 1, aData + aSize);
    const Outcome outcome = decode(encoding, bytes);
    switch (encoding) {
    case Latin1:
        checkLatin1(outcome, bytes);
        break;
    case Windows1252:
        checkWindows1252(outcome, bytes);
        break;
    case WindowsAnsi:
        checkWindowsAnsi(outcome, bytes);
        break;
    case Utf8:
        require(outcome == outcomeOf([&](UnicodeString32& aString) { aString.assignUtf8(bytes); }),
                "the code for UTF-8 means UTF-8");
        break;
    case PdfTextString:
    case 5:
    case PdfTextStringWithLanguage:
    case 7:
        checkPdfTextString(outcome, bytes, encoding >= PdfTextStringWithLanguage);
        break;
    default:
        require(outcome.failure == "UnicodeString32::assignOctets(): unknown encoding",
                "other codes are refused");
    }
    return 0;
}
