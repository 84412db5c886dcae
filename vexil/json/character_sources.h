// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/json/lexical_tables.h"
#include "vexil/json/scan_state.h"
#include "vexil/json/string_appender.h"
#include "vexil/json/unescaped_runs.h"
#include "vexil/non_copyable.h"
#include "vexil/streams.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

// The two sources from which a Scanner takes its characters. They have the same operations and give
// the same characters; both read one character ahead. Private to the JSON library.

namespace vexil {

/// Characters of any stream, one read() per character. The text of a token is collected in the
/// buffer of the ScanState.
class StreamSource : private NonCopyable {
public:
    /// Reads the first character unless the scan has begun.
    StreamSource(InputStream& aStream, ScanState& aScan)
        : mStream(aStream), mBuffer(aScan.buffer), mCurrent(aScan.lookahead) {
        if (mCurrent == nothingRead) advance();
    }

    /// The current character, or endOfInput.
    int current() const { return mCurrent; }

    /// Moves to the next character and returns it. There is none after endOfInput.
    int advance() {
        unsigned char byte = 0;
        if (mCurrent != endOfInput) mCurrent = mStream.read(&byte, 1) == 1 ? byte : endOfInput;
        return mCurrent;
    }

    /// Begins the text of a token, empty until take() adds the current character to it and
    /// advances.
    void beginText() { mBuffer.clear(); }
    int take() {
        VEXIL_ASSERT(mCurrent >= 0);
        mBuffer.push_back(static_cast<char>(mCurrent));
        return advance();
    }
    std::string_view getText() const { return mBuffer; }

    /// Takes the digits from the current character on, and appends them to the decimal number
    /// @p aValue, modulo 2^64. Returns false if there is none.
    [[nodiscard]] bool takeDigits(std::uint64_t& aValue) {
        if (!hasClass(mCurrent, ClassDigit)) return false;
        do {
            aValue = aValue * 10 + static_cast<std::uint64_t>(mCurrent - '0');
        } while (hasClass(take(), ClassDigit));
        return true;
    }

    /// Appends the current character and the following ones up to the first that needs an escape or
    /// ends the string. @p aNext is the end of the text in @p aAppender; returns its new end.
    [[nodiscard]] char* takeUnescaped(StringAppender& aAppender, char* aNext) {
        for (; mCurrent >= 0 && !hasClass(mCurrent, ClassStringStop); advance()) {
            aNext = aAppender.reserve(aNext, 1);
            *aNext++ = static_cast<char>(mCurrent);
        }
        return aNext;
    }

    /// Never succeeds: only a block of memory can be examined as a whole.
    static bool takeWholeString(std::string_view&, bool&) { return false; }

private:
    InputStream& mStream;
    std::string& mBuffer;
    int mCurrent;
};

/// Characters of the block of a MemoryInputStream. The text of a token remains in the block, and a
/// run of unescaped characters is examined at once. On destruction the stream is moved to the
/// position at which single reads would have left it.
class MemorySource : private NonCopyable {
public:
    /// Whether the lookahead character is the one before the stream's position. It is not if the
    /// stream has been moved since it was read; a StreamSource must then be used.
    [[nodiscard]] static bool isInStep(const MemoryInputStream& aStream, int aLookahead) {
        return aLookahead == nothingRead ||
               (aLookahead >= 0 && !aStream.isAtBegin() &&
                static_cast<unsigned char>(aStream.getRemainingData()[-1]) == aLookahead);
    }

    /// Requires isInStep().
    MemorySource(MemoryInputStream& aStream, const ScanState& aScan)
        : mStream(aStream), mBegin(aStream.getRemainingData()),
          mEnd(mBegin + aStream.getRemainingSize()),
          mCurrent(aScan.lookahead == nothingRead ? mBegin : mBegin - 1), mText(mCurrent) {
        VEXIL_ASSERT(isInStep(aStream, aScan.lookahead));
    }
    ~MemorySource() {
        VEXIL_ASSERT(mStream.getRemainingData() == mBegin);
        const char* const next = mCurrent == mEnd ? mEnd : mCurrent + 1;
        mStream.skip(static_cast<std::uint32_t>(next - mBegin));
    }

    int current() const {
        return mCurrent == mEnd ? endOfInput : static_cast<unsigned char>(*mCurrent);
    }
    int advance() {
        if (mCurrent != mEnd) ++mCurrent;
        return current();
    }

    void beginText() { mText = mCurrent; }
    int take() {
        VEXIL_ASSERT(mCurrent != mEnd);
        return advance();
    }
    std::string_view getText() const { return {mText, static_cast<std::size_t>(mCurrent - mText)}; }

    [[nodiscard]] bool takeDigits(std::uint64_t& aValue) {
        const char* next = mCurrent;
        for (; next != mEnd; ++next) {
            const auto digit = static_cast<unsigned char>(*next - '0');
            if (digit > 9) break;
            aValue = aValue * 10 + digit;
        }
        return std::exchange(mCurrent, next) != next;
    }

    [[nodiscard]] char* takeUnescaped(StringAppender& aAppender, char* aNext) {
        // Unsigned: a run may be longer than the largest ptrdiff_t of a 32-bit process.
        constexpr std::size_t shortRun = 8;
        const char* const run = mCurrent;
        mCurrent = measureUnescapedRun(run, mEnd).end;
        const auto size = static_cast<std::size_t>(mCurrent - run);
        aNext = aAppender.reserve(aNext, std::max(size, shortRun));
        if (size <= shortRun && static_cast<std::size_t>(mEnd - run) >= shortRun) {
            std::memcpy(aNext, run, shortRun); // a copy of fixed size is faster than a short one
        } else {
            std::copy(run, mCurrent, aNext);
        }
        return aNext + size;
    }

    /// Takes the rest of a string at once if no character up to the closing quotation mark needs an
    /// escape: sets its text and whether that is ASCII, and moves past the quotation mark. The
    /// current character must be the one after the opening quotation mark. Returns false and takes
    /// nothing otherwise.
    [[nodiscard]] bool takeWholeString(std::string_view& aText, bool& aIsAscii) {
        const UnescapedRun run = measureUnescapedRun(mCurrent, mEnd);
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
    const char* mCurrent; ///< the current character; equal to mEnd at the end
    const char* mText;    ///< the first character of the token's text
};

} // namespace vexil
