// SPDX-License-Identifier: MIT
#include "check/readable_text.h"

#include "certbridge/name_value_list.h"
#include "vexil/exceptions.h"
#include "vexil/json/json_writer.h"
#include "vexil/unicode_strings.h"

#include <cstddef>

namespace {

constexpr std::size_t excerptSize = 160;

// Not inside a character, if the text is UTF-8.
std::size_t endOfExcerpt(const std::string& aBytes) {
    std::size_t end = excerptSize;
    while (end > 0 && (static_cast<unsigned char>(aBytes[end]) & 0xC0U) == 0x80U) --end;
    return end > 0 ? end : excerptSize;
}

} // namespace

std::string readableText(const std::string& aBytes) {
    for (const auto encoding : {vexil::Utf8, vexil::WindowsAnsi}) {
        try {
            vexil::UnicodeString32 text;
            text.assignOctets(encoding, aBytes.data(), aBytes.size());
            return text.asUtf8();
        } catch (const vexil::EncodingError&) {
            // Not valid in this encoding.
        }
    }
    return vexil::UnicodeString32(vexil::Latin1, aBytes).asUtf8();
}

std::string quotedExcerpt(const std::string& aBytes) {
    const bool isCut = aBytes.size() > excerptSize;
    const auto excerpt = isCut ? aBytes.substr(0, endOfExcerpt(aBytes)) : aBytes;
    const ValueHolder value(vexil::JsonValue::createString(readableText(excerpt)));
    const std::string text = vexil::writeJsonText(*value);
    return isCut ? text + "..." : text;
}
