// SPDX-License-Identifier: MIT
#include "documents.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <random>
#include <string_view>

namespace benchmarks {

namespace {

constexpr std::size_t kilobyte = 1000;
constexpr std::size_t megabyte = 1000 * kilobyte;

// The standard specifies the results of its generators, but not those of its distributions.
class Random {
public:
    std::uint64_t below(std::uint64_t aLimit) { return mGenerator() % aLimit; }
    std::uint64_t between(std::uint64_t aFirst, std::uint64_t aLast) {
        return aFirst + below(aLast - aFirst + 1);
    }
    bool oneIn(std::uint64_t aCount) { return below(aCount) == 0; }
    template <typename Item, std::size_t size>
    const Item& pick(const Item (&aItems)[size]) {
        return aItems[below(size)];
    }

private:
    std::mt19937_64 mGenerator{20240607};
};

template <typename... Part>
std::string join(const Part&... aParts) {
    std::string text;
    (text.append(aParts), ...);
    return text;
}

std::string quoted(std::string_view aText) {
    return join("\"", aText, "\"");
}

std::string member(std::string_view aName, std::string_view aValue) {
    return join("\"", aName, "\":", aValue);
}

// An array of at least aSize bytes.
std::string makeArray(std::size_t aSize, const std::function<std::string()>& aMakeElement) {
    std::string text = join("[", aMakeElement());
    while (text.size() < aSize) text += ',' + aMakeElement();
    return text + ']';
}

// Texts -----------------------------------------------------------------------------------------

constexpr std::string_view asciiWords[] = {
    "certificate", "issued", "to", "the",    "holder", "of", "this",   "key", "valid",
    "until",       "next",   "by", "agency", "and",    "a",  "review", "in",  "2031"};
// Versions of clang-format measure wide characters differently.
// clang-format off
constexpr std::string_view otherWords[] = {
    "Grüße", "naïve", "Москва", "ключ", "証明書", "東京", "한국", "مفتاح", "Ωμέγα", "Łódź", "🔑", "😀👍", "señor",
    "Ångström"};
// clang-format on
constexpr std::string_view escapes[] = {R"(\")",     R"(\\)",     R"(\/)",     R"(\n)",
                                        R"(\t)",     R"(\u00e9)", R"(\u20ac)", R"(\ud83d\ude00)",
                                        R"(\u0001)", "C:",        "x",         " "};

template <std::size_t size>
std::string makeWords(Random& aRandom, const std::string_view (&aWords)[size],
                      std::size_t aLength) {
    std::string text(aRandom.pick(aWords));
    while (text.size() < aLength) text += ' ' + std::string(aRandom.pick(aWords));
    return text;
}

std::string makeCharacters(Random& aRandom, std::string_view aCharacters, std::size_t aLength) {
    std::string text;
    while (text.size() < aLength) text += aCharacters[aRandom.below(aCharacters.size())];
    return text;
}

std::string makeHex(Random& aRandom, std::size_t aLength) {
    return makeCharacters(aRandom, "0123456789ABCDEF", aLength);
}

// Numbers ---------------------------------------------------------------------------------------

std::string makeDigits(Random& aRandom, std::size_t aCount) {
    return makeCharacters(aRandom, "123456789", 1) +
           makeCharacters(aRandom, "0123456789", aCount - 1);
}

std::string makeSign(Random& aRandom) {
    return std::string(aRandom.below(2), '-');
}

std::string makeInteger(Random& aRandom) {
    return join(makeSign(aRandom), makeDigits(aRandom, aRandom.between(1, 9)));
}

std::string makeDecimal(Random& aRandom, std::uint64_t aLimit, std::size_t aDecimals) {
    return join(makeSign(aRandom), std::to_string(aRandom.below(aLimit)), ".",
                makeDigits(aRandom, aDecimals));
}

// At most six digits, without trailing zeros.
std::string makeShortDecimal(Random& aRandom) {
    return makeDecimal(aRandom, 1000, aRandom.between(1, 2)) + makeDigits(aRandom, 1);
}

std::string makeCoordinate(Random& aRandom) {
    return makeDecimal(aRandom, 180, aRandom.between(6, 14));
}

std::string makeFloat(Random& aRandom, std::int64_t aFirstExponent, std::int64_t aLastExponent) {
    const auto count = static_cast<std::uint64_t>(aLastExponent - aFirstExponent);
    const auto exponent = aFirstExponent + static_cast<std::int64_t>(aRandom.between(0, count));
    return join(makeSign(aRandom), makeDigits(aRandom, 1), ".", makeDigits(aRandom, 16), "e",
                std::to_string(exponent));
}

std::string makeLongInteger(Random& aRandom) {
    const auto length = aRandom.between(11, 18);
    return length == 18 ? makeDigits(aRandom, 17) + '0' : makeDigits(aRandom, length);
}

// Documents -------------------------------------------------------------------------------------

std::string makePem(Random& aRandom) {
    constexpr std::string_view base64 =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text = "-----BEGIN CERTIFICATE-----\\n";
    for (int line = 0; line < 19; ++line) text += makeCharacters(aRandom, base64, 64) + "\\n";
    return text + "-----END CERTIFICATE-----\\n";
}

std::string element(std::string_view aName, std::string_view aValue) {
    return join("{", member("name", quoted(aName)), ",", member("value", aValue), "}");
}

std::string makeCertificateReply(Random& aRandom) {
    std::string fingerprint = makeHex(aRandom, 2);
    while (fingerprint.size() < 95) fingerprint += ':' + makeHex(aRandom, 2);
    std::string text = "{\"response\":[";
    text += element("subject", quoted("CN=example.org,O=Café Müller")) + ',';
    text += element("issuer", quoted("CN=Example Issuing CA 3,O=Example Trust,C=DE")) + ',';
    text += element("serialNumber", quoted(makeHex(aRandom, 40))) + ',';
    text += element("notBefore", quoted("2024-01-31T08:15:00Z")) + ',';
    text += element("notAfter", quoted("2025-01-31T08:15:00Z")) + ',';
    text += element("sha256Fingerprint", quoted(fingerprint)) + ',';
    text += element("subjectAlternativeNames", R"(["DNS:example.org","IP:127.0.0.1"])") + ',';
    text += element("publicKeyAlgorithm", quoted("RSA")) + ',';
    text += element("publicKeyBits", "2048") + ',';
    return text + element("pem", quoted(makePem(aRandom))) + "]}";
}

// A value of a request: usually text, occasionally another type.
std::string makeValue(Random& aRandom) {
    switch (aRandom.below(10)) {
    case 0:
        return makeInteger(aRandom);
    case 1:
        return makeShortDecimal(aRandom);
    case 2:
        return aRandom.oneIn(2) ? "true" : "null";
    case 3:
        return join("[", makeInteger(aRandom), ",", quoted(makeHex(aRandom, 8)), "]");
    default:
        return quoted(makeWords(aRandom, asciiWords, aRandom.between(4, 40)));
    }
}

std::string makeList(Random& aRandom) {
    std::uint64_t count = 0;
    const auto makeElement = [&] {
        return element(join("field", std::to_string(++count)), makeValue(aRandom));
    };
    return join("{\"response\":", makeArray(10 * megabyte, makeElement), "}");
}

std::string makeUser(Random& aRandom) {
    const auto screenName = makeHex(aRandom, 8);
    std::string text = "{\"geo\":null,\"verified\":true,";
    text += member("id", makeInteger(aRandom)) + ',';
    text += member("name", quoted(makeWords(aRandom, otherWords, 10))) + ',';
    text += member("screen_name", quoted(screenName)) + ',';
    text += member("url", quoted(R"(http:\/\/example.org\/)" + screenName)) + ',';
    return text + member("followers_count", makeInteger(aRandom)) + '}';
}

std::string makePost(Random& aRandom) {
    const auto id = makeDigits(aRandom, 17);
    const auto message = join(makeWords(aRandom, asciiWords, aRandom.between(20, 90)), "\\n",
                              makeWords(aRandom, otherWords, aRandom.between(0, 60)));
    std::string text = R"({"created_at":"Sun Aug 31 00:29:15 +0000 2014","truncated":false,)"
                       R"("entities":{"hashtags":[],"urls":[],"indices":[0,12]},)";
    text += member("id", id) + ',' + member("id_str", quoted(id)) + ',';
    text += member("text", quoted(message)) + ',';
    text += member("reply_to", aRandom.oneIn(3) ? quoted(makeHex(aRandom, 8)) : "null") + ',';
    text += member("user", makeUser(aRandom)) + ',';
    return text + member("retweet_count", makeInteger(aRandom)) + R"(,"lang":"ja"})";
}

std::string makeNested() {
    constexpr int depth = 100; // one of the peers writes 128 levels at most
    std::string opening, closing;
    for (int level = 0; level < depth / 2; ++level) {
        opening += "[{\"a\":";
        closing += "}]";
    }
    return join(opening, "1", closing);
}

} // namespace

std::vector<Document> makeDocuments() {
    Random random;
    constexpr std::size_t size = 250 * kilobyte;
    const auto array = [&](const std::function<std::string()>& aMakeElement) {
        return makeArray(size, aMakeElement);
    };
    return {
        {"request", makeRequest(kilobyte)},
        {"certificate", makeCertificateReply(random)},
        {"list", makeList(random)},
        {"feed", array([&] { return makePost(random); })},
        {"integers", array([&] { return makeInteger(random); })},
        {"floats", array([&] { return makeFloat(random, -300, 300); })},
        {"coordinates",
         array([&] { return '[' + makeCoordinate(random) + ',' + makeCoordinate(random) + ']'; })},
        {"ascii", array([&] { return quoted(makeWords(random, asciiWords, 1000)); })},
        {"non-ascii", array([&] { return quoted(makeWords(random, otherWords, 200)); })},
        {"escapes", array([&] {
             std::string text;
             while (text.size() < 100) text += random.pick(escapes);
             return quoted(text);
         })},
        {"nested", array(makeNested)},
    };
}

std::string makeRequest(std::size_t aSize) {
    Random random;
    std::string text = R"({"action":"getCertificate","usages":["digitalSignature","keyAgreement"])";
    std::uint64_t count = 0;
    while (text.size() < aSize) {
        text += ',' + member(join("field", std::to_string(++count)), makeValue(random));
    }
    return text + '}';
}

std::vector<NumberSet> makeNumberSets() {
    Random random;
    const auto texts = [](const std::function<std::string()>& aMakeText) {
        std::vector<std::string> result(5000);
        for (auto& text : result) text = aMakeText();
        return result;
    };
    return {
        {"short-decimals", texts([&] { return makeShortDecimal(random); })},
        {"coordinates", texts([&] { return makeCoordinate(random); })},
        {"17-digits", texts([&] { return makeFloat(random, -307, 307); })},
        {"subnormals", texts([&] { return makeFloat(random, -323, -309); })},
        {"long-integers", texts([&] { return makeLongInteger(random); })},
    };
}

} // namespace benchmarks
