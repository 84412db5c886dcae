#pragma once

#include "vexil/json/lexical_tables.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/text_area.h"
#include "vexil/json/unescaped_runs.h"
#include "vexil/streams.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

// Private to the JSON library.

namespace vexil {

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

} // namespace vexil
