#pragma once

#include "vexil/exceptions.h"
#include "vexil/json/json_text.h"
#include "vexil/json/json_tokenizer.h"
#include "vexil/json/text_area.h"
#include "vexil/numbers/decimal_conversion.h"
#include "vexil/streams.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>

// The scanner behind JsonTokenizer, for the tokenizer and for the parser, which takes many tokens
// at a time. Private to the JSON library.

namespace vexil {

enum CharacterClass : std::uint8_t {
    ClassSpace = 1,      ///< whitespace between tokens
    ClassLetter = 2,     ///< letter of a keyword
    ClassDigit = 4,      ///< decimal digit
    ClassStringStop = 8, ///< may not stand unescaped inside a string
};

constexpr std::array<std::uint8_t, 256> makeCharacterClasses() {
    std::array<std::uint8_t, 256> classes{};
    for (std::size_t c = 0; c < 0x20; ++c) classes[c] = ClassStringStop;
    for (const char c : {'\t', '\n', '\r', ' '}) classes[static_cast<std::size_t>(c)] |= ClassSpace;
    for (std::size_t c = '0'; c <= '9'; ++c) classes[c] = ClassDigit;
    for (std::size_t c = 'a'; c <= 'z'; ++c) classes[c] = ClassLetter;
    classes['"'] = ClassStringStop;
    classes['\\'] = ClassStringStop;
    return classes;
}

constexpr auto characterClasses = makeCharacterClasses();
static_assert(characterClasses['\n'] == (ClassSpace | ClassStringStop));
static_assert(characterClasses['\v'] == ClassStringStop); // not JSON whitespace
static_assert(characterClasses[' '] == ClassSpace);
static_assert(
    [] {
        for (std::size_t c = 0; c < 256; ++c) {
            const bool isStop = (characterClasses[c] & ClassStringStop) != 0;
            if (isPlain(static_cast<unsigned char>(c)) == isStop) return false;
        }
        return true;
    }(),
    "plain runs are what the classes say");
static_assert(characterClasses['E'] == 0 && characterClasses[0x80] == 0);

struct Keyword {
    std::string_view text;
    JsonToken token;
};

constexpr Keyword keywords[] = {
    {"false", JsonToken::False}, {"null", JsonToken::Null}, {"true", JsonToken::True}};

/// The most bytes of a code point in UTF-8.
constexpr std::size_t longestForm = 4;

constexpr int endOfInput = -1;
constexpr int nothingRead = -2;

inline bool hasClass(int aCharacter, CharacterClass aClass) {
    return aCharacter >= 0 &&
           (characterClasses[static_cast<std::size_t>(aCharacter)] & aClass) != 0;
}

constexpr std::array<std::int8_t, 256> makeHexDigitValues() {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (std::int8_t digit = 0; digit < 16; ++digit) {
        const auto index = static_cast<std::size_t>(digit);
        values[static_cast<std::size_t>("0123456789abcdef"[index])] = digit;
        values[static_cast<std::size_t>("0123456789ABCDEF"[index])] = digit;
    }
    return values;
}

constexpr auto hexDigitValues = makeHexDigitValues();

/// The value of a hexadecimal digit of either case, or -1.
inline int hexDigitValue(int aCharacter) {
    return aCharacter < 0 ? -1 : hexDigitValues[static_cast<std::size_t>(aCharacter)];
}

/// The bytes that one-letter escapes stand for; 0 for an escape without a meaning.
constexpr std::array<char, 256> makeEscapedBytes() {
    std::array<char, 256> bytes{};
    for (const auto& [letter, byte] : letterEscapes) bytes[static_cast<std::size_t>(letter)] = byte;
    bytes['/'] = '/'; // read, but never written
    return bytes;
}

constexpr auto escapedBytes = makeEscapedBytes();

/// The current token and where scanning stands.
struct Scan {
    int current = nothingRead; ///< the character behind the token: 0 to 255 or one of the above
    JsonToken token = JsonToken::Invalid;
    std::string_view text; ///< of the token: in the buffer, in the block being read, or constant
    std::string buffer;    ///< reused from token to token; it may be longer than a text in it
    std::int32_t integerValue = 0; ///< of an Integer, else anything
    double floatValue = 0.0;       ///< of a Float, else anything

    /// The text as a string, in the buffer from then on.
    const std::string& bringTextToBuffer() {
        if (text.data() != buffer.data()) buffer.assign(text);
        buffer.resize(text.size());
        text = buffer;
        return buffer;
    }
};

/// The characters of any stream, one read a character. A text that is taken goes to the buffer.
class StreamSource {
public:
    StreamSource(InputStream& aStream, Scan& aScan)
        : mStream(aStream), mBuffer(aScan.buffer), mCurrent(aScan.current) {
        if (mCurrent == nothingRead) advance();
    }

    int current() const { return mCurrent; }

    /// Moves to the next character; the end stays the end.
    int advance() {
        unsigned char byte = 0;
        if (mCurrent != endOfInput) mCurrent = mStream.read(&byte, 1) == 1 ? byte : endOfInput;
        return mCurrent;
    }

