// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/exceptions.h"
#include "vexil/json/lexical_tables.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/string_appender.h"
#include "vexil/json/unescaped_runs.h"
#include "vexil/non_copyable.h"
#include "vexil/numbers/decimal_conversion.h"
#include "vexil/unicode_strings.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The scanner of JsonTokenizer, also used by the parser, which scans many tokens in one go. Private
// to the JSON library.

namespace vexil {

/// Maximum number of bytes of a code point in UTF-8.
constexpr std::size_t maxUtf8Size = 4;

/// Scans any number of tokens from a source, with the same result for either source. The scan state
/// and the source must outlive the scanner; the lookahead is stored in the state on destruction.
template <class Source>
class Scanner : private NonCopyable {
public:
    Scanner(ScanState& aScan, Source& aSource, bool aReportWhitespace)
        : mScan(aScan), mSource(aSource), mReportWhitespace(aReportWhitespace) {}
    ~Scanner() { mScan.lookahead = mSource.current(); }

    /// The current token: its kind, its text, and the value if it is a number.
    const ScanState& getScan() const { return mScan; }

    /// Scans the next token and makes it current. If an exception leaves it, the token is Invalid.
    JsonToken next() {
        mScan.token = JsonToken::Invalid;
        mScan.text = {};
        return mScan.token = scanToken();
    }

private:
    JsonToken scanToken() {
        if (hasClass(mSource.current(), ClassSpace)) {
            while (hasClass(mSource.advance(), ClassSpace)) {
            }
            if (mReportWhitespace) return JsonToken::Whitespace;
        }
        switch (mSource.current()) {
        case endOfInput:
            return JsonToken::End;
        case '"':
            return scanString() ? JsonToken::String : JsonToken::Invalid;
        case '[':
            return takeSingle(JsonToken::ArrayBegin, "[");
        case ']':
            return takeSingle(JsonToken::ArrayEnd, "]");
        case '{':
            return takeSingle(JsonToken::ObjectBegin, "{");
        case '}':
            return takeSingle(JsonToken::ObjectEnd, "}");
        case ':':
            return takeSingle(JsonToken::Colon, ":");
        case ',':
            return takeSingle(JsonToken::Comma, ",");
        default:
            return scanNumberOrWord();
        }
    }

    JsonToken takeSingle(JsonToken aToken, std::string_view aText) {
        mScan.text = aText;
        mSource.advance();
        return aToken;
    }

    JsonToken scanNumberOrWord() {
        mSource.beginText();
        const int first = mSource.current();
        if (first == '-' || hasClass(first, ClassDigit)) return scanNumber();
        if (hasClass(first, ClassLetter)) return scanKeyword();
        mSource.take();
        mScan.text = mSource.getText();
        return JsonToken::Invalid;
    }

    JsonToken scanKeyword() {
        while (hasClass(mSource.take(), ClassLetter)) {
        }
        mScan.text = mSource.getText();
        for (const Keyword& keyword : keywords) {
            if (mScan.text == keyword.text) return keyword.token;
        }
        return JsonToken::Invalid;
    }

    JsonToken scanNumber() {
        bool isFloat = false;
        std::uint64_t magnitude = 0; // of the integer part, modulo 2^64
        const bool isNumber =
            scanIntegerPart(magnitude) && scanFraction(isFloat) && scanExponent(isFloat);
        mScan.text = mSource.getText();
        if (!isNumber) return JsonToken::Invalid;
        if (!isFloat && setInteger(magnitude)) return JsonToken::Integer;
        return convertFloat() ? JsonToken::Float : JsonToken::Invalid;
    }

    bool scanIntegerPart(std::uint64_t& aMagnitude) {
        if (mSource.current() == '-') mSource.take();
        if (mSource.current() != '0') return mSource.takeDigits(aMagnitude);
        return !hasClass(mSource.take(), ClassDigit); // no leading zeros
    }

    bool scanFraction(bool& aIsFloat) {
        if (mSource.current() != '.') return true;
        aIsFloat = true;
        mSource.take();
        return takeDigits();
    }

    bool scanExponent(bool& aIsFloat) {
        if (mSource.current() != 'e') return true; // an uppercase E ends the number
        aIsFloat = true;
        const int sign = mSource.take();
        if (sign == '+' || sign == '-') mSource.take();
        return takeDigits();
    }

    /// Takes one or more digits; false if there is none.
    bool takeDigits() {
        std::uint64_t value = 0;
        return mSource.takeDigits(value);
    }

