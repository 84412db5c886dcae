// SPDX-License-Identifier: MIT
#include "vexil/numbers/decimal_conversion.h"

#include "tests/table.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <ios>
#include <random>
#include <string>
#include <vector>

using namespace vexil;

namespace {

void expectSame(double aActual, double aExpected, const std::string& aText) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(aActual), std::bit_cast<std::uint64_t>(aExpected))
        << std::hexfloat << aText.substr(0, 40) << ": " << aActual << ", not " << aExpected;
}

class DecimalTexts : public TableTest {};

TEST_P(DecimalTexts, GiveValueEndAndErrno) {
    const Columns& row = GetParam().columns;
    const std::string text = row[2] + row[3];
    for (const int before : {0, ERANGE, EDOM}) {
        const char* end = nullptr;
        errno = before;
        const double actual = strToDouble(text.c_str(), &end);
        EXPECT_EQ(errno, row[1] == "range" ? ERANGE : before);
        EXPECT_EQ(end, text.c_str() + row[2].size());
        expectSame(actual, std::strtod(row[0].c_str(), nullptr), text);
    }
    double stored = 0;
    EXPECT_EQ(decimalToBinaryFloat(&stored, text.c_str(), doubleFormat),
              text.c_str() + row[2].size());
    expectSame(stored, std::strtod(row[0].c_str(), nullptr), text);
    // The same from text that ends with the number, without a terminator.
    const std::vector<char> number(row[2].begin(), row[2].end());
    const char* const numberEnd = number.data() + number.size();
    const char* end = nullptr;
    expectSame(strToDouble(number.data(), numberEnd, &end), std::strtod(row[0].c_str(), nullptr),
               text);
    EXPECT_EQ(end, numberEnd);
}

INSTANTIATE_TABLE(DecimalTexts, "decimal_conversion.txt", 4);

TEST(DecimalConversion, AgreesWithTheRuntimeUpTo17Digits) {
    std::mt19937 random(1);
    const auto below = [&random](unsigned aLimit) { return static_cast<int>(random() % aLimit); };
    for (int i = 0; i < 300000 && !HasFailure(); ++i) {
        std::string text(1 + random() % 17, '0');
        for (char& digit : text) digit = static_cast<char>('0' + below(10));
        text.insert(random() % (text.size() + 1), 1, '.');
        const int exponents[] = {below(660) - 345, below(50) - 25, below(40) - 340};
        text.append(1, 'e').append(std::to_string(exponents[i % 3]));
        expectSame(strToDouble(text.c_str(), nullptr), std::strtod(text.c_str(), nullptr), text);
    }
}

} // namespace
