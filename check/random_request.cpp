// SPDX-License-Identifier: MIT
#include "check/random_request.h"

#include <cstddef>
#include <iterator>
#include <random>
#include <string>

using vexil::JsonValue;

namespace {

constexpr const char* usualNames[] = {"file",   "subject", "store", "serialNumber", "issuer",
                                      "format", "name",    "value", "request",      "error"};

constexpr std::int32_t notableIntegers[] = {0, 1, -1, 255, 65536, 2147483647, -2147483647 - 1};

constexpr double notableFloats[] = {0.0, -0.0, 0.5, 1e-310, 1e308, -1e20, 4294967296.0, 123456.7};

constexpr const char* notableTexts[] = {
    "",   "\"",  "\\",   "\n", "\x7F",       "\xC3\xA9", "\xE6\xBC\xA2", "\xF0\x9F\x98\x80",
    "%s", "../", "null", "]}", "{\"name\":", "\x01",     "abc",          "a.pem"};

class Generator {
public:
    Generator(std::uint64_t aSeed, std::uint32_t aNumber) : mRandom(aSeed ^ (aNumber * stride)) {}

    ValueHolder makeRequest() {
        ValueHolder request(JsonValue::createObject());
        for (std::size_t count = pick(13); count > 0; --count) addMember(request, 0);
        return request;
    }

private:
    static constexpr std::uint64_t stride = 0x9E3779B97F4A7C15; // spreads consecutive numbers
    static constexpr std::size_t maxDepth = 4;

    // Not a distribution of the library: their results differ between implementations.
    std::size_t pick(std::size_t aCount) { return static_cast<std::size_t>(mRandom() % aCount); }

    template <class Items>
    const auto& pickFrom(const Items& aItems) {
        return aItems[pick(std::size(aItems))];
    }

    std::string makeText() {
        std::string text;
        for (std::size_t count = pick(8); count > 0; --count) text += pickFrom(notableTexts);
        if (pick(16) == 0) text += '\0';
        if (pick(64) == 0) text.append(pick(70000), 'x');
        return text;
    }

    // NOLINTBEGIN(misc-no-recursion): limited by maxDepth.
    void addMember(ValueHolder& aObject, std::size_t aDepth) {
        const std::string name = pick(2) == 0 ? pickFrom(usualNames) : makeText();
        appendMember(aObject, name.c_str(), makeValue(aDepth + 1).release());
    }

    ValueHolder makeContainer(bool aIsArray, std::size_t aDepth) {
        ValueHolder container(aIsArray ? JsonValue::createArray() : JsonValue::createObject());
        for (std::size_t count = pick(5); count > 0; --count) {
            if (!aIsArray) {
                addMember(container, aDepth);
                continue;
            }
            ValueHolder element = makeValue(aDepth + 1);
            container->appendValue(element.get());
            static_cast<void>(element.release());
        }
        return container;
    }

    ValueHolder makeValue(std::size_t aDepth) {
        switch (pick(aDepth < maxDepth ? 8 : 6)) {
        case 0:
            return ValueHolder(JsonValue::createNull());
        case 1:
            return ValueHolder(JsonValue::createBoolean(pick(2) == 0));
        case 2:
            return ValueHolder(JsonValue::createInteger(pickFrom(notableIntegers)));
        case 3:
            return ValueHolder(JsonValue::createFloat(pickFrom(notableFloats)));
        case 6:
            return makeContainer(true, aDepth);
        case 7:
            return makeContainer(false, aDepth);
        default:
            return ValueHolder(JsonValue::createString(makeText()));
        }
    }
    // NOLINTEND(misc-no-recursion)

    std::mt19937_64 mRandom;
};

} // namespace

ValueHolder makeRandomRequest(std::uint64_t aSeed, std::uint32_t aNumber) {
    return Generator(aSeed, aNumber).makeRequest();
}
