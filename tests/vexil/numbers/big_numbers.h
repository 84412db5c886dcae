// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/numbers/big_unsigned.h"

#include <vector>

using Words = std::vector<std::uint32_t>;

/// A number with capacity for @p aCap more words, followed by a guard word.
struct Number {
    explicit Number(const Words& aWords, std::int32_t aCap = 0) : buffer(aWords) {
        buffer.resize(aWords.size() + static_cast<std::uint32_t>(aCap) + 1, 0xA5A5A5A5);
        value = {static_cast<std::int32_t>(aWords.size()), buffer.data()};
    }
    bool intact() const { return buffer.back() == 0xA5A5A5A5; }
    Words words() const { return {value.words, value.words + value.count}; }
    Words buffer;
    vexil::BigUnsigned value;
};
