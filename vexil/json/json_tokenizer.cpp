#include "vexil/json/json_tokenizer.h"

#include "vexil/exceptions.h"
#include "vexil/json/decimal_conversion.h"
#include "vexil/unicode_strings.h"

#include <array>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>

namespace vexil {

namespace {

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
static_assert(characterClasses['E'] == 0 && characterClasses[0x80] == 0);

struct Keyword {
    std::string_view text;
    JsonToken token;
};

constexpr Keyword keywords[] = {
    {"false", JsonToken::False}, {"null", JsonToken::Null}, {"true", JsonToken::True}};

constexpr int endOfInput = -1;
constexpr int nothingRead = -2;

bool hasClass(int aCharacter, CharacterClass aClass) {
    return aCharacter >= 0 &&
           (characterClasses[static_cast<std::size_t>(aCharacter)] & aClass) != 0;
}

/// The value of a hexadecimal digit of either case, or -1.
int hexDigitValue(int aCharacter) {
    if (aCharacter >= '0' && aCharacter <= '9') return aCharacter - '0';
    if (aCharacter >= 'A' && aCharacter <= 'F') return aCharacter - 'A' + 10;
    if (aCharacter >= 'a' && aCharacter <= 'f') return aCharacter - 'a' + 10;
    return -1;
}

/// The byte that a one-letter escape stands for; -1 for an escape without a meaning.
int escapedByte(int aLetter) {
    switch (aLetter) {
    case '"':
    case '\\':
    case '/':
        return aLetter;
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return -1;
    }
}

/// The current token and where scanning stands.
struct Scan {
    int current = nothingRead; ///< the character behind the token: 0 to 255 or one of the above
    JsonToken token = JsonToken::Invalid;
    std::string_view text; ///< of the token: in the buffer, in the block being read, or constant
    std::string buffer;    ///< reused from token to token
    std::int32_t integerValue = 0;
    double floatValue = 0.0;
};

/// Characters of any stream, one read a character.
class StreamSource {
public:
    StreamSource(InputStream& aStream, int aCurrent) : mStream(aStream), mCurrent(aCurrent) {}

    int current() const { return mCurrent; }

    /// Reads the next character; the end stays the end.
    int advance() {
        unsigned char byte = 0;
        if (mCurrent != endOfInput) mCurrent = mStream.read(&byte, 1) == 1 ? byte : endOfInput;
        return mCurrent;
    }

    void skipSpace() {
        while (hasClass(mCurrent, ClassSpace)) advance();
    }
    void takeDigits(std::string& aText) {
        while (hasClass(mCurrent, ClassDigit)) take(aText);
    }
    /// Takes the current character and those behind it that a string may hold as they are.
    void takePlain(std::string& aText) {
        while (mCurrent >= 0 && !hasClass(mCurrent, ClassStringStop)) take(aText);
    }

    /// Only a block of memory can be looked at as a whole.
    static bool takeWholeString(std::string_view&, bool&) { return false; }

private:
    void take(std::string& aText) {
        aText.push_back(static_cast<char>(mCurrent));
        advance();
    }

