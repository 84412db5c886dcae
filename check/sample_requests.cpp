// SPDX-License-Identifier: MIT
#include "check/sample_requests.h"

#include "vexil/json/json_parser.h"
#include "vexil/streams.h"

#include <cstddef>
#include <cstdint>
#include <string>

using vexil::JsonValue;

namespace {

constexpr std::size_t nestingDepth = 100000;
constexpr std::int32_t memberCount = 10000;
constexpr std::size_t textSize = 1048576;

constexpr const char* typicalRequest =
    R"({"action":"getCertificate","file":"certificate.pem","subject":"example.org","store":"MY"})";

constexpr const char* hostileRequest = R"({"action":"getCertificate",
    "":"", " ":" ", "name":"value", "value":{"name":"value","value":"name"}, "request":[],
    "response":[], "error":[], "file":null, "subject":["a",["b"],{}], "store":-1, "flag":true,
    "a":"first", "a":"second", "a":{"a":1,"a":2}, "A":false,
    "\"\\\/\b\f\n\r\t\u0001\u001f\u007f":"\"\\\/\b\f\n\r\t\u0000\u0001\u001f\u007f after",
    "Zo\u00eb \u6f22\u5b57 \ud83d\ude00 \ufeff\uffff\udbff\udfff":"\u00e9 \u0e01 \u202e \ud83d\ude00",
    "%s%n%d%%":"%s%s%s%n", "$(HOME) `x` ; & | < > '":"../../..\\..\\x", "]}":"[{", "null":"null",
    "largest":2147483647, "smallest":-2147483648, "larger":2147483648, "huge":1e308,
    "tiny":-1e-308, "exact":9007199254740993, "half":0.5, "zero":-0.0, "nested":[[],{},[{"a":[]}]]})";

ValueHolder parse(const std::string& aText) {
    return vexil::parseJsonText(vexil::ByteRange(aText));
}

} // namespace

ValueHolder makeTypicalRequest() {
    return parse(typicalRequest);
}

ValueHolder makeEmptyRequest() {
    return ValueHolder(JsonValue::createObject());
}

ValueHolder makeHostileRequest() {
    return parse(hostileRequest);
}

ValueHolder makeDeepRequest() {
    return parse("{\"file\":" + std::string(nestingDepth, '[') + std::string(nestingDepth, ']') +
                 '}');
}

ValueHolder makeLargeRequest() {
    ValueHolder request(JsonValue::createObject());
    for (std::int32_t index = 0; index < memberCount; ++index) {
        const auto name = "member" + std::to_string(index);
        appendMember(request, name.c_str(), JsonValue::createInteger(index));
    }
    appendMember(request, "file", JsonValue::createString(std::string(textSize, 'x')));
    return request;
}
