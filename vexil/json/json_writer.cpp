#include "vexil/json/json_writer.h"

#include "vexil/exceptions.h"
#include "vexil/json/containers.h"
#include "vexil/json/lexical_tables.h"
#include "vexil/json/text_area.h"
#include "vexil/json/unescaped_runs.h"
#include "vexil/numbers/number_text.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
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
    for (const auto& [letter, byte] : letterEscapes) forms[static_cast<std::size_t>(byte)] = letter;
    return forms;
}

constexpr auto characterForms = makeCharacterForms();

/// Text on its way to any stream: each piece is one write.
class StreamSink : public TextArea {
public:
    StreamSink(OutputStream& aStream, std::string& aPiece)
        : TextArea(aPiece, 0), mStream(aStream) {}

    /// Takes the piece that ends at @p aNext and returns the place of the next one.
    char* endPiece(const char* aNext) {
        char* const begin = getBegin();
        const std::ptrdiff_t size = aNext - begin;
        if (size > std::numeric_limits<std::int32_t>::max()) {
            throw InvalidArgument("size out of range");
        }
        mStream.write(begin, static_cast<std::int32_t>(size));
        return begin;
    }

private:
    OutputStream& mStream;
};

/// The same text written straight into the string of a StringOutputStream, which is cut behind the
/// last whole piece when the sink ends.
class StringSink : public TextArea {
public:
    explicit StringSink(std::string& aTarget)
        : TextArea(aTarget, aTarget.size()), mWholePieces(aTarget.size()) {}
    ~StringSink() { cut(mWholePieces); }

    char* endPiece(char* aNext) {
        mWholePieces = sizeUpTo(aNext);
        return aNext;
    }

private:
    std::size_t mWholePieces; ///< the size up to their end
};

constexpr char hexDigits[] = "0123456789abcdef";

char* putUnicodeEscape(char* aDest, std::uint32_t aUnit) {
    *aDest++ = '\\';
    *aDest++ = 'u';
    for (int shift = 12; shift >= 0; shift -= 4) *aDest++ = hexDigits[aUnit >> shift & 0xF];
    return aDest;
}

/// The most bytes that putEscaped() writes.
constexpr std::size_t longestEscape = 12;

