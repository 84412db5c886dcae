#include "vexil/json/json_writer.h"

#include "vexil/exceptions.h"
#include "vexil/json/float_text.h"
#include "vexil/json/json_text.h"
#include "vexil/json/json_value_classes.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vexil {

namespace {

constexpr char formPlain = 0;
constexpr char formUnicode = 'u';

/// How an ASCII character is written inside a string: as it is, as "\u" and four digits, or as a
/// backslash and this letter.
constexpr std::array<char, 128> makeCharacterForms() {
    std::array<char, 128> forms{};
    for (std::size_t c = 0; c < 0x20; ++c) forms[c] = formUnicode;
    forms['"'] = '"';
    forms['\\'] = '\\';
    forms['\b'] = 'b';
    forms['\t'] = 't';
    forms['\n'] = 'n';
    forms['\f'] = 'f';
    forms['\r'] = 'r';
    return forms;
}

constexpr auto characterForms = makeCharacterForms();

/// Text on its way to any stream: each piece is one write.
class StreamSink {
public:
    explicit StreamSink(OutputStream& aStream, std::string& aPiece)
        : mStream(aStream), mPiece(aPiece) {
        mPiece.clear(); // a write that failed leaves something behind
    }

    void put(char aCharacter) { mPiece.push_back(aCharacter); }
    void put(const char* aText, std::size_t aSize) { mPiece.append(aText, aSize); }

    void endPiece() {
        if (mPiece.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
            throw InvalidArgument("size out of range");
        }
        mStream.write(mPiece.data(), static_cast<std::int32_t>(mPiece.size()));
        mPiece.clear();
    }

private:
    OutputStream& mStream;
    std::string& mPiece;
};

/// The same text written straight into the string of a StringOutputStream, which is made longer in
/// large steps and cut behind the last whole piece when the sink ends.
class StringSink {
public:
    explicit StringSink(std::string& aTarget)
        : mTarget(aTarget), mBegin(aTarget.size()), mPieceEnd(mBegin) {
        moveTo(mBegin);
    }
    ~StringSink() { mTarget.resize(mPieceEnd); }
    StringSink(const StringSink&) = delete;
    StringSink& operator=(const StringSink&) = delete;

    void put(char aCharacter) {
        if (mNext == mEnd) grow(1);
        *mNext++ = aCharacter;
    }
    void put(const char* aText, std::size_t aSize) {
        if (static_cast<std::size_t>(mEnd - mNext) < aSize) grow(aSize);
        std::memcpy(mNext, aText, aSize);
        mNext += aSize;
    }
    void endPiece() { mPieceEnd = getSize(); }

private:
    std::size_t getSize() const { return static_cast<std::size_t>(mNext - mTarget.data()); }

    void moveTo(std::size_t aSize) {
        mNext = mTarget.data() + aSize;
        mEnd = mTarget.data() + mTarget.size();
    }

    /// By as much as has been written so far at least, so that each byte is filled in advance about
    /// once, however much the string could hold.
    void grow(std::size_t aSize) {
        constexpr std::size_t firstStep = 256;
        const std::size_t size = getSize();
        mTarget.resize(size + std::max({aSize, firstStep, size - mBegin}));
        moveTo(size);
    }

    std::string& mTarget;
    const std::size_t mBegin; ///< the size of what was there before
    std::size_t mPieceEnd;
    char* mNext;
    char* mEnd;
};

template <class Sink>
void putUnicodeEscape(Sink& aSink, std::uint32_t aUnit) {
    constexpr char digits[] = "0123456789abcdef";
    const char escape[] = {'\\',
                           'u',
                           digits[aUnit >> 12],
                           digits[aUnit >> 8 & 0xF],
                           digits[aUnit >> 4 & 0xF],
                           digits[aUnit & 0xF]};
    aSink.put(escape, sizeof escape);
}

/// Puts a character as an all-ASCII text holds it. The code is none of a surrogate.
template <class Sink>
void putEscaped(Sink& aSink, std::uint32_t aCode) {
    if (aCode >= 0x10000) {
        putUnicodeEscape(aSink, 0xD800 + ((aCode - 0x10000) >> 10));
        putUnicodeEscape(aSink, 0xDC00 + (aCode & 0x3FF));
        return;
    }
    const char form = aCode < characterForms.size() ? characterForms[aCode] : formUnicode;
    if (form == formUnicode) {
        putUnicodeEscape(aSink, aCode);
        return;
    }
    if (form != formPlain) aSink.put('\\');
    aSink.put(form == formPlain ? static_cast<char>(aCode) : form);
}

/// A container whose children are being written: the elements of an array, or name and value of
/// each member of an object in turn.
class Level {
public:
    explicit Level(const JsonValue& aContainer, bool aIsObject)
        : mContainer(aContainer), mCount(std::uint64_t{aContainer.getSize()} * (aIsObject ? 2 : 1)),
          mIsObject(aIsObject) {
        if (const auto* const ours = JsonValueContainer::from(&aContainer))
            mSlots = ours->getSlots();
    }

    bool isDone() const { return mNext == mCount; }
    char getEnd() const { return mIsObject ? '}' : ']'; }

    /// What is written in front of the next child; 0 in front of the first.
    char getSeparator() const {
        if (mNext == 0) return 0;
        return mIsObject && mNext % 2 != 0 ? ':' : ',';
    }

