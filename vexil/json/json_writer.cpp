#include "vexil/json/json_writer.h"

#include "vexil/exceptions.h"
#include "vexil/json/float_text.h"
#include "vexil/json/json_text.h"
#include "vexil/unicode_strings.h"

#include <algorithm>
#include <array>
#include <charconv>
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

void appendUnicodeEscape(std::string& aText, std::uint32_t aUnit) {
    constexpr char digits[] = "0123456789abcdef";
    const char escape[] = {'\\',
                           'u',
                           digits[aUnit >> 12],
                           digits[aUnit >> 8 & 0xF],
                           digits[aUnit >> 4 & 0xF],
                           digits[aUnit & 0xF]};
    aText.append(escape, sizeof escape);
}

/// Appends a character as an all-ASCII text holds it. The code is none of a surrogate.
void appendEscape(std::string& aText, std::uint32_t aCode) {
    if (aCode >= 0x10000) {
        appendUnicodeEscape(aText, 0xD800 + ((aCode - 0x10000) >> 10));
        appendUnicodeEscape(aText, 0xDC00 + (aCode & 0x3FF));
        return;
    }
    const char form = aCode < characterForms.size() ? characterForms[aCode] : formUnicode;
    if (form == formUnicode) {
        appendUnicodeEscape(aText, aCode);
        return;
    }
    if (form != formPlain) aText.push_back('\\');
    aText.push_back(form == formPlain ? static_cast<char>(aCode) : form);
}

/// Appends the quoted text of valid UTF-8, whose first plain run ends at @p aRunEnd. Runs of bytes
/// that need no escape are copied whole; those of characters from U+0080 on need none.
void appendQuoted(std::string& aText, const std::string& aBytes, const char* aRunEnd) {
    const char* run = aBytes.data();
    const char* const end = run + aBytes.size();
    aText.push_back('"');
    aText.append(run, aRunEnd);
    while (aRunEnd != end) {
        appendEscape(aText, static_cast<unsigned char>(*aRunEnd));
        run = aRunEnd + 1;
        aRunEnd = measurePlainRun(run, end).end;
        aText.append(run, aRunEnd);
    }
    aText.push_back('"');
}

/// The same with an escape for every character from U+0080 on.
void appendQuotedAscii(std::string& aText, const std::string& aBytes) {
    UnicodeString32 codes;
    codes.assignUtf8(aBytes);
    aText.push_back('"');
    const std::uint32_t* const data = codes.getData();
    std::for_each_n(data, codes.getLength(),
                    [&](std::uint32_t aCode) { appendEscape(aText, aCode); });
    aText.push_back('"');
}

} // namespace

struct JsonWriter::State {
    State(OutputStream& aStream, std::int32_t aFlags)
        : mStream(aStream), mTarget(targetOf(aStream)), mEscapeNonAscii(aFlags == EscapeNonAscii) {}

    void writeTree(const JsonValue& aRoot);

private:
    static std::string* targetOf(OutputStream& aStream) {
        auto* const stream = dynamic_cast<StringOutputStream*>(&aStream);
        return stream != nullptr ? &stream->getTarget() : nullptr;
    }

    /// A container whose children are being written.
    struct Level {
        const JsonValue* container;
        std::uint32_t size;
        std::uint32_t index; ///< of the entry being written
        bool isObject;
        bool isAtName; ///< the entry's name is being written, its value is still to come

        const JsonValue* child() const {
            return isAtName ? container->getNameAt(index) : container->getValueAt(index);
        }
    };

    const JsonValue* start(const JsonValue& aValue);
    const JsonValue* open(const JsonValue& aContainer, bool aIsObject);
    const JsonValue* next();

    void emit(std::string_view aPiece);
    void emitPunctuation(char aCharacter);
    void emitWord(std::string_view aWord);
    void emitInteger(std::int32_t aValue);
    void emitFloat(double aValue);
    void emitString(const std::string& aBytes);

    OutputStream& mStream;
    std::string* mTarget; ///< what the stream appends to, if it is exactly a StringOutputStream
    bool mEscapeNonAscii;
    bool mSpaceNeeded = false; ///< the last piece was a bare word or a number
    std::string mQuoted;       ///< reused from string to string
    std::vector<Level> mLevels;
};

void JsonWriter::State::writeTree(const JsonValue& aRoot) {
    mLevels.clear(); // a write that failed leaves some behind
    const JsonValue* value = start(aRoot);
    for (;;) {
        while (value == nullptr) {
            if (mLevels.empty()) return;
            value = next();
        }
        value = start(*value);
    }
}

