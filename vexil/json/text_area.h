#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

// Private to the JSON library.

namespace vexil {

/// Text being written, at the end of a string that is made longer in large steps: so each byte is
/// filled in advance about once, however much the string could hold. The bytes go straight to their
/// places. Where the text ends so far is known to whoever writes it, which asks for room there.
class TextArea {
public:
    /// Behind the first @p aBegin bytes, which stay.
    TextArea(std::string& aTarget, std::size_t aBegin)
        : mTarget(aTarget), mBegin(aBegin), mEnd(aTarget.data() + aTarget.size()) {}
    TextArea(const TextArea&) = delete;
    TextArea& operator=(const TextArea&) = delete;

    char* getBegin() const { return mTarget.data() + mBegin; }
    /// Room for @p aSize bytes behind a text that ends at @p aNext. Returns that place, which may
    /// have moved. What is there is anything.
    char* reserve(char* aNext, std::size_t aSize) {
        return static_cast<std::size_t>(mEnd - aNext) >= aSize ? aNext : grow(aNext, aSize);
    }

    /// How much of the string comes before @p aPlace.
    std::size_t sizeUpTo(const char* aPlace) const {
        return static_cast<std::size_t>(aPlace - mTarget.data());
    }
    /// Ends the string behind its first @p aSize bytes. Nothing is to be written after that.
    void cut(std::size_t aSize) { mTarget.resize(aSize); }

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
