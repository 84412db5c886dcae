// SPDX-License-Identifier: MIT
#include "vexil/json/json_writer.h"

#include "vexil/assert.h"
#include "vexil/exceptions.h"
#include "vexil/json/containers.h"
#include "vexil/json/lexical_tables.h"
#include "vexil/json/library_classes.h"
#include "vexil/json/string_appender.h"
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

constexpr char formVerbatim = 0;
constexpr char formUnicode = 'u';

/// Form of each ASCII character inside a string: verbatim, "\u" with four digits, or a backslash
/// and the given letter.
constexpr std::array<char, 128> makeCharacterForms() {
    std::array<char, 128> forms{};
    for (std::size_t c = 0; c < 0x20; ++c) forms[c] = formUnicode;
    for (const auto& [letter, byte] : letterEscapes) forms[static_cast<std::size_t>(byte)] = letter;
    return forms;
}

constexpr auto characterForms = makeCharacterForms();

/// Passes each piece of text to a stream in one call of write().
class StreamSink : public StringAppender {
public:
    /// @p aPiece is the buffer in which each piece is assembled.
    StreamSink(OutputStream& aStream, std::string& aPiece)
        : StringAppender(aPiece, 0), mStream(aStream) {}

    /// Writes the piece that ends at @p aNext and returns the position of the next one. Throws
    /// InvalidArgument "size out of range".
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

/// Writes the pieces directly into the string of a StringOutputStream. On destruction the string
/// ends with the last complete piece.
class StringSink : public StringAppender {
public:
    explicit StringSink(std::string& aTarget)
        : StringAppender(aTarget, aTarget.size()), mCompleteSize(aTarget.size()) {}
    ~StringSink() { cut(mCompleteSize); }

    char* endPiece(char* aNext) {
        mCompleteSize = sizeUpTo(aNext);
        return aNext;
    }

private:
    std::size_t mCompleteSize; ///< of the string up to the last complete piece
};

constexpr char hexDigits[] = "0123456789abcdef";

char* putUnicodeEscape(char* aDest, std::uint32_t aUnit) {
    *aDest++ = '\\';
    *aDest++ = 'u';
    for (int shift = 12; shift >= 0; shift -= 4) *aDest++ = hexDigits[aUnit >> shift & 0xF];
    return aDest;
}

/// Maximum number of bytes that putEscaped() writes.
constexpr std::size_t maxEscapeSize = 12;

/// Writes a character of a string in ASCII and returns one past the last byte written. @p aCode is
/// not a surrogate.
char* putEscaped(char* aDest, std::uint32_t aCode) {
    VEXIL_ASSERT(aCode <= 0x10FFFF && (aCode < 0xD800 || aCode > 0xDFFF));
    if (aCode >= 0x10000) {
        aDest = putUnicodeEscape(aDest, 0xD800 + ((aCode - 0x10000) >> 10));
        return putUnicodeEscape(aDest, 0xDC00 + (aCode & 0x3FF));
    }
    const char form = aCode < characterForms.size() ? characterForms[aCode] : formUnicode;
    if (form == formUnicode) return putUnicodeEscape(aDest, aCode);
    if (form != formVerbatim) *aDest++ = '\\';
    *aDest++ = form == formVerbatim ? static_cast<char>(aCode) : form;
    return aDest;
}

/// Position in a container whose children are being written: the elements of an array, or the name
/// and value of each member of an object in turn.
class ContainerCursor {
public:
    ContainerCursor(const JsonValue& aContainer, bool aIsObject)
        : mContainer(aContainer), mCount(std::uint64_t{aContainer.getSize()} * (aIsObject ? 2 : 1)),
          mIsObject(aIsObject) {
        if (const auto* const container = asLibraryContainer(&aContainer)) {
            mSlots = container->getSlots();
        }
    }

    bool isDone() const { return mNext == mCount; }
    char getClosingBracket() const { return mIsObject ? '}' : ']'; }

    /// The character before the next child; 0 before the first child.
    char getSeparator() const {
        if (mNext == 0) return 0;
        return mIsObject && mNext % 2 != 0 ? ':' : ',';
    }

    const JsonValue& takeNext() {
        VEXIL_ASSERT(!isDone());
        const std::uint64_t next = mNext++;
        if (mSlots != nullptr) {
            VEXIL_ASSERT(asLibraryContainer(&mContainer)->getSlots() == mSlots); // did not grow
            return *mSlots[next];
        }
        const auto index = static_cast<std::uint32_t>(mIsObject ? next / 2 : next);
        return mIsObject && next % 2 == 0 ? *mContainer.getNameAt(index)
                                          : *mContainer.getValueAt(index);
    }

private:
    const JsonValue& mContainer;
    JsonValue* const* mSlots = nullptr; ///< null for a class from outside the library
    std::uint64_t mNext = 0;
    std::uint64_t mCount;
    bool mIsObject;
};

/// Writes one tree with an explicit stack instead of recursion. The operations that write take the
/// position one past the last character written and return the new one.
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
    /// Writes the punctuation between the last value and the next one, and sets @p aValue to the
    /// latter, or to null at the end of the tree.
    char* proceed(char* aNext, const JsonValue*& aValue) {
        while (!mOpen.empty()) {
            ContainerCursor& cursor = mOpen.back();
            if (!cursor.isDone()) {
                if (const char separator = cursor.getSeparator()) {
                    aNext = putPunctuation(aNext, separator);
                }
                aValue = &cursor.takeNext();
                return aNext;
            }
            aNext = putPunctuation(aNext, cursor.getClosingBracket());
            mOpen.pop_back();
        }
        aValue = nullptr;
        return aNext;
    }