    const JsonValue& takeNext() {
        const std::uint64_t next = mNext++;
        if (mSlots != nullptr) return *mSlots[next];
        const auto index = static_cast<std::uint32_t>(mIsObject ? next / 2 : next);
        return mIsObject && next % 2 == 0 ? *mContainer.getNameAt(index)
                                          : *mContainer.getValueAt(index);
    }

private:
    const JsonValue& mContainer;
    JsonValue* const* mSlots = nullptr; ///< of a container of ours
    std::uint64_t mNext = 0;
    std::uint64_t mCount;
    bool mIsObject;
};

/// Writes one tree, with a stack of its own instead of recursion.
template <class Sink>
class TreeWriter {
public:
    TreeWriter(Sink& aSink, bool aEscapeNonAscii, bool& aSpaceNeeded)
        : mSink(aSink), mEscapeNonAscii(aEscapeNonAscii), mSpaceNeeded(aSpaceNeeded) {}

    void write(const JsonValue& aRoot) {
        writeOne(aRoot);
        while (!mLevels.empty()) {
            Level& level = mLevels.back();
            if (level.isDone()) {
                putPunctuation(level.getEnd());
                mLevels.pop_back();
            } else {
                if (const char separator = level.getSeparator()) putPunctuation(separator);
                writeOne(level.takeNext());
            }
        }
    }

private:
    /// Writes a scalar, or the beginning of a container whose children are next.
    void writeOne(const JsonValue& aValue) {
        switch (aValue.getType()) {
        case JsonType::Null:
            return putWord("null");
        case JsonType::Boolean:
            return putWord(aValue.getBoolean() ? "true" : "false");
        case JsonType::Integer:
            return putInteger(aValue.getInteger());
        case JsonType::Float:
            return putFloat(aValue.getFloat());
        case JsonType::String:
            return putString(aValue.getString());
        case JsonType::Array:
            mLevels.emplace_back(aValue, false);
            return putPunctuation('[');
        case JsonType::Object:
            mLevels.emplace_back(aValue, true);
            return putPunctuation('{');
        }
    }

    void putPunctuation(char aCharacter) {
        mSink.put(aCharacter);
        mSink.endPiece();
        mSpaceNeeded = false;
    }

    void putPiece(std::string_view aPiece) {
        mSink.put(aPiece.data(), aPiece.size());
        mSink.endPiece();
    }

    void putWord(std::string_view aWord) {
        if (mSpaceNeeded) putPiece(" ");
        putPiece(aWord);
        mSpaceNeeded = true;
    }

    void putInteger(std::int32_t aValue) {
        std::array<char, 16> area;
        const auto result = std::to_chars(area.data(), area.data() + area.size(), aValue);
        putWord({area.data(), static_cast<std::size_t>(result.ptr - area.data())});
    }

    void putFloat(double aValue) {
        FloatArea area;
        const std::string_view text = formatFloat(aValue, area);
        putWord(text);
        if (text.find_first_of(".e") == std::string_view::npos) putPiece(".0");
    }

    void putString(const std::string& aBytes) {
        const char* const end = aBytes.data() + aBytes.size();
        const PlainRun run = measurePlainRun(aBytes.data(), end);
        const bool isKnownToBeText = run.isAscii && run.end == end && aBytes.size() < shortTextSize;
        if (!isKnownToBeText) UnicodeString32::checkUtf8(aBytes.data(), aBytes.size());
        mSink.put('"');
        if (mEscapeNonAscii && !isKnownToBeText) {
            putAscii(aBytes);
        } else {
            putRuns(aBytes.data(), run.end, end);
        }
        mSink.put('"');
        mSink.endPiece();
        mSpaceNeeded = false;
    }

    /// Copies whole runs of bytes that need no escape; those of characters from U+0080 on need
    /// none.
    void putRuns(const char* aText, const char* aRunEnd, const char* aEnd) {
        mSink.put(aText, static_cast<std::size_t>(aRunEnd - aText));
        while (aRunEnd != aEnd) {
            putEscaped(mSink, static_cast<unsigned char>(*aRunEnd));
            const char* const run = aRunEnd + 1;
            aRunEnd = measurePlainRun(run, aEnd).end;
            mSink.put(run, static_cast<std::size_t>(aRunEnd - run));
        }
    }

    void putAscii(const std::string& aBytes) {
        UnicodeString32 codes;
        codes.assignUtf8(aBytes);
        std::for_each_n(codes.getData(), codes.getLength(),
                        [this](std::uint32_t aCode) { putEscaped(mSink, aCode); });
    }

    Sink& mSink;
    const bool mEscapeNonAscii;
    bool& mSpaceNeeded;
    std::vector<Level> mLevels;
};

} // namespace

struct JsonWriter::State {
    void write(const JsonValue& aValue) {
        if (text != nullptr) {
            StringSink sink(text->getTarget());
            TreeWriter(sink, escapeNonAscii, spaceNeeded).write(aValue);
        } else {
            StreamSink sink(stream, piece);
            TreeWriter(sink, escapeNonAscii, spaceNeeded).write(aValue);
        }
    }

    OutputStream& stream;
    StringOutputStream* text; ///< the stream, if it is exactly of this class
    bool escapeNonAscii;
    bool spaceNeeded = false; ///< the last piece was a bare word or a number
    std::string piece = {};   ///< reused from piece to piece
};

JsonWriter::JsonWriter(OutputStream& aStream, std::int32_t aFlags) {
    if (aFlags != 0 && aFlags != EscapeNonAscii) {
        throw InvalidArgument("JsonWriter: invalid argument aFlags");
    }
    mState.reset(
        new State{aStream, dynamic_cast<StringOutputStream*>(&aStream), aFlags == EscapeNonAscii});
}

JsonWriter::~JsonWriter() = default;

void JsonWriter::write(const JsonValue& aValue) {
    mState->write(aValue);
}

} // namespace vexil
