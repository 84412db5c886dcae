// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/assert.h"
#include "vexil/non_copyable.h"

#include <algorithm>
#include <cstddef>
#include <string>

// Private to the JSON library.

namespace vexil {

/// Appends text to a string through raw pointers. The string is lengthened in large steps, so each
/// byte is initialised about once in advance, however large the string's capacity is. The caller
/// keeps the pointer one past the last character written and passes it to reserve(); only the
/// caller knows the length of the text, and the string is longer until cut() is called.
class StringAppender : private NonCopyable {
public:
    /// Appends to the first @p aBegin bytes of @p aTarget, which must outlive the appender.
    StringAppender(std::string& aTarget, std::size_t aBegin)
        : mTarget(aTarget), mBegin(aBegin), mEnd(aTarget.data() + aTarget.size()) {
        VEXIL_ASSERT(aBegin <= aTarget.size());
    }

    /// The first character of the text; invalidated by reserve().
    char* getBegin() const { return mTarget.data() + mBegin; }

    /// Provides at least @p aSize writable bytes after a text that ends at @p aNext and returns
    /// their address; the text may have moved with them. Their contents are unspecified. Throws
    /// std::bad_alloc or std::length_error; the text is then unchanged.
    [[nodiscard]] char* reserve(char* aNext, std::size_t aSize) {
        VEXIL_ASSERT(mEnd == mTarget.data() + mTarget.size()); // changed by nothing else
        VEXIL_ASSERT(getBegin() <= aNext && aNext <= mEnd);
        return static_cast<std::size_t>(mEnd - aNext) >= aSize ? aNext : grow(aNext, aSize);
    }

    /// Length of the string up to @p aPosition.
    std::size_t sizeUpTo(const char* aPosition) const {
        return static_cast<std::size_t>(aPosition - mTarget.data());
    }

    /// Shortens the string to its first @p aSize bytes, after which nothing may be appended.
    void cut(std::size_t aSize) {
        VEXIL_ASSERT(aSize <= mTarget.size());
        mTarget.resize(aSize);
    }

private:
    char* grow(const char* aNext, std::size_t aSize) {
        constexpr std::size_t firstStep = 256;
        const auto written = static_cast<std::size_t>(aNext - getBegin());
        mTarget.resize(mBegin + written + std::max({aSize, firstStep, written}));
        mEnd = mTarget.data() + mTarget.size();
        return getBegin() + written;
    }

    std::string& mTarget;
    const std::size_t mBegin;
    char* mEnd;
};

} // namespace vexil