    InputStream& mStream;
    int mCurrent;
};

/// A run of bytes that a string may hold as they are.
struct PlainRun {
    const char* end;
    bool isAscii;
};

/// Measures the plain run at the beginning of a text.
PlainRun measurePlainRun(const char* aText, const char* aEnd) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highBits = ones * 0x80;
    std::uint64_t seen = 0;
    for (std::uint64_t word = 0; aEnd - aText >= 8; aText += 8, seen |= word) {
        std::memcpy(&word, aText, 8);
        // Each term has the high bit of a byte set that is below 0x20, a quotation mark, a
        // backslash; above the first such byte a borrow may set others.
        const std::uint64_t quote = word ^ (ones * '"');
        const std::uint64_t backslash = word ^ (ones * '\\');
        const std::uint64_t stops = ((word - ones * 0x20) & ~word) | ((quote - ones) & ~quote) |
                                    ((backslash - ones) & ~backslash);
        if ((stops & highBits) == 0) continue;
        if constexpr (std::endian::native == std::endian::little) {
            const int before = std::countr_zero(stops & highBits) & ~7; // bits of the bytes before
            seen |= word & ((std::uint64_t{1} << before) - 1);
            return {aText + before / 8, (seen & highBits) == 0};
        }
        break;
    }
    for (; aText != aEnd; ++aText) {
        const auto byte = static_cast<unsigned char>(*aText);
        if (hasClass(byte, ClassStringStop)) break;
        seen |= byte;
    }
    return {aText, (seen & highBits) == 0};
}

/// The same characters out of a block of memory, whole runs at once. The stream's position follows
/// when the source ends, so behind each token it is where single reads would have left it.
class MemorySource {
public:
    MemorySource(MemoryInputStream& aStream, int aCurrent)
        : mStream(aStream), mBegin(aStream.getRemainingData()), mNext(mBegin),
          mEnd(mBegin + aStream.getRemainingSize()), mCurrent(aCurrent) {}
    ~MemorySource() { mStream.skip(static_cast<std::uint32_t>(mNext - mBegin)); }
    MemorySource(const MemorySource&) = delete;
    MemorySource& operator=(const MemorySource&) = delete;

    int current() const { return mCurrent; }

    int advance() {
        if (mCurrent == endOfInput || mNext == mEnd) return mCurrent = endOfInput;
        return mCurrent = static_cast<unsigned char>(*mNext++);
    }

    void skipSpace() {
        while (hasClass(mCurrent, ClassSpace)) advance();
    }
    void takeDigits(std::string& aText) {
        if (!hasClass(mCurrent, ClassDigit)) return;
        const char* end = mNext;
        while (end != mEnd && hasClass(static_cast<unsigned char>(*end), ClassDigit)) ++end;
        takeUntil(end, aText);
    }
    void takePlain(std::string& aText) {
        if (mCurrent < 0 || hasClass(mCurrent, ClassStringStop)) return;
        takeUntil(measurePlainRun(mNext, mEnd).end, aText);
    }

    /// Standing on the quotation mark that begins a string: if all up to the next one is plain,
    /// gives that and stands behind it. Otherwise nothing is taken.
    bool takeWholeString(std::string_view& aText, bool& aIsAscii) {
        const PlainRun run = measurePlainRun(mNext, mEnd);
        if (run.end == mEnd || *run.end != '"') return false;
        aText = {mNext, static_cast<std::size_t>(run.end - mNext)};
        aIsAscii = run.isAscii;
        mNext = run.end + 1;
        advance();
        return true;
    }

private:
    void takeUntil(const char* aEnd, std::string& aText) {
        // The look-ahead of the token before stands in front of the block.
        const bool isInBlock = mNext != mBegin;
        if (!isInBlock) aText.push_back(static_cast<char>(mCurrent));
        const char* const run = isInBlock ? mNext - 1 : mNext;
        aText.append(run, static_cast<std::size_t>(aEnd - run));
        mNext = aEnd;
        advance();
    }

    MemoryInputStream& mStream;
    const char* mBegin;
    const char* mNext;
    const char* mEnd;
    int mCurrent;
};

/// The text of a token of one character, as a view of a constant.
std::string_view textOf(JsonToken aToken) {
    constexpr std::string_view characters = " [{]}:,"; // at the index of their kind
    return characters.substr(static_cast<std::size_t>(aToken), 1);
}

/// Scans one token. What it does is the same over either source.
template <class Source>
class Scanner {
public:
    Scanner(Scan& aScan, Source& aSource) : mScan(aScan), mSource(aSource) {}

    JsonToken scanToken(bool aReportWhitespace) {
        if (mSource.current() == nothingRead) mSource.advance();
        if (hasClass(mSource.current(), ClassSpace)) {
            mSource.skipSpace();
            if (aReportWhitespace) return JsonToken::Whitespace;
        }
        switch (mSource.current()) {
        case endOfInput:
            return JsonToken::End;
        case '"':
            return scanString() ? JsonToken::String : JsonToken::Invalid;
        case '[':
            return takeSingle(JsonToken::ArrayBegin);
        case ']':
            return takeSingle(JsonToken::ArrayEnd);
        case '{':
            return takeSingle(JsonToken::ObjectBegin);
        case '}':
            return takeSingle(JsonToken::ObjectEnd);
        case ':':
            return takeSingle(JsonToken::Colon);
        case ',':
            return takeSingle(JsonToken::Comma);
        default:
            return scanInBuffer();
        }
    }

private:
    JsonToken takeSingle(JsonToken aToken) {
        mScan.text = textOf(aToken);
        mSource.advance();
        return aToken;
    }

