// SPDX-License-Identifier: MIT
#include <json-c/json.h>

#undef HAS_JANSSON // the headers of Jansson and json-c use the same names
#include "libraries.h"

namespace benchmarks {

namespace {

json_object* toObject(void* aTree) {
    return static_cast<json_object*>(aTree);
}

} // namespace

void JsonC::Release::operator()(void* aTree) const {
    json_object_put(toObject(aTree));
}

JsonC::Tree JsonC::parse(const std::string& aText) {
    const std::unique_ptr<json_tokener, Free<json_tokener_free>> tokener(json_tokener_new_ex(128));
    json_tokener_set_flags(tokener.get(), JSON_TOKENER_STRICT | JSON_TOKENER_VALIDATE_UTF8);
    Tree tree(json_tokener_parse_ex(tokener.get(), aText.data(), static_cast<int>(aText.size())));
    require(json_tokener_get_error(tokener.get()) == json_tokener_success);
    return tree;
}

const char* JsonC::toText(const Tree& aTree) {
    constexpr int flags = JSON_C_TO_STRING_PLAIN | JSON_C_TO_STRING_NOSLASHESCAPE;
    return json_object_to_json_string_ext(toObject(aTree.get()), flags);
}

} // namespace benchmarks