    /// Writes a scalar, or the opening bracket of a container whose children are next.
    char* putOne(char* aNext, const JsonValue& aValue) {
        switch (aValue.getType()) {
        case JsonType::Null:
            return putWord(aNext, "null");
        case JsonType::Boolean:
            return putBoolean(aNext, aValue);
        case JsonType::Integer:
            return putInteger(aNext, aValue);
        case JsonType::Float:
            return putFloat(aNext, aValue);
        case JsonType::String:
            return putString(aNext, aValue.getString());
        case JsonType::Array:
            mOpen.emplace_back(aValue, false);
            return putPunctuation(aNext, '[');
        case JsonType::Object:
            mOpen.emplace_back(aValue, true);
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

    // The blank before a bare word is written before the value is read, and the flag is set after
    // the word is written, except that of a float: either step may throw.
    char* putBlank(char* aNext) { return mSpaceNeeded ? putPiece(aNext, " ") : aNext; }

    char* putWord(char* aNext, std::string_view aWord) {
        aNext = putPiece(putBlank(aNext), aWord);
        mSpaceNeeded = true;
        return aNext;
    }

    char* putBoolean(char* aNext, const JsonValue& aValue) {
        aNext = putBlank(aNext);
        aNext = putPiece(aNext, aValue.getBoolean() ? "true" : "false");
        mSpaceNeeded = true;
        return aNext;
    }

    char* putInteger(char* aNext, const JsonValue& aValue) {
        aNext = putBlank(aNext);
        const std::int32_t value = aValue.getInteger();
        aNext = mSink.endPiece(writeInteger(mSink.reserve(aNext, integerTextSize), value));
        mSpaceNeeded = true;
        return aNext;
    }

    char* putFloat(char* aNext, const JsonValue& aValue) {
        aNext = putBlank(aNext);
        mSpaceNeeded = true;
        const double value = aValue.getFloat();
        const FloatText text = writeFloat(mSink.reserve(aNext, floatTextSize), value);
        aNext = mSink.endPiece(text.end);
        return text.looksLikeInteger ? putPiece(aNext, ".0") : aNext;
    }

    char* putString(char* aNext, const std::string& aBytes) {
        const char* const begin = aBytes.data();
        const char* const end = begin + aBytes.size();
        // Copied while it is scanned; if it turns out to be invalid, the copy is not used.
        aNext = mSink.reserve(aNext, aBytes.size() + 2);
        *aNext = '"';
        const UnescapedRun run = copyUnescapedRun(aNext + 1, begin, end);
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

    /// Writes the rest of a string, which is empty or begins with a byte to be escaped. Copies
    /// whole runs of bytes that need no escape, which include those of characters from U+0080.
    char* putRuns(char* aNext, const char* aText, const char* aEnd) {
        while (aText != aEnd) {
            aNext = mSink.reserve(aNext, maxEscapeSize + static_cast<std::size_t>(aEnd - aText));
            aNext = putEscaped(aNext, static_cast<unsigned char>(*aText++));
            const char* const runEnd = copyUnescapedRun(aNext, aText, aEnd).end;
            aNext += runEnd - aText;
            aText = runEnd;
        }
        return aNext;
    }

    char* putAscii(char* aNext, const std::string& aBytes) {
        UnicodeString32 codes;
        codes.assignUtf8(aBytes);
        for (std::uint32_t i = 0; i < codes.getLength(); ++i) {
            aNext = putEscaped(mSink.reserve(aNext, maxEscapeSize), codes.getData()[i]);
        }
        return aNext;
    }

    Sink& mSink;
    const bool mEscapeNonAscii;
    bool& mSpaceNeeded;
    std::vector<ContainerCursor> mOpen;
};

/// Sets a flag during a call of write(), which must not be nested.
class WriteInProgress : private NonCopyable {
public:
    explicit WriteInProgress(bool& aFlag) : mFlag(aFlag) {
        VEXIL_ASSERT(!mFlag);
        mFlag = true;
    }
    ~WriteInProgress() { mFlag = false; }

private:
    bool& mFlag;
};

} // namespace

struct JsonWriter::State {
    void write(const JsonValue& aValue) {
        const WriteInProgress progress(isWriting);
        if (text != nullptr) {
            StringSink sink(text->getTarget());
            TreeWriter(sink, escapeNonAscii, spaceNeeded).write(aValue);
        } else {
            StreamSink sink(stream, piece);
            TreeWriter(sink, escapeNonAscii, spaceNeeded).write(aValue);
        }
    }

    OutputStream& stream;     ///< borrowed
    StringOutputStream* text; ///< the stream if it is of this class, which is final; or null
    bool escapeNonAscii;
    bool spaceNeeded = false; ///< the last piece written was a bare word or a number
    bool isWriting = false;
    std::string piece = {}; ///< reused from piece to piece
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
