// SPDX-License-Identifier: MIT
#pragma once

#include "vexil/json/json_parser.h"
#include "vexil/json/json_writer.h"
#include "vexil/streams.h"

#include <memory>
#include <string>
#include <utility>

using JsonTree = std::unique_ptr<vexil::JsonValue>;

inline JsonTree parseText(const std::string& aText) {
    return vexil::parseJsonText(vexil::ByteRange(aText));
}

inline std::string writeText(const vexil::JsonValue& aValue, std::int32_t aFlags = 0) {
    std::string text;
    vexil::StringOutputStream stream(&text);
    vexil::JsonWriter(stream, aFlags).write(aValue);
    return text;
}

inline std::string nestedArrays(std::size_t aDepth) {
    return std::string(aDepth, '[') + std::string(aDepth, ']');
}

/// A stream that the library does not know: bytes come through read() alone, and the end of the
/// input is whatever is no single byte.
class ForeignInputStream : public vexil::InputStream {
public:
    explicit ForeignInputStream(std::string aText, std::int32_t aEnd = 0)
        : mText(std::move(aText)), mEnd(aEnd) {}
    std::int32_t read(void* aDest, std::int32_t aLen) override {
        onlySingleBytes = onlySingleBytes && aLen == 1;
        if (mPosition == mText.size()) return mEnd;
        *static_cast<char*>(aDest) = mText[mPosition++];
        return 1;
    }
    void close() override {}
    void seek(std::int32_t) override {}
    std::int32_t tell() override { return static_cast<std::int32_t>(mPosition); }
    std::int32_t available() override { return 0; }

    bool onlySingleBytes = true;

private:
    std::string mText;
    std::size_t mPosition = 0;
    std::int32_t mEnd;
};
