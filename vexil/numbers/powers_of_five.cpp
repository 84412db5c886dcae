// SPDX-License-Identifier: MIT
#include "vexil/numbers/powers_of_five.h"

#include <cstddef>
#include <vector>

namespace vexil {

namespace {

constexpr std::int32_t largeStep = 560; ///< 5^546 is the last of the mid runs
constexpr std::int32_t powerLimit = 5040;

using SmallPowers = std::array<std::uint32_t, midPowerStep>;
using RunWords = std::array<std::uint32_t, 2286>;

struct Run {
    std::size_t begin;
    std::size_t end;
};

struct RunTable {
    RunWords words{};
    std::array<std::uint16_t, 40> mid{};
    std::array<std::uint16_t, 9> large{};
};

constexpr SmallPowers makeSmallPowers() {
    SmallPowers powers{1};
    for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 5 * powers[i - 1];
    return powers;
}

/// Writes the product of two runs after the first one, over words that are still 0.
constexpr Run appendProduct(std::uint32_t* aWords, Run aLast, Run aFactor) {
    const std::size_t lastCount = aLast.end - aLast.begin;
    const std::size_t factorCount = aFactor.end - aFactor.begin;
    std::uint32_t* const product = aWords + aLast.end;
    for (std::size_t i = 0; i < factorCount; ++i) {
        std::uint64_t carry = 0;
        for (std::size_t j = 0; j < lastCount; ++j) {
            carry += std::uint64_t{aWords[aLast.begin + j]} * aWords[aFactor.begin + i];
            carry += product[i + j];
            product[i + j] = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        product[i + lastCount] = static_cast<std::uint32_t>(carry);
    }
    const std::size_t count = lastCount + factorCount;
    return {aLast.end, aLast.end + (product[count - 1] != 0 ? count : count - 1)};
}

/// Every run is the one before it times the first of its kind; 5^546 * 5^14 is the first large one.
constexpr RunTable makeRuns() {
    RunTable table;
    constexpr std::uint64_t first = std::uint64_t{5} * makeSmallPowers().back();
    table.words[0] = static_cast<std::uint32_t>(first);
    table.words[1] = static_cast<std::uint32_t>(first >> 32);
    const Run firstMid{0, 2};
    Run last = firstMid;
    for (std::size_t i = 1; i < table.mid.size(); ++i) {
        table.mid[i] = static_cast<std::uint16_t>(last.end);
        last = appendProduct(table.words.data(), last, firstMid);
    }
    const Run firstLarge = last;
    table.large[0] = static_cast<std::uint16_t>(last.begin);
    for (std::size_t i = 1; i + 1 < table.large.size(); ++i) {
        table.large[i] = static_cast<std::uint16_t>(last.end);
        last = appendProduct(table.words.data(), last, firstLarge);
    }
    table.large.back() = static_cast<std::uint16_t>(last.end);
    return table;
}

constexpr RunTable runs = makeRuns();

static_assert(makeSmallPowers().back() == 1220703125);
static_assert(runs.words[0] == 0x6BCC41E9 && runs.words[1] == 1);
static_assert(runs.words[2] == 0xE2502611 && runs.words[3] == 0x04FCE5E3 && runs.words[4] == 2);
static_assert(runs.words[819] == 0x7FDE7741 && runs.words[820] == 0x072276D7);
static_assert(runs.words[819 + 40] == 0x00136C6C && runs.words.back() == 4);
static_assert(runs.mid[1] == 2 && runs.mid[2] == 5 && runs.mid[38] == 779 && runs.mid[39] == 819);
static_assert(runs.large ==
              std::array<std::uint16_t, 9>{819, 860, 942, 1064, 1227, 1431, 1675, 1960, 2286});

/// A view of words that are only read; there is no separate type for it.
BigUnsigned viewOf(const std::uint32_t& aWords, std::int32_t aCount) {
    return {aCount, const_cast<std::uint32_t*>(&aWords)};
}

/// Run @p aNumber of a kind, counted from 1.
template <std::size_t size>
BigUnsigned runAt(const std::array<std::uint16_t, size>& aOffsets, std::int32_t aNumber) {
    const auto index = static_cast<std::size_t>(aNumber);
    const std::uint16_t begin = aOffsets[index - 1];
    return viewOf(powerOfFiveWords[begin], aOffsets[index] - begin);
}

/// Multiplies factors in an output. The first one is not copied but borrowed, so that the factors
/// must outlive the object.
class Product {
public:
    Product(BigUnsigned& aOut, std::int32_t aCap) : mOut(aOut), mCap(aCap) {}

    [[nodiscard]] int multiply(const BigUnsigned& aFactor) {
        if (mValue == nullptr) {
            mValue = &aFactor;
            return 0;
        }
        const BigUnsigned& value = *mValue;
        mValue = &mOut;
        if (aFactor.count == 1) return bigMultiplyWord(mOut, mCap, value, aFactor.words[0]);
        if (&value != &mOut) return bigMultiply(mOut, mCap, value, aFactor);
        std::vector<std::uint32_t> copy(value.words, value.words + value.count);
        return bigMultiply(mOut, mCap, BigUnsigned{value.count, copy.data()}, aFactor);
    }

    /// Leaves the product times 2^k in the output.
    [[nodiscard]] int finish(std::int32_t aK) {
        if (mValue == nullptr) return bigSetShiftedWord(mOut, mCap, 1, aK);
        if (aK != 0) return bigShiftLeft(mOut, mCap, *mValue, aK);
        return mValue == &mOut ? 0 : bigCopy(mOut, mCap, *mValue);
    }

private:
    BigUnsigned& mOut;
    std::int32_t mCap;
    const BigUnsigned* mValue = nullptr; ///< the product so far; null before the first factor
};

} // namespace

constexpr SmallPowers smallPowersOfFive = makeSmallPowers();
constexpr RunWords powerOfFiveWords = runs.words;
constexpr std::array<std::uint16_t, 40> midPowersOfFive = runs.mid;
constexpr std::array<std::uint16_t, 9> largePowersOfFive = runs.large;

int powerOfFiveLong(BigUnsigned& aOut, std::int32_t aCap, std::int32_t aN, std::int32_t aK,
                    const BigUnsigned* aMultiplier) {
    if (aMultiplier != nullptr && aMultiplier->count == 0) return bigSetWord(aOut, aCap, 0);
    if (aN < 0 || aN >= powerLimit) return 1;
    Product product(aOut, aCap);
    BigUnsigned large;
    BigUnsigned mid;
    BigUnsigned small;
    if (aN >= largeStep) {
        large = runAt(largePowersOfFive, aN / largeStep);
        if (product.multiply(large) != 0) return 1;
    }
    if (const std::int32_t number = aN % largeStep / midPowerStep; number != 0) {
        mid = runAt(midPowersOfFive, number);
        if (product.multiply(mid) != 0) return 1;
    }
    if (aMultiplier != nullptr && product.multiply(*aMultiplier) != 0) return 1;
    if (const std::int32_t number = aN % midPowerStep; number != 0) {
        small = viewOf(smallPowersOfFive[static_cast<std::size_t>(number)], 1);
        if (product.multiply(small) != 0) return 1;
    }
    return product.finish(aK);
}

} // namespace vexil
