// SPDX-License-Identifier: MIT

// Converts every set of number texts with every converter. The rows are called
// number/SET/CONVERTER and count one conversion as one item.
#include "documents.h"

#include "vexil/numbers/decimal_conversion.h"

#include <benchmark/benchmark.h>

#ifdef HAS_DOUBLE_CONVERSION
#include <double-conversion/string-to-double.h>
#endif
#ifdef HAS_FAST_FLOAT
#include <fast_float/fast_float.h>
#endif

#include <bit>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

using namespace benchmarks;

double convertWithStrToDouble(const std::string& aText) {
    const char* end;
    return vexil::strToDouble(aText.c_str(), &end);
}

double convertWithStrtod(const std::string& aText) {
    char* end;
    return std::strtod(aText.c_str(), &end);
}

double convertWithFromChars(const std::string& aText) {
    double value = 0;
    std::from_chars(aText.data(), aText.data() + aText.size(), value);
    return value;
}

#ifdef HAS_DOUBLE_CONVERSION
double convertWithDoubleConversion(const std::string& aText) {
    static const double_conversion::StringToDoubleConverter converter(0, 0, 0, nullptr, nullptr);
    int used = 0;
    return converter.StringToDouble(aText.data(), static_cast<int>(aText.size()), &used);
}
#endif

#ifdef HAS_FAST_FLOAT
double convertWithFastFloat(const std::string& aText) {
    double value = 0;
    fast_float::from_chars(aText.data(), aText.data() + aText.size(), value);
    return value;
}
#endif

struct Converter {
    const char* name;
    double (*convert)(const std::string&);
};

constexpr Converter converters[] = {
    {"strToDouble", convertWithStrToDouble},
    {"strtod", convertWithStrtod},
    {"from_chars", convertWithFromChars},
#ifdef HAS_DOUBLE_CONVERSION
    {"double-conversion", convertWithDoubleConversion},
#endif
#ifdef HAS_FAST_FLOAT
    {"fast_float", convertWithFastFloat},
#endif
};

void check(const Converter& aConverter, const NumberSet& aSet) {
    for (const auto& text : aSet.texts) {
        const auto value = aConverter.convert(text);
        const auto expected = std::strtod(text.c_str(), nullptr);
        if (std::bit_cast<std::uint64_t>(value) != std::bit_cast<std::uint64_t>(expected)) {
            std::fprintf(stderr, "wrong answer: %s makes %a of %s, expected %a\n", aConverter.name,
                         value, text.c_str(), expected);
            std::exit(1);
        }
    }
}

void addRow(const Converter& aConverter, const NumberSet& aSet) {
    const auto name = "number/" + aSet.name + '/' + aConverter.name;
    benchmark::RegisterBenchmark(name.c_str(), [&](benchmark::State& aState) {
        for (auto _ : aState) {
            for (const auto& text : aSet.texts) {
                benchmark::DoNotOptimize(aConverter.convert(text));
            }
        }
        aState.SetItemsProcessed(aState.iterations() *
                                 static_cast<std::int64_t>(aSet.texts.size()));
    });
}

} // namespace

int main(int aCount, char** aArguments) {
    benchmark::Initialize(&aCount, aArguments);
    if (benchmark::ReportUnrecognizedArguments(aCount, aArguments)) return 1;
    const auto sets = makeNumberSets();
    for (const auto& set : sets) {
        for (const auto& converter : converters) {
            check(converter, set);
            addRow(converter, set);
        }
    }
    benchmark::RunSpecifiedBenchmarks();
}
