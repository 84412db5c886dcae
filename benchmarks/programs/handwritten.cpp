// SPDX-License-Identifier: MIT

// certbridge's translation as one would write it with nlohmann-json. It sorts the members, keeps
// one of several members of the same name and creates no error documents.
#include "bare_program.h"

#include <nlohmann/json.hpp>

#include <exception>
#include <utility>

using nlohmann::json;

namespace {

std::string makeRequest(json aInput) {
    if (aInput.at("action") != "getCertificate") fail("wrong action");
    auto list = json::array();
    for (auto& [name, value] : aInput.items()) {
        if (name == "action") continue;
        json element;
        element["name"] = name;
        element["value"] = std::move(value);
        list.push_back(std::move(element));
    }
    json request;
    request["request"] = std::move(list);
    return request.dump();
}

std::string makeResult(json aReply) {
    auto members = json::object();
    for (auto& element : aReply.at("response")) {
        const auto name = element.find("name");
        const auto value = element.find("value");
        if (name == element.end() || !name->is_string() || value == element.end()) continue;
        members.emplace(std::move(name->get_ref<std::string&>()), std::move(*value));
    }
    json result;
    result["getCertificate"] = std::move(members);
    return result.dump();
}

} // namespace

int main(int aCount, char** aArguments) {
    if (aCount != 2) fail("usage: handwritten PLUGIN");
    try {
        const auto* reply = askPlugin(aArguments[1], makeRequest(json::parse(readInput())));
        return std::puts(makeResult(json::parse(reply)).c_str()) == EOF ? 2 : 0;
    } catch (const std::exception& error) {
        fail(error.what());
    }
}