/// Writes a character as an all-ASCII text holds it and returns the place behind it. The code is
/// none of a surrogate.
char* putEscaped(char* aDest, std::uint32_t aCode) {
    if (aCode >= 0x10000) {
        aDest = putUnicodeEscape(aDest, 0xD800 + ((aCode - 0x10000) >> 10));
        return putUnicodeEscape(aDest, 0xDC00 + (aCode & 0x3FF));
    }
    const char form = aCode < characterForms.size() ? characterForms[aCode] : formUnicode;
    if (form == formUnicode) return putUnicodeEscape(aDest, aCode);
    if (form != formPlain) *aDest++ = '\\';
    *aDest++ = form == formPlain ? static_cast<char>(aCode) : form;
    return aDest;
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

/// Writes one tree, with a stack of its own instead of recursion. What writes something gets the
/// place behind the text so far and returns the place behind its own.
template <class Sink>
class TreeWriter {
public:
    TreeWriter(Sink& aSink, bool aEscapeNonAscii, bool& aSpaceNeeded)
        : mSink(aSink), mEscapeNonAscii(aEscapeNonAscii), mSpaceNeeded(aSpaceNeeded) {}

    void write(const JsonValue& aRoot) {
        char* next = mSink.getBegin();
        for (const JsonValue* value = &aRoot; value != nullptr;) {
            next = putOne(next, *value);
            next = proceed(next, value);
        }
    }

private:
    /// Writes what comes between the last value and the next one, which it finds; null at the end
    /// of the tree.
    char* proceed(char* aNext, const JsonValue*& aValue) {
        while (!mLevels.empty()) {
            Level& level = mLevels.back();
            if (!level.isDone()) {
                if (const char separator = level.getSeparator()) {
                    aNext = putPunctuation(aNext, separator);
                }
                aValue = &level.takeNext();
                return aNext;
            }
            aNext = putPunctuation(aNext, level.getEnd());
            mLevels.pop_back();
        }
        aValue = nullptr;
        return aNext;
    }

    /// Writes a scalar, or the beginning of a container whose children are next.
    char* putOne(char* aNext, const JsonValue& aValue) {
        switch (aValue.getType()) {
        case JsonType::Null:
            return putWord(aNext, "null");
        case JsonType::Boolean:
            return putWord(aNext, aValue.getBoolean() ? "true" : "false");
        case JsonType::Integer:
            return putInteger(aNext, aValue.getInteger());
        case JsonType::Float:
            return putFloat(aNext, aValue.getFloat());
        case JsonType::String:
            return putString(aNext, aValue.getString());
        case JsonType::Array:
            mLevels.emplace_back(aValue, false);
            return putPunctuation(aNext, '[');
        case JsonType::Object:
            mLevels.emplace_back(aValue, true);
            return putPunctuation(aNext, '{');
        }
        return aNext;
    }

    char* putPunctuation(char* aNext, char aCharacter) {
        aNext = mSink.reserve(aNext, 1);
        *aNext = aCharacter;
        aNext = mSink.endPiece(aNext + 1);
        mSpaceNeeded = false;
        return aNext;
    }

    char* putPiece(char* aNext, std::string_view aPiece) {
        aNext = mSink.reserve(aNext, aPiece.size());
        return mSink.endPiece(std::copy(aPiece.begin(), aPiece.end(), aNext));
    }

    char* beginWord(char* aNext) {
        if (mSpaceNeeded) aNext = putPiece(aNext, " ");
        mSpaceNeeded = true;
        return aNext;
    }

    char* putWord(char* aNext, std::string_view aWord) { return putPiece(beginWord(aNext), aWord); }

    char* putInteger(char* aNext, std::int32_t aValue) {
        aNext = mSink.reserve(beginWord(aNext), integerTextSize);
        return mSink.endPiece(writeInteger(aNext, aValue));
    }

    char* putFloat(char* aNext, double aValue) {
        aNext = mSink.reserve(beginWord(aNext), floatTextSize);
        const FloatText text = writeFloat(aNext, aValue);
        aNext = mSink.endPiece(text.end);
        return text.looksLikeInteger ? putPiece(aNext, ".0") : aNext;
    }

    char* putString(char* aNext, const std::string& aBytes) {
        const char* const begin = aBytes.data();
        const char* const end = begin + aBytes.size();
        // Copied while it is looked at; what turns out to be no text is never taken.
        aNext = mSink.reserve(aNext, aBytes.size() + 2);
        *aNext = '"';
        const PlainRun run = copyPlainRun(aNext + 1, begin, end);
        if (run.end == end && run.isAscii && aBytes.size() < shortTextSize) {
            aNext += aBytes.size() + 1;
        } else {
            UnicodeString32::checkUtf8(begin, aBytes.size());
            aNext = mEscapeNonAscii ? putAscii(aNext + 1, aBytes)
                                    : putRuns(aNext + 1 + (run.end - begin), run.end, end);
        }
        aNext = mSink.reserve(aNext, 1);
        *aNext = '"';
        aNext = mSink.endPiece(aNext + 1);
        mSpaceNeeded = false;
        return aNext;
    }

    /// Writes the rest of a string, from a byte to be escaped on, if there is any: copies whole
    /// runs of bytes that need no escape; those of characters from U+0080 on need none.
    char* putRuns(char* aNext, const char* aText, const char* aEnd) {
        while (aText != aEnd) {
            aNext = mSink.reserve(aNext, longestEscape + static_cast<std::size_t>(aEnd - aText));
            aNext = putEscaped(aNext, static_cast<unsigned char>(*aText++));
            const char* const runEnd = copyPlainRun(aNext, aText, aEnd).end;
            aNext += runEnd - aText;
            aText = runEnd;
        }
        return aNext;
    }

    char* putAscii(char* aNext, const std::string& aBytes) {
        UnicodeString32 codes;
        codes.assignUtf8(aBytes);
        for (std::uint32_t i = 0; i < codes.getLength(); ++i) {
            aNext = putEscaped(mSink.reserve(aNext, longestEscape), codes.getData()[i]);
        }
        return aNext;
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

std::string writeJsonText(const JsonValue& aValue) {
    std::string text;
    StringOutputStream stream(&text);
    JsonWriter(stream, 0).write(aValue);
    return text;
}

} // namespace vexil