    /// Sets the integer value of the text, a sign or none and the digits of @p aMagnitude; false if
    /// it exceeds 32 bits.
    bool setInteger(std::uint64_t aMagnitude) {
        constexpr std::size_t maxSize = 11; // no longer text fits, as there are no leading zeros
        if (mScan.text.size() > maxSize) return false;
        const auto magnitude = static_cast<std::int64_t>(aMagnitude);
        const std::int64_t value = mScan.text.front() == '-' ? -magnitude : magnitude;
        mScan.integerValue = static_cast<std::int32_t>(value);
        return mScan.integerValue == value;
    }

    bool convertFloat() {
        const char* const textEnd = mScan.text.data() + mScan.text.size();
        const char* end = nullptr;
        errno = 0; // a plugin may have left an error in it
        const double value = strToDouble(mScan.text.data(), textEnd, &end);
        if (errno != 0 || end != textEnd) return false;
        mScan.floatValue = value;
        return true;
    }

    bool scanString() {
        mSource.advance();
        bool isAscii = false;
        if (mSource.takeWholeString(mScan.text, isAscii)) return isValidText(isAscii);
        StringText text(mScan.buffer);
        const bool isComplete = scanStringTo(text);
        mScan.text = text.get();
        return isComplete && isValidText(false);
    }

    /// The decoded content of a string while it is scanned.
    struct StringText {
        explicit StringText(std::string& aBuffer) : appender(aBuffer, 0) {}

        std::string_view get() const {
            return {appender.getBegin(), static_cast<std::size_t>(next - appender.getBegin())};
        }

        StringAppender appender;
        char* next = appender.getBegin(); ///< one past the last character written
        std::uint32_t highSurrogate = 0;  ///< 0: none is pending
    };

    /// Scans a string from the character after its opening quotation mark and moves past the
    /// closing one. Returns false at the first error.
    bool scanStringTo(StringText& aText) {
        for (;;) {
            const int character = mSource.current();
            if (character == endOfInput) return false;
            if (character == '\\') {
                if (!scanEscape(aText)) return false;
            } else if (aText.highSurrogate != 0) {
                return false;
            } else if (character == '"') {
                mSource.advance();
                return true;
            } else if (hasClass(character, ClassStringStop)) {
                return false;
            } else {
                aText.next = mSource.takeUnescaped(aText.appender, aText.next);
            }
        }
    }

    /// Scans an escape from its backslash and moves past it.
    bool scanEscape(StringText& aText) {
        const int letter = mSource.advance();
        if (letter == endOfInput) return false;
        if (letter == 'u') return scanUnicodeEscape(aText);
        if (aText.highSurrogate != 0) return false;
        const char byte = escapedBytes[static_cast<std::size_t>(letter)];
        aText.next = aText.appender.reserve(aText.next, 1);
        *aText.next = byte;
        aText.next += byte != 0 ? 1 : 0; // an unknown escape is dropped, backslash and letter
        mSource.advance();
        return true;
    }

    bool scanUnicodeEscape(StringText& aText) {
        std::uint32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hexDigitValue(mSource.advance());
            if (digit < 0) return false;
            unit = unit << 4 | static_cast<std::uint32_t>(digit);
        }
        if (!takeUnit(unit, aText)) return false;
        mSource.advance();
        return true;
    }

    /// Appends the character of an escaped UTF-16 unit, or keeps a high surrogate pending. Returns
    /// false for an unpaired surrogate.
    static bool takeUnit(std::uint32_t aUnit, StringText& aText) {
        VEXIL_ASSERT(aUnit <= 0xFFFF);
        const bool isLowSurrogate = aUnit >= 0xDC00 && aUnit <= 0xDFFF;
        if (isLowSurrogate != (aText.highSurrogate != 0)) return false;
        if (isLowSurrogate) {
            aUnit = 0x10000 + ((aText.highSurrogate & 0x3FF) << 10 | (aUnit & 0x3FF));
            aText.highSurrogate = 0;
        } else if (aUnit >= 0xD800 && aUnit <= 0xDBFF) {
            aText.highSurrogate = aUnit;
            return true;
        }
        aText.next =
            UnicodeString32::encodeUtf8(aText.appender.reserve(aText.next, maxUtf8Size), aUnit);
        return true;
    }

    /// Whether the text is valid UTF-8. ASCII is; only its length may exceed the limit of Unicode
    /// strings, which is Overflow and not caught here.
    bool isValidText(bool aIsAscii) const {
        if (aIsAscii && mScan.text.size() < shortTextSize) return true;
        try {
            UnicodeString32::checkUtf8(mScan.text.data(), mScan.text.size());
        } catch (const EncodingError&) {
            return false;
        }
        return true;
    }

    ScanState& mScan;
    Source& mSource;
    const bool mReportWhitespace;
};

} // namespace vexil
