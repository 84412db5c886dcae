// SPDX-License-Identifier: MIT
#include "vexil/utf8_validation.h"

#include "vexil/assert.h"
#include "vexil/byte_block.h"

#include <array>
#include <cstddef>

namespace vexil {

namespace {

constexpr std::ptrdiff_t blockSize = ByteBlock::size;

// A finite automaton over the bytes. The next states of all states for a byte are packed into one
// word, six bits each, and a state is the position of its bits: a step is a shift, and no branch
// depends on the text (Per Vognsen, "Shift-based DFAs").

enum State : std::uint64_t {
    BetweenForms = 0,
    OneToCome = 6,
    TwoToCome = 12,
    ThreeToCome = 18,
    AfterE0 = 24, ///< a smaller second byte would make the form longer than needed
    AfterED = 30, ///< a larger one would make a surrogate
    AfterF0 = 36, ///< as after E0
    AfterF4 = 42, ///< a larger one would exceed U+10FFFF
    InvalidForm = 48,
};

constexpr State stateAfterLead(unsigned aByte) {
    if (aByte < 0x80) return BetweenForms;
    if (aByte < 0xC2 || aByte > 0xF4) return InvalidForm;
    if (aByte < 0xE0) return OneToCome;
    if (aByte == 0xE0) return AfterE0;
    if (aByte == 0xED) return AfterED;
    if (aByte < 0xF0) return TwoToCome;
    if (aByte == 0xF0) return AfterF0;
    return aByte == 0xF4 ? AfterF4 : ThreeToCome;
}

constexpr std::uint64_t packNextStates(unsigned aByte) {
    const auto inRange = [aByte](unsigned aFirst, unsigned aLast, State aNext) {
        return aByte >= aFirst && aByte <= aLast ? aNext : InvalidForm;
    };
    return stateAfterLead(aByte) << BetweenForms | inRange(0x80, 0xBF, BetweenForms) << OneToCome |
           inRange(0x80, 0xBF, OneToCome) << TwoToCome |
           inRange(0x80, 0xBF, TwoToCome) << ThreeToCome |
           inRange(0xA0, 0xBF, OneToCome) << AfterE0 | inRange(0x80, 0x9F, OneToCome) << AfterED |
           inRange(0x90, 0xBF, TwoToCome) << AfterF0 | inRange(0x80, 0x8F, TwoToCome) << AfterF4 |
           InvalidForm << InvalidForm;
}

constexpr std::array<std::uint64_t, 256> makeNextStates() {
    std::array<std::uint64_t, 256> states{};
    for (unsigned i = 0; i < 256; ++i) states[i] = packNextStates(i);
    return states;
}

constexpr auto nextStates = makeNextStates();

/// Returns the position after the whole blocks of ASCII at the front of the text.
const std::uint8_t* skipAsciiBlocks(const std::uint8_t* aText, const std::uint8_t* aEnd) {
    while (aEnd - aText >= blockSize && !ByteBlock::load(aText).hasMark()) aText += blockSize;
    return aText;
}

/// The state after the text.
std::uint64_t runAutomaton(const std::uint8_t* aText, const std::uint8_t* aEnd) {
    std::uint64_t state = BetweenForms;
    const auto advanceTo = [&](const std::uint8_t* aPos) {
        for (; aText != aPos; ++aText) state = nextStates[*aText] >> state & 0x3F;
    };
    for (;;) {
        if (state == BetweenForms) aText = skipAsciiBlocks(aText, aEnd);
        if (aEnd - aText < blockSize) break;
        advanceTo(aText + blockSize);
    }
    advanceTo(aEnd);
    return state;
}

/// The greatest number of bytes before a byte that decide whether it is allowed.
constexpr std::ptrdiff_t maxLookback = 3;

/// Marks the bytes of a block that cannot follow the bytes before them, or that occur in no form.
/// The text must extend maxLookback bytes before the block.
ByteBlock findFaults(const std::uint8_t* aText) {
    const ByteBlock bytes = ByteBlock::load(aText);
    const ByteBlock third = ByteBlock::load(aText - 3);
    const ByteBlock first = ByteBlock::load(aText - 1);
    const ByteBlock second = ByteBlock::load(aText - 2);

    const ByteBlock leads = bytes.isAtLeast<0xC0>();
    const ByteBlock inForm =
        first.isAtLeast<0xC0>() | second.isAtLeast<0xE0>() | third.isAtLeast<0xF0>();
    const ByteBlock misplaced = bytes.without(leads) ^ inForm;
    const ByteBlock neverUsed = leads.without(bytes.isAtLeast<0xC2>()) | bytes.isAtLeast<0xF5>();

    const ByteBlock fromA0 = bytes.isAtLeast<0xA0>();
    const ByteBlock from90 = bytes.isAtLeast<0x90>();
    const ByteBlock overlong =
        first.equals<0xE0>().without(fromA0) | first.equals<0xF0>().without(from90);
    const ByteBlock surrogate = first.equals<0xED>() & fromA0;
    const ByteBlock aboveLastCode = first.equals<0xF4>() & from90;
    return misplaced | neverUsed | overlong | surrogate | aboveLastCode;
}

/// Whether a block and the bytes that it looks back at are ASCII, and therefore without a fault.
bool isAscii(const std::uint8_t* aText) {
    return !(ByteBlock::load(aText) | ByteBlock::load(aText - maxLookback)).hasMark();
}

/// Examines all bytes of a block at once, for texts of at least maxLookback + blockSize bytes.
bool isValidByBlocks(const std::uint8_t* aText, const std::uint8_t* aEnd) {
    VEXIL_ASSERT(aEnd - aText >= maxLookback + blockSize);
    // The forms of the first bytes, whose lookback would begin before the text.
    const std::uint8_t* next = aText + maxLookback;
    if (runAutomaton(aText, next) == InvalidForm) return false;
    ByteBlock faults = findFaults(aEnd - blockSize);
    while (aEnd - next >= blockSize) {
        if (isAscii(next)) {
            next = skipAsciiBlocks(next, aEnd);
        } else {
            faults = faults | findFaults(next);
            next += blockSize;
        }
    }
    const bool isComplete = aEnd[-1] < 0xC0 && aEnd[-2] < 0xE0 && aEnd[-3] < 0xF0;
    return isComplete && !faults.hasMark();
}

} // namespace

bool isValidUtf8(const std::uint8_t* aText, const std::uint8_t* aEnd) {
    if constexpr (ByteBlock::isVector) {
        if (aEnd - aText >= maxLookback + blockSize) return isValidByBlocks(aText, aEnd);
    }
    return runAutomaton(aText, aEnd) == BetweenForms;
}

} // namespace vexil
