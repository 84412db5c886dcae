// SPDX-License-Identifier: MIT

// A written tree parses to an equal tree, and so does its clone.
#include "fuzz/require.h"
#include "tests/vexil/json/json_helpers.h"
#include "vexil/exceptions.h"

#include <algorithm>
#include <bit>
#include <vector>

using namespace vexil;

namespace {

using Pair = std::pair<const JsonValue*, const JsonValue*>;

/// Compares two values without their children, and appends the pairs of children to @p aOpen.
bool compare(const JsonValue& aLeft, const JsonValue& aRight, std::vector<Pair>& aOpen) {
    if (aLeft.getType() != aRight.getType()) return false;
    switch (aLeft.getType()) {
    case JsonType::Null:
        return true;
    case JsonType::Boolean:
        return aLeft.getBoolean() == aRight.getBoolean();
    case JsonType::Integer:
        return aLeft.getInteger() == aRight.getInteger();
    case JsonType::Float:
        return std::bit_cast<std::uint64_t>(aLeft.getFloat()) ==
               std::bit_cast<std::uint64_t>(aRight.getFloat());
    case JsonType::String:
        return aLeft.getString() == aRight.getString();
    case JsonType::Array:
    case JsonType::Object:
        break;
    }
    if (aLeft.getSize() != aRight.getSize()) return false;
    for (std::uint32_t i = 0; i < aLeft.getSize(); ++i) {
        if (aLeft.getType() == JsonType::Object) {
            aOpen.emplace_back(aLeft.getNameAt(i), aRight.getNameAt(i));
        }
        aOpen.emplace_back(aLeft.getValueAt(i), aRight.getValueAt(i));
    }
    return true;
}

/// Whether two trees are the same, numbers bit for bit.
bool areSame(const JsonValue& aLeft, const JsonValue& aRight) {
    std::vector<Pair> open{{&aLeft, &aRight}};
    while (!open.empty()) {
        const Pair pair = open.back();
        open.pop_back();
        if (!compare(*pair.first, *pair.second, open)) return false;
    }
    return true;
}

JsonTree tryToParse(const std::string& aText) {
    try {
        return parseText(aText);
    } catch (const JsonParserError&) {
        return nullptr;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* aData, std::size_t aSize) {
    const JsonTree tree = tryToParse({aData, aData + aSize});
    if (!tree) return 0;
    JsonTree clone(tree->clone());
    require(areSame(*tree, *clone), "a clone is the same");
    const std::string text = writeText(*tree);
    clone.reset();
    require(writeText(*tree) == text, "a clone shares nothing");

    const JsonTree again = parseText(text);
    require(writeText(*again) == text, "what was read again writes the same text");
    const std::string ascii = writeText(*again, JsonWriter::EscapeNonAscii);
    require(std::ranges::all_of(ascii, [](char aByte) { return aByte >= ' ' && aByte <= '\x7F'; }),
            "an escaped text has ASCII characters alone, and nothing below the space");
    require(areSame(*parseText(ascii), *again), "an escaped text means the same");
    return 0;
}
