// SPDX-License-Identifier: MIT
#include "check/request_file.h"

#include "vexil/json/json_parser.h"
#include "vexil/streams.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

ValueHolder parseRequestFile(const std::string& aFileName) {
    std::ifstream file(aFileName, std::ios::binary);
    const std::string text(std::istreambuf_iterator<char>(file), {});
    if (!file) throw std::runtime_error("cannot be read");
    ValueHolder request = vexil::parseJsonText(vexil::ByteRange(text));
    if (request->getType() != vexil::JsonType::Object) {
        throw std::runtime_error("contains no JSON object");
    }
    return request;
}

} // namespace

ValueHolder readRequestFile(const std::string& aFileName) {
    try {
        return parseRequestFile(aFileName);
    } catch (const std::runtime_error& failure) {
        throw std::runtime_error(aFileName + ": " + failure.what());
    }
}
