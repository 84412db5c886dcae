#include "vexil/json/decimal_conversion.h"

#include <gtest/gtest.h>

#include <bit>
#include <cerrno>
#include <cstdlib>
#include <ios>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace vexil;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

const std::string zeros(1000000, '0');

struct Row {
    double expected;
    std::vector<std::string> texts; ///< '|' marks the end of the number if more follows
    bool range = false;
};

const Row rows[] = {
    {0.0,
     {"0", "0e2147483647", "0.0e-2147483647", "0|x10", "|e5", "|-", "|.", "|", "|  -.e1", "|+-1",
      "|\xA0", "|inf"}},
    {-0.0, {"-0", "-0.000e5"}},
    {1, {"1e0", "1E0", "1.", " \t\n\v\f\r1", "1|e+", "1|e", "1|e-x", "1.|.3", "1|,5", "1e0|.5"}},
    {125, {"  +12.50e1|x", "+000125.000", ".125e0000000003"}},
    // Ties at 53 bits, and the digits behind the 17th.
    {9007199254740992, {"9007199254740993", "9007199254740993.0999"}},
    {9007199254740994, {"9007199254740993.1"}},
    {4503599627370496, {"4503599627370496.5"}},
    {4503599627370498, {"4503599627370497.5"}},
    {1.2345678901234567e20, {"123456789012345678901", "0.000123456789012345678901e24"}},
    // The ends of the range.
    {0x1.fffffffffffffp1023, {"1.7976931348623157e308", "1.7976931348623158e308"}},
    {infinity, {"1.7976931348623159e308", "1e309", "1e400"}, true},
    {-infinity, {"-1e400", "-0e2147483648"}, true},
    {0x1p-1022, {"2.2250738585072014e-308", "2.2250738585072012e-308"}},
    {0x0.fffffffffffffp-1022, {"2.2250738585072011e-308"}},
    {0x1p-1073, {"7.4109846876186982e-324"}},
    {0x1p-1074, {"7.4109846876186981e-324", "3e-324", "2.4703282292062328e-324"}},
    {0.0, {"2.4703282292062327e-324", "2e-324", "99999999999999999e-341", "1e-400"}, true},
    {-0.0, {"-2e-324", "-0e-2147483649"}, true},
    // Exponents that leave 32 bits, alone or with the digits; exponents that make up for them.
    {infinity,
     {"1e99999999999|x", "1e18446744073709551617", "0e2147483648", "10e2147483647"},
     true},
    {0.0, {"1e-99999999999|x", "0e-2147483648", "0.00e-2147483647", "0.01e-2147483647"}, true},
    {1, {"1" + zeros + "e-1000000", "0." + zeros + "1e1000001", zeros + "1." + zeros}},
};

void expectSame(double aActual, double aExpected, const std::string& aText) {
    EXPECT_EQ(std::bit_cast<std::uint64_t>(aActual), std::bit_cast<std::uint64_t>(aExpected))
        << std::hexfloat << aText.substr(0, 40) << ": " << aActual << ", not " << aExpected;
}

TEST(DecimalConversion, GivesValueEndAndErrno) {
    for (const Row& row : rows) {
        for (std::string text : row.texts) {
            const std::size_t length = std::min(text.find('|'), text.size());
            text.erase(length, 1);
            for (const int before : {0, ERANGE, EDOM}) {
                const char* end = nullptr;
                errno = before;
                const double actual = strToDouble(text.c_str(), &end);
                EXPECT_EQ(errno, row.range ? ERANGE : before) << text.substr(0, 40);
                EXPECT_EQ(end, text.c_str() + length) << text.substr(0, 40);
                expectSame(actual, row.expected, text);
            }
        }
    }
}

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