    void beginText() { mBuffer.clear(); }
    int take() {
        mBuffer.push_back(static_cast<char>(mCurrent));
        return advance();
    }
    std::string_view getText() const { return mBuffer; }

    /// Copies the current character and those behind it that a string may hold as they are to @p
    /// aNext, the end of the text in the area. Returns the end behind them.
    char* takePlain(TextArea& aArea, char* aNext) {
        for (; mCurrent >= 0 && !hasClass(mCurrent, ClassStringStop); advance()) {
            aNext = aArea.reserve(aNext, 1);
            *aNext++ = static_cast<char>(mCurrent);
        }
        return aNext;
    }
    /// Only a block of memory can be looked at as a whole.
    static bool takeWholeString(std::string_view&, bool&) { return false; }

private:
    InputStream& mStream;
    std::string& mBuffer;
    int mCurrent;
};

/// The same characters in the block of a MemoryInputStream. A text that is taken stays where it is,
/// and a run of plain characters is seen at once. When the source ends, the stream is moved to
/// where single reads would have left it.
class MemorySource {
public:
    /// Whether the current character is the one in front of the stream's position. It is not if
    /// somebody else has moved the stream since.
    static bool isInFront(MemoryInputStream& aStream, int aCurrent) {
        return aCurrent == nothingRead ||
               (aCurrent >= 0 && !aStream.isAtBegin() &&
                static_cast<unsigned char>(aStream.getRemainingData()[-1]) == aCurrent);
    }

    /// The current character must be in front of the position.
    MemorySource(MemoryInputStream& aStream, Scan& aScan)
        : mStream(aStream), mBegin(aStream.getRemainingData()),
          mEnd(mBegin + aStream.getRemainingSize()),
          mCurrent(aScan.current == nothingRead ? mBegin : mBegin - 1), mText(mCurrent) {}
    ~MemorySource() {
        const char* const next = mCurrent == mEnd ? mEnd : mCurrent + 1;
        mStream.skip(static_cast<std::uint32_t>(next - mBegin));
    }
    MemorySource(const MemorySource&) = delete;
    MemorySource& operator=(const MemorySource&) = delete;

    int current() const {
        return mCurrent == mEnd ? endOfInput : static_cast<unsigned char>(*mCurrent);
    }
    int advance() {
        if (mCurrent != mEnd) ++mCurrent;
        return current();
    }

    void beginText() { mText = mCurrent; }
    int take() { return advance(); }
    std::string_view getText() const { return {mText, static_cast<std::size_t>(mCurrent - mText)}; }

    char* takePlain(TextArea& aArea, char* aNext) {
        constexpr std::ptrdiff_t shortRun = 8;
        const char* const run = mCurrent;
        mCurrent = measurePlainRun(run, mEnd).end;
        const std::ptrdiff_t size = mCurrent - run;
        aNext = aArea.reserve(aNext, static_cast<std::size_t>(std::max(size, shortRun)));
        if (size <= shortRun && mEnd - run >= shortRun) {
            std::memcpy(aNext, run, shortRun); // eight bytes take less time than few
        } else {
            std::copy(run, mCurrent, aNext);
        }
        return aNext + size;
    }

    /// Standing behind the quotation mark that begins a string: if all up to the next one is plain,
    /// gives that and stands behind the next one. Otherwise nothing is taken.
    bool takeWholeString(std::string_view& aText, bool& aIsAscii) {
        const PlainRun run = measurePlainRun(mCurrent, mEnd);
        if (run.end == mEnd || *run.end != '"') return false;
        aText = {mCurrent, static_cast<std::size_t>(run.end - mCurrent)};
        aIsAscii = run.isAscii;
        mCurrent = run.end + 1;
        return true;
    }

private:
    MemoryInputStream& mStream;
    const char* mBegin;
    const char* mEnd;
    const char* mCurrent; ///< the current character, or the end
    const char* mText;    ///< where the text being taken began
};

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

struct JsonTokenizer::State {
    State(InputStream& aStream, std::int32_t aFlags)
        : stream(aStream), memory(dynamic_cast<MemoryInputStream*>(&aStream)),
          reportWhitespace((aFlags & ReportWhitespace) != 0) {}

    /// Calls @p aFunction with a scanner over what the stream is and gives its result. Until it is
    /// done nobody else may look at the stream.
    template <class Function>
    auto withScanner(Function aFunction) {
        if (memory != nullptr && MemorySource::isInFront(*memory, scan.current)) {
            MemorySource source(*memory, scan);
            Scanner<MemorySource> scanner(scan, source, reportWhitespace);
            return aFunction(scanner);
        }
        StreamSource source(stream, scan);
        Scanner<StreamSource> scanner(scan, source, reportWhitespace);
        return aFunction(scanner);
    }

    InputStream& stream;
    MemoryInputStream* memory; ///< the stream, if it is exactly of this class
    bool reportWhitespace;
    Scan scan;
};

} // namespace vexil