/// Writes a scalar or an empty container and gives null, or the beginning of a container and gives
/// its first child.
const JsonValue* JsonWriter::State::start(const JsonValue& aValue) {
    switch (aValue.getType()) {
    case JsonType::Null:
        emitWord("null");
        break;
    case JsonType::Boolean:
        emitWord(aValue.getBoolean() ? "true" : "false");
        break;
    case JsonType::Integer:
        emitInteger(aValue.getInteger());
        break;
    case JsonType::Float:
        emitFloat(aValue.getFloat());
        break;
    case JsonType::String:
        emitString(aValue.getString());
        break;
    case JsonType::Array:
        return open(aValue, false);
    case JsonType::Object:
        return open(aValue, true);
    }
    return nullptr;
}

const JsonValue* JsonWriter::State::open(const JsonValue& aContainer, bool aIsObject) {
    const std::uint32_t size = aContainer.getSize();
    emitPunctuation(aIsObject ? '{' : '[');
    if (size == 0) {
        emitPunctuation(aIsObject ? '}' : ']');
        return nullptr;
    }
    mLevels.push_back({&aContainer, size, 0, aIsObject, aIsObject});
    return mLevels.back().child();
}

/// Goes on behind a child of the innermost container: gives the next one, or ends the container and
/// gives null.
const JsonValue* JsonWriter::State::next() {
    Level& level = mLevels.back();
    if (level.isAtName) {
        emitPunctuation(':');
        level.isAtName = false;
        return level.child();
    }
    if (++level.index == level.size) {
        emitPunctuation(level.isObject ? '}' : ']');
        mLevels.pop_back();
        return nullptr;
    }
    emitPunctuation(',');
    level.isAtName = level.isObject;
    return level.child();
}

/// Hands one piece of text to the stream. A stream over a string is seen through.
void JsonWriter::State::emit(std::string_view aPiece) {
    if (mTarget != nullptr) {
        mTarget->append(aPiece);
        return;
    }
    if (aPiece.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
        throw InvalidArgument("size out of range");
    }
    mStream.write(aPiece.data(), static_cast<std::int32_t>(aPiece.size()));
}

void JsonWriter::State::emitPunctuation(char aCharacter) {
    if (mTarget != nullptr) {
        mTarget->push_back(aCharacter);
    } else {
        emit({&aCharacter, 1});
    }
    mSpaceNeeded = false;
}

void JsonWriter::State::emitWord(std::string_view aWord) {
    if (mSpaceNeeded) emit(" ");
    emit(aWord);
    mSpaceNeeded = true;
}

void JsonWriter::State::emitInteger(std::int32_t aValue) {
    std::array<char, 16> area;
    const auto result = std::to_chars(area.data(), area.data() + area.size(), aValue);
    emitWord({area.data(), static_cast<std::size_t>(result.ptr - area.data())});
}

void JsonWriter::State::emitFloat(double aValue) {
    FloatArea area;
    const std::string_view text = formatFloat(aValue, area);
    emitWord(text);
    if (text.find_first_of(".e") == std::string_view::npos) emit(".0");
}

void JsonWriter::State::emitString(const std::string& aBytes) {
    const char* const end = aBytes.data() + aBytes.size();
    const PlainRun run = measurePlainRun(aBytes.data(), end);
    const bool isKnownToBeText = run.isAscii && run.end == end && aBytes.size() < shortTextSize;
    if (!isKnownToBeText) UnicodeString32::checkUtf8(aBytes.data(), aBytes.size());
    if (mEscapeNonAscii || mTarget == nullptr) {
        mQuoted.clear();
        mEscapeNonAscii ? appendQuotedAscii(mQuoted, aBytes)
                        : appendQuoted(mQuoted, aBytes, run.end);
        emit(mQuoted);
    } else {
        const std::size_t size = mTarget->size();
        try {
            appendQuoted(*mTarget, aBytes, run.end);
        } catch (...) {
            mTarget->resize(size); // a piece is written whole or not at all
            throw;
        }
    }
    mSpaceNeeded = false;
}

JsonWriter::JsonWriter(OutputStream& aStream, std::int32_t aFlags) {
    if (aFlags != 0 && aFlags != EscapeNonAscii) {
        throw InvalidArgument("JsonWriter: invalid argument aFlags");
    }
    mState = std::make_unique<State>(aStream, aFlags);
}

JsonWriter::~JsonWriter() = default;

void JsonWriter::write(const JsonValue& aValue) {
    mState->writeTree(aValue);
}

} // namespace vexil