    /// Scans a number, a keyword or a stray character.
    JsonToken scanInBuffer() {
        mScan.buffer.clear();
        const JsonToken token = scanNumberOrWord();
        mScan.text = mScan.buffer;
        return token;
    }

    JsonToken scanNumberOrWord() {
        const int first = mSource.current();
        if (first == '-' || hasClass(first, ClassDigit)) return scanNumber();
        if (hasClass(first, ClassLetter)) return scanKeyword();
        take();
        return JsonToken::Invalid;
    }

    int take() {
        mScan.buffer.push_back(static_cast<char>(mSource.current()));
        return mSource.advance();
    }

    JsonToken scanKeyword() {
        while (hasClass(mSource.current(), ClassLetter)) take();
        for (const Keyword& keyword : keywords) {
            if (mScan.buffer == keyword.text) return keyword.token;
        }
        return JsonToken::Invalid;
    }

    JsonToken scanNumber() {
        bool isFloat = false;
        if (!scanIntegerPart() || !scanFraction(isFloat) || !scanExponent(isFloat)) {
            return JsonToken::Invalid;
        }
        if (!isFloat) {
            const char* const text = mScan.buffer.data();
            const auto result =
                std::from_chars(text, text + mScan.buffer.size(), mScan.integerValue);
            if (result.ec == std::errc()) return JsonToken::Integer;
        }
        return convertFloat() ? JsonToken::Float : JsonToken::Invalid;
    }

    bool scanIntegerPart() {
        if (mSource.current() == '-') take();
        if (mSource.current() != '0') return takeDigits();
        return !hasClass(take(), ClassDigit); // no leading zeros
    }

    bool scanFraction(bool& aIsFloat) {
        if (mSource.current() != '.') return true;
        aIsFloat = true;
        take();
        return takeDigits();
    }

    bool scanExponent(bool& aIsFloat) {
        if (mSource.current() != 'e') return true; // an uppercase E ends the number
        aIsFloat = true;
        const int sign = take();
        if (sign == '+' || sign == '-') take();
        return takeDigits();
    }

    /// Takes one digit or more; false if there is none.
    bool takeDigits() {
        if (!hasClass(mSource.current(), ClassDigit)) return false;
        mSource.takeDigits(mScan.buffer);
        return true;
    }

    bool convertFloat() {
        const char* end = nullptr;
        errno = 0; // a plugin may have left an error there
        const double value = strToDouble(mScan.buffer.c_str(), &end);
        if (errno != 0 || end != mScan.buffer.data() + mScan.buffer.size()) return false;
        mScan.floatValue = value;
        return true;
    }

    bool scanString() {
        bool isAscii = false;
        if (mSource.takeWholeString(mScan.text, isAscii)) return isText(isAscii);
        mScan.buffer.clear();
        const bool isComplete = scanStringInBuffer();
        mScan.text = mScan.buffer;
        return isComplete && isText(false);
    }

    /// Scans from the opening quotation mark on and stands behind the closing one.
    bool scanStringInBuffer() {
        int character = mSource.advance();
        std::uint32_t highSurrogate = 0; // 0: none is pending
        for (;;) {
            if (character == endOfInput) return false;
            if (character == '\\') {
                if (!scanEscape(highSurrogate)) return false;
            } else if (highSurrogate != 0) {
                return false;
            } else if (character == '"') {
                mSource.advance();
                return true;
            } else if (hasClass(character, ClassStringStop)) {
                return false;
            } else {
                mSource.takePlain(mScan.buffer);
            }
            character = mSource.current();
        }
    }

