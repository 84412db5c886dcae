// SPDX-License-Identifier: MIT

// Parses, reads, writes and clones every document with every library. The rows are called
// OPERATION/DOCUMENT/LIBRARY, where the operation is parse, read (parse and read every string),
// write or clone; bytes are those of the document for every operation, so that rows of one document
// compare by time whatever text a library makes of it. Each operation includes freeing its result.
#include "documents.h"
#include "libraries.h"

#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>

namespace {

using namespace benchmarks;
using nlohmann::json;
using nlohmann::ordered_json;

template <typename Library>
using TreeOf = decltype(Library::parse(std::string()));

// Versions of clang-format break this line differently.
// clang-format off
template <typename Library>
constexpr bool canClone = requires(const TreeOf<Library>& aTree) { Library::clone(aTree); };
// clang-format on

template <typename Library>
constexpr bool canReadStrings = requires(const TreeOf<Library>& aTree) {
    Library::readStrings(aTree, [](std::string_view) {});
};

[[noreturn]] void fail(const std::string& aWhat) {
    std::fprintf(stderr, "wrong answer: %s\n", aWhat.c_str());
    std::exit(1);
}

// Checks ----------------------------------------------------------------------------------------

bool isFloat(const ordered_json& aNumber) {
    return aNumber.is_number_float() ||
           aNumber.get<std::int64_t>() != static_cast<std::int32_t>(aNumber.get<std::int64_t>());
}

bool sameTree(const vexil::JsonValue& aTree, const ordered_json& aExpected) {
    switch (aTree.getType()) {
    case vexil::JsonType::Null:
        return aExpected.is_null();
    case vexil::JsonType::Boolean:
        return aExpected.is_boolean() && aTree.getBoolean() == aExpected.get<bool>();
    case vexil::JsonType::Integer:
        return aExpected.is_number_integer() && aTree.getInteger() == aExpected.get<std::int64_t>();
    case vexil::JsonType::Float: {
        const double expected = aExpected.is_number() ? aExpected.get<double>() : std::nan("");
        return isFloat(aExpected) && aTree.getFloat() == expected &&
               std::signbit(aTree.getFloat()) == std::signbit(expected);
    }
    case vexil::JsonType::String:
        return aExpected.is_string() &&
               aTree.getString() == aExpected.get_ref<const std::string&>();
    case vexil::JsonType::Array: {
        if (!aExpected.is_array() || aTree.getSize() != aExpected.size()) return false;
        for (std::uint32_t i = 0; i < aTree.getSize(); ++i) {
            if (!sameTree(*aTree.getValueAt(i), aExpected[i])) return false;
        }
        return true;
    }
    case vexil::JsonType::Object: {
        if (!aExpected.is_object() || aTree.getSize() != aExpected.size()) return false;
        std::uint32_t i = 0;
        for (const auto& [name, value] : aExpected.items()) {
            if (aTree.getNameAt(i)->getString() != name) return false;
            if (!sameTree(*aTree.getValueAt(i++), value)) return false;
        }
        return true;
    }
    }
    return false;
}

// The text that our writer must make: compact, with six significant digits in a float.
void appendText(std::string& aText, const ordered_json& aTree) {
    const auto appendItems = [&](char aFirst, char aLast) {
        aText += aFirst;
        for (const auto& [name, value] : aTree.items()) {
            if (aText.back() != aFirst || &value != &*aTree.begin()) aText += ',';
            if (aTree.is_object()) aText += ordered_json(name).dump() + ':';
            appendText(aText, value);
        }
        aText += aLast;
    };
    if (aTree.is_object()) return appendItems('{', '}');
    if (aTree.is_array()) return appendItems('[', ']');
    if (!aTree.is_number() || !isFloat(aTree)) {
        aText += aTree.dump();
        return;
    }
    std::array<char, 32> number;
    std::snprintf(number.data(), number.size(), "%g", aTree.get<double>());
    aText += number.data();
    if (std::string_view(number.data()).find_first_of(".e") == std::string_view::npos) {
        aText += ".0";
    }
}

// The tree of vexil must be exactly equal.
void check(const Document& aDocument, const std::unique_ptr<vexil::JsonValue>& aTree) {
    const auto expected = ordered_json::parse(aDocument.text);
    if (!sameTree(*aTree, expected)) fail("vexil parses " + aDocument.name);
    std::string expectedText;
    appendText(expectedText, expected);
    Vexil::write(aTree, [&](std::string_view aText) {
        if (aText != expectedText) fail("vexil writes " + aDocument.name);
    });
}

// Some peers sort the names, and one is not exact in the last bit of a number.
bool similar(const json& aTree, const json& aExpected) {
    if (aExpected.is_number()) {
        const auto value = aExpected.get<double>();
        return aTree.is_number() &&
               std::abs(aTree.get<double>() - value) <= 1e-14 * std::abs(value);
    }
    if (!aExpected.is_structured()) return aTree == aExpected;
    if (aTree.type() != aExpected.type() || aTree.size() != aExpected.size()) return false;
    auto item = aTree.items().begin();
    for (const auto& [name, value] : aExpected.items()) {
        if (item.key() != name || !similar(item.value(), value)) return false;
        ++item;
    }
    return true;
}

// A peer must have kept everything.
template <typename Library>
void checkPeer(const Document& aDocument) {
    Library::write(Library::parse(aDocument.text), [&](std::string_view aText) {
        if (!similar(json::parse(aText), json::parse(aDocument.text))) {
            fail(std::string(Library::name) + " on " + aDocument.name);
        }
    });
}

template <typename Library>
std::size_t countStringBytes(const std::string& aText) {
    std::size_t count = 0;
    Library::readStrings(Library::parse(aText),
                         [&](std::string_view aString) { count += aString.size(); });
    return count;
}

// Every string must have been read, and a clone must be equal.
template <typename Library>
void checkOperations(const Document& aDocument) {
    const auto name = std::string(Library::name) + " on " + aDocument.name;
    if constexpr (canReadStrings<Library>) {
        if (countStringBytes<Library>(aDocument.text) !=
            countStringBytes<Nlohmann>(aDocument.text)) {
            fail("strings of " + name);
        }
    }
    if constexpr (canClone<Library>) {
        const auto tree = Library::parse(aDocument.text);
        std::string text;
        Library::write(tree, [&](std::string_view aText) { text = aText; });
        Library::write(Library::clone(tree), [&](std::string_view aText) {
            if (aText != text) fail("clone of " + name);
        });
    }
}

// Rows ------------------------------------------------------------------------------------------

void setBytes(benchmark::State& aState, const Document& aDocument) {
    aState.SetBytesProcessed(aState.iterations() *
                             static_cast<std::int64_t>(aDocument.text.size()));
}

template <typename Library>
void parse(benchmark::State& aState, const Document& aDocument) {
    for (auto _ : aState) {
        auto tree = Library::parse(aDocument.text);
        benchmark::DoNotOptimize(tree);
    }
    setBytes(aState, aDocument);
}

template <typename Library>
void write(benchmark::State& aState, const Document& aDocument) {
    const auto tree = Library::parse(aDocument.text);
    for (auto _ : aState) {
        Library::write(tree, [](std::string_view aText) { benchmark::DoNotOptimize(aText); });
    }
    setBytes(aState, aDocument);
}

template <typename Library>
void parseAndRead(benchmark::State& aState, const Document& aDocument) {
    for (auto _ : aState) {
        const auto tree = Library::parse(aDocument.text);
        std::size_t sum = 0;
        Library::readStrings(tree, [&](std::string_view aText) {
            for (const char byte : aText) sum += static_cast<unsigned char>(byte);
        });
        benchmark::DoNotOptimize(sum);
    }
    setBytes(aState, aDocument);
}

template <typename Library>
void clone(benchmark::State& aState, const Document& aDocument) {
    const auto tree = Library::parse(aDocument.text);
    for (auto _ : aState) {
        auto copy = Library::clone(tree);
        benchmark::DoNotOptimize(copy);
    }
    setBytes(aState, aDocument);
}

template <typename Library>
void addRows(const Document& aDocument) {
    const auto add = [&](const char* aKind, auto* aRun) {
        const auto name = std::string(aKind) + '/' + aDocument.name + '/' + Library::name;
        benchmark::RegisterBenchmark(name.c_str(), [aRun, &aDocument](benchmark::State& aState) {
            aRun(aState, aDocument);
        });
    };
    add("parse", parse<Library>);
    add("write", write<Library>);
    if constexpr (canReadStrings<Library>) add("read", parseAndRead<Library>);
    if constexpr (canClone<Library>) add("clone", clone<Library>);
}

} // namespace

int main(int aCount, char** aArguments) {
    benchmark::Initialize(&aCount, aArguments);
    if (benchmark::ReportUnrecognizedArguments(aCount, aArguments)) return 1;
    const auto documents = makeDocuments();
    for (const auto& document : documents) {
        try {
            check(document, Vexil::parse(document.text));
            forEachLibrary([&]<typename Library>() {
                if constexpr (!std::is_same_v<Library, Vexil>) checkPeer<Library>(document);
                checkOperations<Library>(document);
                addRows<Library>(document);
            });
        } catch (const std::exception& error) {
            fail(document.name + ": " + error.what());
        }
    }
    benchmark::RunSpecifiedBenchmarks();
}
