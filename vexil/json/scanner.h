#pragma once

#include "vexil/exceptions.h"
#include "vexil/json/lexical_tables.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/text_area.h"
#include "vexil/json/unescaped_runs.h"
#include "vexil/numbers/decimal_conversion.h"
#include "vexil/unicode_strings.h"

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

// The scanner behind JsonTokenizer, for the tokenizer and for the parser, which takes many tokens

namespace vexil {

/// The most bytes of a code point in UTF-8.
constexpr std::size_t longestForm = 4;

/// Scans tokens, any number of them. What it does is the same over either source.
template <class Source>
class Scanner {
public:
    Scanner(Scan& aScan, Source& aSource, bool aReportWhitespace)
        : mScan(aScan), mSource(aSource), mReportWhitespace(aReportWhitespace) {}
    ~Scanner() { mScan.current = mSource.current(); }
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// The current token, of which the kind, the text and the value of the kind are set.
    const Scan& getScan() const { return mScan; }

    JsonToken next() {
        mScan.token = JsonToken::Invalid; // that is what is left where the stream throws
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
        const bool isNumber = scanIntegerPart() && scanFraction(isFloat) && scanExponent(isFloat);
        mScan.text = mSource.getText();
        if (!isNumber) return JsonToken::Invalid;
        if (!isFloat && convertInteger()) return JsonToken::Integer;
        return convertFloat() ? JsonToken::Float : JsonToken::Invalid;
    }

    bool scanIntegerPart() {
        if (mSource.current() == '-') mSource.take();
        if (mSource.current() != '0') return takeDigits();
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

    /// Takes one digit or more; false if there is none.
    bool takeDigits() {
        if (!hasClass(mSource.current(), ClassDigit)) return false;
        while (hasClass(mSource.take(), ClassDigit)) {
        }
        return true;
    }

    /// Sets the integer value from the text, a sign and digits; false if 32 bits do not hold it.
    bool convertInteger() {
        const bool isNegative = mScan.text.front() == '-';
        const std::string_view digits = mScan.text.substr(isNegative ? 1 : 0);
        if (digits.size() > 10) return false; // no leading zeros, so this is too much
        std::int64_t value = 0;
        for (const char digit : digits) value = value * 10 + (digit - '0');
        if (isNegative) value = -value;
        mScan.integerValue = static_cast<std::int32_t>(value);
        return mScan.integerValue == value;
    }

    bool convertFloat() {
        const std::string& text = mScan.bringTextToBuffer();
        const char* end = nullptr;
        errno = 0; // a plugin may have left an error there
        const double value = strToDouble(text.c_str(), &end);
        if (errno != 0 || end != text.c_str() + text.size()) return false;
        mScan.floatValue = value;
        return true;
    }

    bool scanString() {
        mSource.advance();
        bool isAscii = false;
        if (mSource.takeWholeString(mScan.text, isAscii)) return isText(isAscii);
        StringText text{TextArea(mScan.buffer, 0)};
        const bool isComplete = scanStringInArea(text);
        mScan.text = text.get();
        return isComplete && isText(false);
    }

    /// A string on its way to an area.
    struct StringText {
        TextArea area;
        char* next = area.getBegin();
        std::uint32_t highSurrogate = 0; ///< 0: none is pending

        std::string_view get() const {
            return {area.getBegin(), static_cast<std::size_t>(next - area.getBegin())};
        }
    };

    /// Scans what is behind the opening quotation mark and stands behind the closing one.
    bool scanStringInArea(StringText& aText) {
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
                aText.next = mSource.takePlain(aText.area, aText.next);
            }
        }
    }

    /// Scans an escape from its backslash on and stands behind it.
    bool scanEscape(StringText& aText) {
        const int letter = mSource.advance();
        if (letter == endOfInput) return false;
        if (letter == 'u') return scanUnicodeEscape(aText);
        if (aText.highSurrogate != 0) return false;
        const char byte = escapedBytes[static_cast<std::size_t>(letter)];
        aText.next = aText.area.reserve(aText.next, 1);
        *aText.next = byte;
        aText.next += byte != 0 ? 1 : 0;
        mSource.advance(); // an unknown escape is dropped, with the one byte behind its backslash
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

    /// Appends the character of an escaped UTF-16 unit, or keeps a high surrogate pending.
    static bool takeUnit(std::uint32_t aUnit, StringText& aText) {
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
            UnicodeString32::encodeUtf8(aText.area.reserve(aText.next, longestForm), aUnit);
        return true;
    }

    /// Whether the text is valid UTF-8. ASCII is, and of that only the length is left to be judged.
    bool isText(bool aIsAscii) const {
        if (aIsAscii && mScan.text.size() < shortTextSize) return true;
        try {
            UnicodeString32::checkUtf8(mScan.text.data(), mScan.text.size());
        } catch (const EncodingError&) {
            return false;
        }
        return true;
    }

    Scan& mScan;
    Source& mSource;
    const bool mReportWhitespace;
};

} // namespace vexil