    /// Scans an escape from its backslash on and stands behind it.
    bool scanEscape(std::uint32_t& aHighSurrogate) {
        const int letter = mSource.advance();
        if (letter == endOfInput) return false;
        if (letter == 'u') return scanUnicodeEscape(aHighSurrogate);
        if (aHighSurrogate != 0) return false;
        const int byte = escapedByte(letter);
        if (byte >= 0) mScan.buffer.push_back(static_cast<char>(byte));
        mSource.advance(); // an unknown escape is dropped, with the one byte behind its backslash
        return true;
    }

    bool scanUnicodeEscape(std::uint32_t& aHighSurrogate) {
        std::uint32_t unit = 0;
        for (int i = 0; i < 4; ++i) {
            const int digit = hexDigitValue(mSource.advance());
            if (digit < 0) return false;
            unit = unit << 4 | static_cast<std::uint32_t>(digit);
        }
        if (!takeUnit(unit, aHighSurrogate)) return false;
        mSource.advance();
        return true;
    }

    /// Appends the character of an escaped UTF-16 unit, or keeps a high surrogate pending.
    bool takeUnit(std::uint32_t aUnit, std::uint32_t& aHighSurrogate) {
        const bool isLowSurrogate = aUnit >= 0xDC00 && aUnit <= 0xDFFF;
        if (isLowSurrogate != (aHighSurrogate != 0)) return false;
        if (isLowSurrogate) {
            aUnit = 0x10000 + ((aHighSurrogate & 0x3FF) << 10 | (aUnit & 0x3FF));
            aHighSurrogate = 0;
        } else if (aUnit >= 0xD800 && aUnit <= 0xDBFF) {
            aHighSurrogate = aUnit;
            return true;
        }
        UnicodeString32::appendUtf8(mScan.buffer, aUnit);
        return true;
    }

    /// Whether the text is valid UTF-8; plain ASCII is, and only its length is left to be judged.
    bool isText(bool aIsAscii) const {
        if (aIsAscii && mScan.text.size() < 0x1000000) return true;
        try {
            UnicodeString32::checkUtf8(mScan.text.data(), mScan.text.size());
        } catch (const EncodingError&) {
            return false;
        }
        return true;
    }

    Scan& mScan;
    Source& mSource;
};

} // namespace

struct JsonTokenizer::State {
    State(InputStream& aStream, std::int32_t aFlags)
        : stream(aStream), memory(dynamic_cast<MemoryInputStream*>(&aStream)),
          reportWhitespace((aFlags & ReportWhitespace) != 0) {}

    template <class Source>
    void scanFrom(Source aSource) {
        scan.token = Scanner<Source>(scan, aSource).scanToken(reportWhitespace);
        scan.current = aSource.current();
    }

    InputStream& stream;
    MemoryInputStream* memory; ///< the stream, if it is exactly of this class
    bool reportWhitespace;
    Scan scan;
};

JsonTokenizer::JsonTokenizer(InputStream& aStream, std::int32_t aFlags)
    : mState(std::make_unique<State>(aStream, aFlags)) {
}

JsonTokenizer::~JsonTokenizer() = default;

JsonToken JsonTokenizer::nextToken() {
    Scan& scan = mState->scan;
    scan.token = JsonToken::Invalid;
    scan.text = {};
    scan.integerValue = 0;
    scan.floatValue = 0.0;
    if (mState->memory != nullptr) {
        mState->scanFrom(MemorySource(*mState->memory, scan.current));
    } else {
        mState->scanFrom(StreamSource(mState->stream, scan.current));
    }
    return scan.token;
}

JsonToken JsonTokenizer::getToken() const {
    return mState->scan.token;
}
std::int32_t JsonTokenizer::getIntegerValue() const {
    return mState->scan.integerValue;
}
double JsonTokenizer::getFloatValue() const {
    return mState->scan.floatValue;
}
std::string_view JsonTokenizer::getTextView() const {
    return mState->scan.text;
}

const std::string& JsonTokenizer::getText() const {
    Scan& scan = mState->scan;
    if (scan.text.data() != scan.buffer.data()) {
        scan.buffer.assign(scan.text);
        scan.text = scan.buffer;
    }
    return scan.buffer;
}

} // namespace vexil
